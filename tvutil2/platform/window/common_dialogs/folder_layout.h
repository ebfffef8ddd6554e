// Where the parts of the folder dialog are.
#pragma once

#include "tvutil2/platform/window/window_types.h"

namespace tvutil2 {

/// Ids of the controls beside IDOK and IDCANCEL.
inline constexpr int kFolderTitle = 0x3742;
inline constexpr int kFolderTree = 0x3741;
inline constexpr int kFolderLabel = 0x3745;
inline constexpr int kFolderEdit = 0x3744;
inline constexpr int kFolderMake = 0x3746;

struct FolderParts {
    const char16_t* caption = u"";
    const char16_t* title = u"";           ///< above the tree
    const char16_t* edit_label = nullptr;  ///< of an edit box; null for none
    bool has_make = false;
};

/// Makes the controls, gives the dialog its caption and its usual size, and lays it out.
void build_folder_dialog(HWND dialog, const FolderParts& parts, LANGID language);
/// After its size has changed.
void lay_out_folder_dialog(HWND dialog);
/// The size, with its frame, that all parts need.
[[nodiscard]] SIZE least_folder_dialog(HWND dialog);

}  // namespace tvutil2
