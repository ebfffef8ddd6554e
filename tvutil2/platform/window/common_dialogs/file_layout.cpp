#include "tvutil2/platform/window/common_dialogs/file_layout.h"

#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/dialog_measures.h"
#include "tvutil2/platform/window/common_dialogs/file_part.h"
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
                list | LVS_OWNERDATA | LVS_EDITLABELS | (parts.takes_several ? 0 : LVS_SINGLESEL),
                nowhere, kFileRows);
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

LONG row_height(const DialogMeasures& measures) {
    return measures.field_height() + measures.length(kDialogGap);
}

bool has_buttons(const DialogMeasures& measures) {
    return measures.has(IDOK) || measures.has(IDCANCEL) || measures.has(kFileMake);
}

// The rows below the list, with the gaps above them and the margin below.
LONG below_list(const DialogMeasures& measures) {
    const auto margin = measures.length(kDialogMargin);
    auto height = margin + (has_buttons(measures) ? margin + measures.button(IDOK).cy : 0);
    for (const auto row : {kFileName, kFileTypes, kFileReadOnly}) {
        if (measures.has(row)) height += row_height(measures);
    }
    return height;
}

LONG above_list(const DialogMeasures& measures) {
    const bool has_row = measures.has(kFilePath) || measures.has(kFileUp);
    return measures.length(kDialogMargin) + (has_row ? row_height(measures) : 0);
}

LONG places_room(const DialogMeasures& measures) {
    return measures.has(kFilePlaces) ? measures.length(kPlacesWidth + kDialogGap) : 0;
}

SIZE file_dialog_size(const DialogMeasures& measures, const PartRoom& part, LONG width, int list) {
    const auto own = above_list(measures) + measures.length(list) + below_list(measures);
    return measures.with_frame(std::max(width + part.sides.left + part.sides.right, part.width),
                               own + part.sides.top + part.sides.bottom);
}

LONG least_dialog_width(const DialogMeasures& measures) {
    auto buttons = measures.length(kDialogGap);
    for (const auto id : {IDOK, IDCANCEL, kFileMake}) buttons += measures.button_room(id);
    const auto lists = places_room(measures) + measures.length(kLeastListWidth);
    return 2 * measures.length(kDialogMargin) + std::max(buttons, lists);
}

// All three begin in one line.
LONG label_width(const DialogMeasures& measures) {
    return std::max({measures.width_of(kFilePathLabel), measures.width_of(kFileNameLabel),
                     measures.width_of(kFileTypesLabel)});
}

void lay_out_top(const DialogMeasures& measures, LONG left, LONG top, LONG right) {
    const auto up = measures.button(kFileUp).cx;
    measures.place(kFileUp, right - up, top, up, measures.field_height());
    measures.place_row(kFilePathLabel, label_width(measures), kFilePath, left, top,
                       right - measures.button_room(kFileUp));
}

void lay_out_lists(const DialogMeasures& measures, const RECT& area) {
    const auto list = area.left + places_room(measures);
    const auto height = area.bottom - area.top;
    measures.place(kFilePlaces, area.left, area.top, measures.length(kPlacesWidth), height);
    measures.place(kFileRows, list, area.top, area.right - list, height);
}

void lay_out_fields(const DialogMeasures& measures, LONG left, LONG top, LONG right) {
    const auto label = label_width(measures);
    const auto begin = left + label + measures.length(kDialogGap);
    const auto row_after = [&](int id) {
        if (measures.has(id)) top += row_height(measures);
    };
    measures.place_row(kFileNameLabel, label, kFileName, left, top, right);
    row_after(kFileName);
    measures.place_row(kFileTypesLabel, label, kFileTypes, left, top, right);
    row_after(kFileTypes);
    measures.place(kFileReadOnly, begin, top, right - begin, measures.field_height());
}

void lay_out_buttons(const DialogMeasures& measures, LONG left, LONG right, LONG bottom) {
    const auto make = measures.button(kFileMake);
    const auto top = bottom - make.cy;
    measures.place(kFileMake, left, top, make.cx, make.cy);
    for (const auto id : {IDCANCEL, IDOK}) {
        const auto size = measures.button(id);
        measures.place(id, right - size.cx, top, size.cx, size.cy);
        right -= measures.button_room(id);
    }
}

}  // namespace

SIZE least_file_dialog(HWND dialog) {
    const DialogMeasures measures(dialog);
    return file_dialog_size(measures, room_of_part(dialog), least_dialog_width(measures),
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
        size = file_dialog_size(measures, room_of_part(dialog), width, kUsualList);
    }
    resize_in_the_middle(dialog, size);
    lay_out_file_dialog(dialog);
}

void lay_out_file_dialog(HWND dialog) {
    if (GetDlgItem(dialog, IDCANCEL) == nullptr) return;
    const DialogMeasures measures(dialog);
    RECT client{};
    GetClientRect(dialog, &client);
    const auto sides = room_of_part(dialog).sides;
    const auto margin = measures.length(kDialogMargin);
    const auto end = client.bottom - sides.bottom;
    const RECT lists{sides.left + margin, sides.top + above_list(measures),
                     client.right - sides.right - margin, end - below_list(measures)};
    lay_out_top(measures, lists.left, sides.top + margin, lists.right);
    lay_out_lists(measures, lists);
    lay_out_fields(measures, lists.left, lists.bottom + measures.length(kDialogGap), lists.right);
    lay_out_buttons(measures, lists.left, lists.right, end - margin);
    place_part(dialog);
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace tvutil2
