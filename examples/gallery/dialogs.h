// The gallery's dialogs, and those of the library, by name.
#pragma once

#include "tvutil2/tvutil2.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace gallery {

/// What of an entry is to be seen only after something was done.
struct Moment {
    std::string name;  ///< behind that of the entry
    /// Does it: the window to look at, which may be another one that opened.
    std::function<HWND(CDialog&)> reach;
};

struct Entry {
    std::string name;  ///< of its picture
    UINT id;           ///< of its template
    bool is_library;   ///< its template is the library's, in every language
    std::function<std::unique_ptr<CDialog>()> make;
    std::vector<Moment> moments{};
};

[[nodiscard]] const std::vector<Entry>& entries();
/// Where DoModal and CreateIndirect find it, in the language of the calling thread.
[[nodiscard]] const void* template_of(const Entry& entry);

/// The window from which the others are opened.
int run_main_window();

}  // namespace gallery
