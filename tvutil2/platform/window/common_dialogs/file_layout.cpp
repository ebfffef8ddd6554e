#include "tvutil2/platform/window/common_dialogs/file_layout.h"

#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/dialog_measures.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/message_words.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kUsualDialogWidth = 770;
constexpr int kUsualList = 300;
constexpr int kLeastList = 100;
constexpr int kLeastListWidth = 200;
constexpr int kPlacesWidth = 170;

// In the order in which Tab goes through them.
void add_file_parts(HWND dialog, const FileParts& parts, LANGID language) {
    const RECT nowhere{};
    const RECT open_list{0, 0, 100, 200};
    constexpr DWORD kBox = WS_TABSTOP | WS_VSCROLL | CBS_AUTOHSCROLL;
    const DWORD list = WS_TABSTOP | WS_BORDER | LVS_REPORT | LVS_SHOWSELALWAYS;
    const auto shared = [&](FolderWord word) { return folder_word(word, language); };
    const auto word = [&](FileWord which) { return file_word(which, language); };
    add_control(dialog, u"Static", shared(FolderWord::label), 0, nowhere, kFilePathLabel);
    add_control(dialog, u"ComboBox", u"", kBox | CBS_DROPDOWN, open_list, kFilePath);
    add_control(dialog, u"Button", word(FileWord::up), WS_TABSTOP, nowhere, kFileUp);
    add_control(dialog, WC_LISTVIEWW, u"", list | LVS_SINGLESEL | LVS_NOCOLUMNHEADER, nowhere,
                kFilePlaces);
    add_control(dialog, WC_LISTVIEWW, u"",
                list | LVS_OWNERDATA | (parts.takes_several ? 0 : LVS_SINGLESEL), nowhere,
                kFileRows);
    add_control(dialog, u"Static", shared(FolderWord::file_label), 0, nowhere, kFileNameLabel);
    add_control(dialog, u"ComboBox", u"", kBox | CBS_DROPDOWN, open_list, kFileName);
    if (parts.has_types) {
        add_control(dialog, u"Static", shared(FolderWord::types_label), 0, nowhere,
                    kFileTypesLabel);
        add_control(dialog, u"ComboBox", u"", kBox | CBS_DROPDOWNLIST, open_list, kFileTypes);
    }
    if (parts.has_read_only) {
        add_control(dialog, u"Button", word(FileWord::read_only), WS_TABSTOP | BS_AUTOCHECKBOX,
                    nowhere, kFileReadOnly);
    }
    add_control(dialog, u"Button", shared(FolderWord::make_folder), WS_TABSTOP, nowhere, kFileMake);
    add_control(dialog, u"Button", parts.ok, WS_TABSTOP | BS_DEFPUSHBUTTON, nowhere, IDOK);
    add_control(dialog, u"Button", message_word(IDCANCEL, language), WS_TABSTOP, nowhere, IDCANCEL);
    SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
}

// Of the caller's own part, which stays as large as it is.
SIZE size_of_part(HWND dialog) {
    RECT place{};
    auto* const part = GetDlgItem(dialog, kFilePart);
    if (part == nullptr || GetWindowRect(part, &place) == 0) return {};
    return {place.right - place.left, place.bottom - place.top};
}

// The rows below the list, with the gaps above them and the margin below.
LONG below_list(const DialogMeasures& measures) {
    const auto rows =
        1 + (measures.has(kFileTypes) ? 1 : 0) + (measures.has(kFileReadOnly) ? 1 : 0);
    return rows * (measures.field_height() + measures.length(kDialogGap)) +
           2 * measures.length(kDialogMargin) + measures.button(IDOK).cy;
}

LONG above_list(const DialogMeasures& measures) {
    return measures.length(kDialogMargin + kDialogGap) + measures.field_height();
}

SIZE file_dialog_size(const DialogMeasures& measures, const SIZE& part, LONG width, int list) {
    const auto own = above_list(measures) + measures.length(list) + below_list(measures);
    return measures.with_frame(std::max(width, part.cx), own + part.cy);
}

