// Names of objects, between all processes of a user.
#pragma once

#include "tvutil2/platform/objects/shared/shared_object.h"

#include <functional>

namespace tvutil2::named_objects {

/// What a new object begins with.
struct Beginning {
    DWORD traits = 0;
    std::uint64_t size = 0;
    /// Runs before anyone else can reach the object; may be empty.
    std::function<void(BlockHeader&)> set_up;
    /// Makes the process's object of a block. `file` is the descriptor beside the block's, empty
    /// without.
    std::function<std::shared_ptr<SharedObject>(std::unique_ptr<SharedBlock>, std::u16string,
                                                Descriptor file)>
        make;
    int file = -1;             ///< of a new object, which opens it anew; -1 without
    bool writes_file = false;  ///< and for writing
};

/// The object of that name, new or not: the last error is ERROR_SUCCESS or ERROR_ALREADY_EXISTS.
/// With `may_create` false only one that is there. Null with ERROR_FILE_NOT_FOUND;
/// ERROR_INVALID_HANDLE when the name is of another kind; ERROR_FILENAME_EXCED_RANGE,
/// ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME for a name that can't be; what the host refuses.
[[nodiscard]] std::shared_ptr<SharedObject> open(HandleKind kind, const char16_t* name,
                                                 bool may_create, const Beginning& beginning,
                                                 const std::function<void(SharedObject&)>& on_new);

/// A new object without a name; null with the last error.
[[nodiscard]] std::shared_ptr<SharedObject> make_unnamed(HandleKind kind,
                                                         const Beginning& beginning);

/// No other process holds it.
[[nodiscard]] bool is_only_holder(const SharedObject& object);

/// The process doesn't hold it any more.
void give_up(const SharedObject& object);

}  // namespace tvutil2::named_objects
