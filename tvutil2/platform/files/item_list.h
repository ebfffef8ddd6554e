// Item lists: what the shell calls a folder or a file by, whether or not it has a path.
//
// A list is a row of items, each a size in bytes (16 bits, the size's own counted) and bytes behind
// it, and ends with a size of 0. The empty list is the desktop, at which all others begin: "this
// computer", a drive on it, and a name for each folder down. Here the bytes of an item are its kind
// (8 bits), 8 bits of 0 and the UTF-16 units of its name. A list belongs to who got it, and is
// freed by ILFree or CoTaskMemFree. Any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct SHITEMID {
    WORD cb;
    BYTE abID[1];
};
struct ITEMIDLIST {
    SHITEMID mkid;
};
using PIDLIST_ABSOLUTE = ITEMIDLIST*;
using PCIDLIST_ABSOLUTE = const ITEMIDLIST*;

/// "This computer", which has no path: for SHGetSpecialFolderLocation alone.
inline constexpr int CSIDL_DRIVES = 0x11;

/// The path of a list, without a trailing backslash but for a drive's root, into `path` (MAX_PATH
/// units). FALSE, with `path` empty, for an item without a path, a path that doesn't fit, and for
/// null. The desktop has the path of the person's folder of that name.
TVUTIL_API BOOL SHGetPathFromIDListW(PCIDLIST_ABSOLUTE list, char16_t* path);
/// The list of a folder that has a meaning (CSIDL_...): S_OK, E_INVALIDARG for an unknown one or a
/// null `list`, E_OUTOFMEMORY, or what SHGetFolderPathW gives. The folder needn't be there.
TVUTIL_API HRESULT SHGetSpecialFolderLocation(HWND owner, int folder, PIDLIST_ABSOLUTE* list);
/// Null is passed over.
TVUTIL_API void ILFree(PIDLIST_ABSOLUTE list);
/// The bytes of a list, its end counted; 0 for null.
TVUTIL_API UINT ILGetSize(PCIDLIST_ABSOLUTE list);

namespace tvutil2 {

struct FreeItemList {
    void operator()(PIDLIST_ABSOLUTE list) const { ILFree(list); }
};
using ItemList = std::unique_ptr<ITEMIDLIST, FreeItemList>;

/// Of a full path ("C:\a\b"); null when there is no memory or it isn't one.
[[nodiscard]] TVUTIL_API ItemList item_list_of(std::u16string_view path);
/// The desktop itself, and "this computer".
[[nodiscard]] TVUTIL_API ItemList desktop_item_list();
[[nodiscard]] TVUTIL_API ItemList computer_item_list();
/// However long it is; nothing where there is none.
[[nodiscard]] TVUTIL_API std::optional<std::u16string> path_of(PCIDLIST_ABSOLUTE list);

}  // namespace tvutil2