LONG least_dialog_width(const DialogMeasures& measures) {
    const auto gap = measures.length(kDialogGap);
    const auto buttons = measures.button(IDOK).cx + measures.button(IDCANCEL).cx +
                         measures.button(kFileMake).cx + 3 * gap;
    const auto lists = measures.length(kPlacesWidth + kLeastListWidth) + gap;
    return 2 * measures.length(kDialogMargin) + std::max(buttons, lists);
}

// All three begin in one line.
LONG label_width(const DialogMeasures& measures) {
    return std::max({measures.width_of(kFilePathLabel), measures.width_of(kFileNameLabel),
                     measures.width_of(kFileTypesLabel)});
}

void lay_out_top(const DialogMeasures& measures, LONG left, LONG right) {
    const auto up = measures.button(kFileUp).cx;
    const auto top = measures.length(kDialogMargin);
    measures.place(kFileUp, right - up, top, up, measures.field_height());
    measures.place_row(kFilePathLabel, label_width(measures), kFilePath, left, top,
                       right - up - measures.length(kDialogGap));
}

void lay_out_fields(const DialogMeasures& measures, LONG left, LONG top, LONG right) {
    const auto step = measures.field_height() + measures.length(kDialogGap);
    const auto label = label_width(measures);
    measures.place_row(kFileNameLabel, label, kFileName, left, top, right);
    if (measures.has(kFileTypes)) {
        top += step;
        measures.place_row(kFileTypesLabel, label, kFileTypes, left, top, right);
    }
    const auto begin = left + label + measures.length(kDialogGap);
    measures.place(kFileReadOnly, begin, top + step, right - begin, measures.field_height());
}

void lay_out_buttons(const DialogMeasures& measures, LONG left, LONG right, LONG bottom) {
    const auto ok = measures.button(IDOK);
    const auto cancel = measures.button(IDCANCEL);
    const auto make = measures.button(kFileMake);
    const auto top = bottom - ok.cy;
    measures.place(kFileMake, left, top, make.cx, make.cy);
    measures.place(IDCANCEL, right - cancel.cx, top, cancel.cx, cancel.cy);
    measures.place(IDOK, right - cancel.cx - measures.length(kDialogGap) - ok.cx, top, ok.cx,
                   ok.cy);
}

}  // namespace

SIZE least_file_dialog(HWND dialog) {
    const DialogMeasures measures(dialog);
    return file_dialog_size(measures, size_of_part(dialog), least_dialog_width(measures),
                            kLeastList);
}

void build_file_dialog(HWND dialog, const FileParts& parts, LANGID language) {
    SetWindowTextW(dialog, parts.caption);
    add_file_parts(dialog, parts, language);
    size_file_dialog(dialog);
}

void size_file_dialog(HWND dialog) {
    SIZE size{};
    {
        const DialogMeasures measures(dialog);
        const auto width =
            std::max(least_dialog_width(measures), measures.length(kUsualDialogWidth));
        size = file_dialog_size(measures, size_of_part(dialog), width, kUsualList);
    }
    resize_in_the_middle(dialog, size);
    lay_out_file_dialog(dialog);
}

void lay_out_file_dialog(HWND dialog) {
    if (GetDlgItem(dialog, IDCANCEL) == nullptr) return;
    const DialogMeasures measures(dialog);
    RECT client{};
    GetClientRect(dialog, &client);
    const auto margin = measures.length(kDialogMargin);
    const auto gap = measures.length(kDialogGap);
    const auto right = client.right - margin;
    const auto top = above_list(measures);
    const auto part = size_of_part(dialog);
    const auto end = client.bottom - part.cy;
    const auto bottom = end - below_list(measures);
    const auto places = measures.length(kPlacesWidth);
    lay_out_top(measures, margin, right);
    measures.place(kFilePlaces, margin, top, places, bottom - top);
    const auto list = margin + places + gap;
    measures.place(kFileRows, list, top, right - list, bottom - top);
    lay_out_fields(measures, margin, bottom + gap, right);
    lay_out_buttons(measures, margin, right, end - margin);
    measures.place(kFilePart, 0, end, part.cx, part.cy);
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace tvutil2
