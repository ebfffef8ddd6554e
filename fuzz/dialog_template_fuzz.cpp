// Dialog templates that no compiler wrote: read within their bytes, and no larger than these.
#include "tvutil2/platform/window/dialogs/dialog_template.h"

#include <cstring>
#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Of exactly its size, so that a sanitizer sees a read outside.
    const auto bytes = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(bytes.get(), data, size);
    const auto dialog = tvutil2::read_dialog_template({bytes.get(), size});
    if (!dialog) return 0;
    std::size_t sum = dialog->face.size() + dialog->title.text.size();
    for (const auto& item : dialog->items) {
        sum += item.title.text.size() + item.class_name.text.size() + item.data.size();
        for (const auto each : item.data) sum += static_cast<std::size_t>(each) & 0;
    }
    fuzz::require(sum <= size);
    return 0;
}
