// Shortcuts.
#pragma once

#include "tvutil2/framework/strings.h"

#include <cstdint>

/// What a shortcut is made of. Null texts count as empty.
struct SHORTCUTSTRUCT {
    const char16_t* pszTarget;
    const char16_t* pszDescription;
    const char16_t* pszIconPath;
    const char16_t* pszArguments;
    WORD wHotKey;
    /// Number of the icon in its file, or the negative of its resource id.
    std::int16_t nIconIndex;
};

/// Writes a shortcut. E_FAIL for null; else the result of the creation or of the save.
TVUTIL_API HRESULT SHCreateShortcutEx(const char16_t* link_path, SHORTCUTSTRUCT* info);

/// Reads a shortcut and tests that its target is there; `target` is set when all succeeds, and is
/// cut at 259 units as `link_path` is. The first failure's result, or the last step's. Nothing is
/// shown, whatever `with_ui` says.
TVUTIL_API HRESULT ResolveShortcut(const char16_t* link_path, CString& target, int with_ui);
