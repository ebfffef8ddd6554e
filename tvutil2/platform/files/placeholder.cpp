#include "tvutil2/platform/files/placeholder.h"

#include "tvutil2/platform/files/file_object.h"
#include "tvutil2/platform/files/files.h"

#include <memory>

namespace tvutil2 {

HANDLE open_placeholder() {
    const auto handle = make_handle<HANDLE>(std::make_shared<FileObject>(Descriptor(), 0, ""));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

}  // namespace tvutil2
