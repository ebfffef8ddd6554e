// The classes of the process, and who finds which.
#pragma once

#include "tvutil2/platform/window/classes.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace tvutil2 {

struct WindowClass {
    std::u16string name;    ///< as it was registered
    std::u16string folded;  ///< as it is compared
    std::u16string menu_name;
    WNDCLASSEXW description{};
    ATOM atom = 0;
    bool is_system = false;
    std::vector<BYTE> extra;
    std::atomic<std::uint32_t> windows{0};
};

/// The class that a window made by `instance` gets under a name or the number of one. Null with
/// ERROR_CANNOT_FIND_WND_CLASS.
[[nodiscard]] std::shared_ptr<WindowClass> find_class(const char16_t* name, HINSTANCE instance);

/// A name without its case.
[[nodiscard]] std::u16string folded_name(const char16_t* name);

/// `instance`, or the executable's for null.
[[nodiscard]] HINSTANCE or_executable(HINSTANCE instance);

}  // namespace tvutil2
