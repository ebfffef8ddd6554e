#include "tvutil2/platform/window/common_dialogs/folder_layout.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/message_words.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <string>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kMargin = 12;
constexpr int kGap = 8;
constexpr int kUsualWidth = 380;
constexpr int kUsualTree = 300;
constexpr int kLeastTree = 80;

// What the words take, measured in the dialog's font.
class Measures {
  public:
    explicit Measures(HWND dialog)
        : m_dialog(dialog), m_dpi(GetDpiForWindow(dialog)), m_context(GetDC(dialog)) {
        m_before = SelectObject(m_context,
                                reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0)));
    }
    ~Measures() {
        SelectObject(m_context, m_before);
        ReleaseDC(m_dialog, m_context);
    }
    Measures(const Measures&) = delete;
    Measures& operator=(const Measures&) = delete;

    [[nodiscard]] LONG length(int pixels) const { return scaled(pixels, m_dpi); }
    [[nodiscard]] bool has(int id) const { return GetDlgItem(m_dialog, id) != nullptr; }
    /// 0 for what isn't there.
    [[nodiscard]] LONG width_of(int id) const {
        if (!has(id)) return 0;
        return text_extent(m_context, text_of(GetDlgItem(m_dialog, id)).c_str(), 0, DT_SINGLELINE)
            .cx;
    }
    [[nodiscard]] LONG title_height(LONG width) const {
        const auto text = text_of(GetDlgItem(m_dialog, kFolderTitle));
        return text.empty() ? 0
                            : text_extent(m_context, text.c_str(), width,
                                          DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX)
                                  .cy;
    }
    [[nodiscard]] SIZE button(int id) const {
        return {std::max(length(80), width_of(id) + length(24)), line() + length(9)};
    }
    [[nodiscard]] LONG field_height() const { return line() + length(9); }
    [[nodiscard]] LONG line() const {
        TEXTMETRICW metrics{};
        GetTextMetricsW(m_context, &metrics);
        return metrics.tmHeight;
    }

    /// The rows below the tree, with the gaps above them and the margin below.
    [[nodiscard]] LONG below_tree() const {
        const auto rows = (has(kFolderEdit) ? 1 : 0) + (has(kFolderTypes) ? 1 : 0);
        return rows * (field_height() + length(kGap)) + length(kMargin) + button(IDOK).cy +
               length(kMargin);
    }
    [[nodiscard]] LONG least_width() const {
        auto width = 2 * length(kMargin) + button(IDOK).cx + length(kGap) + button(IDCANCEL).cx;
        if (has(kFolderMake)) width += button(kFolderMake).cx + 2 * length(kGap);
        return width;
    }

  private:
    HWND m_dialog;
    UINT m_dpi;
    HDC m_context;
    HGDIOBJ m_before;
};

void place(HWND dialog, int id, LONG x, LONG y, LONG width, LONG height) {
    SetWindowPos(GetDlgItem(dialog, id), nullptr, x, y, std::max<LONG>(width, 0),
                 std::max<LONG>(height, 0), SWP_NOZORDER | SWP_NOACTIVATE);
}

SIZE with_frame(HWND dialog, LONG width, LONG height) {
    RECT frame{0, 0, width, height};
    AdjustWindowRectExForDpi(&frame, static_cast<DWORD>(GetWindowLongW(dialog, GWL_STYLE)), FALSE,
                             static_cast<DWORD>(GetWindowLongW(dialog, GWL_EXSTYLE)),
                             GetDpiForWindow(dialog));
    return {frame.right - frame.left, frame.bottom - frame.top};
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
    if (parts.has_types) {
        add_control(dialog, u"Static", parts.types_label, 0, nowhere, kFolderTypesLabel);
        add_control(dialog, u"ComboBox", u"", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST,
                    RECT{0, 0, 100, 200}, kFolderTypes);
    }
    if (parts.has_make) {
        add_control(dialog, u"Button", word(FolderWord::make_folder), WS_TABSTOP, nowhere,
                    kFolderMake);
    }
    const auto* const ok = parts.ok != nullptr ? parts.ok : message_word(IDOK, language);
    add_control(dialog, u"Button", ok, WS_TABSTOP | BS_DEFPUSHBUTTON, nowhere, IDOK);
    add_control(dialog, u"Button", message_word(IDCANCEL, language), WS_TABSTOP, nowhere, IDCANCEL);
    SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
}

}  // namespace

SIZE least_folder_dialog(HWND dialog) {
    const Measures measures(dialog);
    const auto width = measures.least_width();
    const auto title = measures.title_height(width - 2 * measures.length(kMargin));
    return with_frame(dialog, width,
                      title + measures.length(2 * kMargin + kLeastTree) + measures.below_tree());
}

void build_folder_dialog(HWND dialog, const FolderParts& parts, LANGID language) {
    SetWindowTextW(dialog, parts.caption);
    add_parts(dialog, parts, language);
    SIZE size{};
    {
        const Measures measures(dialog);
        const auto width = std::max(measures.least_width(), measures.length(kUsualWidth));
        const auto title = measures.title_height(width - 2 * measures.length(kMargin));
        size =
            with_frame(dialog, width,
                       title + measures.length(2 * kMargin + kUsualTree) + measures.below_tree());
    }
    SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    centre_dialog(dialog);
    lay_out_folder_dialog(dialog);
}

void lay_out_folder_dialog(HWND dialog) {
    if (GetDlgItem(dialog, IDCANCEL) == nullptr) return;
    const Measures measures(dialog);
    RECT client{};
    GetClientRect(dialog, &client);
    const auto margin = measures.length(kMargin);
    const auto gap = measures.length(kGap);
    const auto inside = client.right - 2 * margin;
    const auto title = measures.title_height(inside);
    place(dialog, kFolderTitle, margin, margin, inside, title);
    const auto tree_top = margin + (title > 0 ? title + gap : 0);
    const auto tree_bottom = client.bottom - measures.below_tree();
    place(dialog, kFolderTree, margin, tree_top, inside, tree_bottom - tree_top);

    const auto ok = measures.button(IDOK);
    const auto cancel = measures.button(IDCANCEL);
    const auto row = client.bottom - margin - ok.cy;
    auto top = tree_bottom + gap;
    const auto label =
        std::max(measures.width_of(kFolderLabel), measures.width_of(kFolderTypesLabel));
    const auto place_row = [&](int label_id, int id) {
        if (!measures.has(id)) return;
        const auto height = measures.field_height();
        place(dialog, label_id, margin, top + (height - measures.line()) / 2, label,
              measures.line());
        // A drop-down list's height is its open list's too.
        const auto room = id == kFolderTypes ? 8 * height : height;
        place(dialog, id, margin + label + gap, top, inside - label - gap, room);
        top += height + gap;
    };
    place_row(kFolderLabel, kFolderEdit);
    place_row(kFolderTypesLabel, kFolderTypes);
    const auto cancel_left = client.right - margin - cancel.cx;
    place(dialog, IDCANCEL, cancel_left, row, cancel.cx, cancel.cy);
    place(dialog, IDOK, cancel_left - gap - ok.cx, row, ok.cx, ok.cy);
    if (measures.has(kFolderMake)) {
        const auto make = measures.button(kFolderMake);
        place(dialog, kFolderMake, margin, row, make.cx, make.cy);
    }
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace tvutil2
