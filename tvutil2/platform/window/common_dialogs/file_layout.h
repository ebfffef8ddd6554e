// Where the parts of the dialog for files are.
#pragma once

#include "tvutil2/platform/window/window_types.h"

namespace tvutil2 {

// Ids of the controls beside IDOK and IDCANCEL: those that programs know them by, as far as there
// are any.
inline constexpr int kFileName = 0x047C;        // cmb13
inline constexpr int kFileNameLabel = 0x0442;   // stc3
inline constexpr int kFileTypes = 0x0470;       // cmb1
inline constexpr int kFileTypesLabel = 0x0441;  // stc2
inline constexpr int kFilePath = 0x0471;        // cmb2
inline constexpr int kFilePathLabel = 0x0443;   // stc4
inline constexpr int kFileRows = 0x0460;        // lst1
inline constexpr int kFileReadOnly = 0x0410;    // chx1
inline constexpr int kFilePlaces = 0x3751;
inline constexpr int kFileUp = 0x3752;
inline constexpr int kFileMake = 0x3753;
inline constexpr int kFilePart = 0x3754;  // the caller's own

struct FileParts {
    const char16_t* caption = u"";
    const char16_t* ok = u"";
    bool has_types = false;
    bool has_read_only = false;
    bool takes_several = false;
};

/// Makes the controls, gives the dialog its caption and its usual size, and lays it out.
void build_file_dialog(HWND dialog, const FileParts& parts, LANGID language);
/// Gives it its usual size, and lays it out.
void size_file_dialog(HWND dialog);
/// After its size has changed.
void lay_out_file_dialog(HWND dialog);
/// The size, with its frame, that all parts need.
[[nodiscard]] SIZE least_file_dialog(HWND dialog);

}  // namespace tvutil2
