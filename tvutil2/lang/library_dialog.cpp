#include "tvutil2/lang/library_dialog.h"

#include "tvutil2/frame/startup.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/locale.h"

namespace tvutil2 {

LibraryDialog find_library_dialog(WORD id) {
    auto* const module = resource_instance();
    const auto* const name = MAKEINTRESOURCEW(id);
    auto* found =
        FindResourceExW(module, RT_DIALOG, name, TvMapResourceLanguage(GetThreadLocale()));
    if (found == nullptr) found = FindResourceW(module, name, RT_DIALOG);
    return {found, found != nullptr ? LoadResource(module, found) : nullptr};
}

std::optional<INT_PTR> run_where_shown(CDialog& dialog) {
    SetLastError(0);
    const auto result = dialog.DoModal();
    if (result == -1 && GetLastError() == ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION) {
        return std::nullopt;
    }
    return result;
}

}  // namespace tvutil2
