#include "tvutil2/platform/window/common_dialogs/folder_layout.h"

#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/dialog_measures.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/controls/tree_view.h"
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
constexpr int kUsualWidth = 380;
constexpr int kUsualTree = 300;
constexpr int kLeastTree = 80;

LONG title_height(const DialogMeasures& measures, HWND dialog, LONG width) {
    return measures.text_height(text_of(GetDlgItem(dialog, kFolderTitle)).c_str(), width);
}

// The rows below the tree, with the gaps above them and the margin below.
LONG below_tree(const DialogMeasures& measures) {
    const auto margin = measures.length(kDialogMargin);
    const auto row =
        measures.has(kFolderEdit) ? measures.field_height() + measures.length(kDialogGap) : 0;
    return row + 2 * margin + measures.button(IDOK).cy;
}

LONG least_width(const DialogMeasures& measures) {
    const auto gap = measures.length(kDialogGap);
    auto width = 2 * measures.length(kDialogMargin) + measures.button(IDOK).cx + gap +
                 measures.button(IDCANCEL).cx;
    if (measures.has(kFolderMake)) width += measures.button(kFolderMake).cx + 2 * gap;
    return width;
}

// With a tree of that height, in pixels at 96 dots an inch.
SIZE size_with(HWND dialog, const DialogMeasures& measures, LONG width, int tree) {
    const auto title = title_height(measures, dialog, width - 2 * measures.length(kDialogMargin));
    return measures.with_frame(
        width, title + measures.length(2 * kDialogMargin + tree) + below_tree(measures));
}

// In the order in which Tab goes through them.
void add_parts(HWND dialog, const FolderParts& parts, LANGID language) {
    const RECT nowhere{};
    const auto word = [&](FolderWord which) { return folder_word(which, language); };
    add_control(dialog, u"Static", parts.title, SS_NOPREFIX | SS_EDITCONTROL, nowhere,
                kFolderTitle);
    add_control(dialog, WC_TREEVIEWW, u"",
                WS_TABSTOP | WS_VSCROLL | WS_BORDER | TVS_HASBUTTONS | TVS_HASLINES |
                    TVS_SHOWSELALWAYS | TVS_EDITLABELS,
                nowhere, kFolderTree);
    if (parts.edit_label != nullptr) {
        add_control(dialog, u"Static", parts.edit_label, 0, nowhere, kFolderLabel);
        add_control(dialog, u"Edit", u"", WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL, nowhere,
                    kFolderEdit);
    }
    if (parts.has_make) {
        add_control(dialog, u"Button", word(FolderWord::make_folder), WS_TABSTOP, nowhere,
                    kFolderMake);
    }
    add_control(dialog, u"Button", message_word(IDOK, language), WS_TABSTOP | BS_DEFPUSHBUTTON,
                nowhere, IDOK);
    add_control(dialog, u"Button", message_word(IDCANCEL, language), WS_TABSTOP, nowhere, IDCANCEL);
    SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
}

}  // namespace

SIZE least_folder_dialog(HWND dialog) {
    const DialogMeasures measures(dialog);
    return size_with(dialog, measures, least_width(measures), kLeastTree);
}

void build_folder_dialog(HWND dialog, const FolderParts& parts, LANGID language) {
    SetWindowTextW(dialog, parts.caption);
    add_parts(dialog, parts, language);
    SIZE size{};
    {
        const DialogMeasures measures(dialog);
        const auto width = std::max(least_width(measures), measures.length(kUsualWidth));
        size = size_with(dialog, measures, width, kUsualTree);
    }
    resize_in_the_middle(dialog, size);
    lay_out_folder_dialog(dialog);
}

void lay_out_folder_dialog(HWND dialog) {
    if (GetDlgItem(dialog, IDCANCEL) == nullptr) return;
    const DialogMeasures measures(dialog);
    RECT client{};
    GetClientRect(dialog, &client);
    const auto margin = measures.length(kDialogMargin);
    const auto gap = measures.length(kDialogGap);
    const auto inside = client.right - 2 * margin;
    const auto title = title_height(measures, dialog, inside);
    measures.place(kFolderTitle, margin, margin, inside, title);
    const auto tree_top = margin + (title > 0 ? title + gap : 0);
    const auto tree_bottom = client.bottom - below_tree(measures);
    measures.place(kFolderTree, margin, tree_top, inside, tree_bottom - tree_top);
    measures.place_row(kFolderLabel, measures.width_of(kFolderLabel), kFolderEdit, margin,
                       tree_bottom + gap, client.right - margin);

    const auto ok = measures.button(IDOK);
    const auto cancel = measures.button(IDCANCEL);
    const auto row = client.bottom - margin - ok.cy;
    const auto cancel_left = client.right - margin - cancel.cx;
    measures.place(IDCANCEL, cancel_left, row, cancel.cx, cancel.cy);
    measures.place(IDOK, cancel_left - gap - ok.cx, row, ok.cx, ok.cy);
    if (measures.has(kFolderMake)) {
        const auto make = measures.button(kFolderMake);
        measures.place(kFolderMake, margin, row, make.cx, make.cy);
    }
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace tvutil2
