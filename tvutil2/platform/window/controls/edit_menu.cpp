#include "tvutil2/platform/window/controls/edit_menu.h"

#include "tvutil2/platform/base/language_rows.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// In the order of the words; the messages that do it.
constexpr UINT kDoings[] = {EM_UNDO, WM_CUT, WM_COPY, WM_PASTE, WM_CLEAR, EM_SETSEL};
constexpr std::size_t kUndo = 0;
constexpr std::size_t kSelectAll = 5;

// No mnemonic twice in a language.
struct EditWords {
    WORD language;
    const char16_t* words[std::size(kDoings)];
};

constexpr EditWords kEditWords[] = {
    {0x09, {u"&Undo", u"Cu&t", u"&Copy", u"&Paste", u"&Delete", u"Select &all"}},
    {0x0804, {u"撤消(&U)", u"剪切(&T)", u"复制(&C)", u"粘贴(&P)", u"删除(&D)", u"全选(&A)"}},
    {0x04, {u"復原(&U)", u"剪下(&T)", u"複製(&C)", u"貼上(&P)", u"刪除(&D)", u"全選(&A)"}},
    {0x07,
     {u"&Rückgängig", u"&Ausschneiden", u"&Kopieren", u"&Einfügen", u"&Löschen",
      u"Alles au&swählen"}},
    {0x0A, {u"&Deshacer", u"Cor&tar", u"&Copiar", u"&Pegar", u"&Eliminar", u"&Seleccionar todo"}},
    {0x0C, {u"&Annuler", u"Co&uper", u"&Copier", u"C&oller", u"&Supprimer", u"&Tout sélectionner"}},
    {0x11,
     {u"元に戻す(&U)", u"切り取り(&T)", u"コピー(&C)", u"貼り付け(&P)", u"削除(&D)",
      u"すべて選択(&A)"}},
    {0x12,
     {u"실행 취소(&U)", u"잘라내기(&T)", u"복사(&C)", u"붙여넣기(&P)", u"삭제(&D)",
      u"모두 선택(&A)"}},
    {0x16, {u"&Desfazer", u"Recor&tar", u"&Copiar", u"C&olar", u"&Excluir", u"&Selecionar tudo"}},
    {0x19,
     {u"&Отменить", u"&Вырезать", u"&Копировать", u"Вст&авить", u"&Удалить", u"Вы&делить всё"}},
    {0x1B,
     {u"&Späť", u"V&ystrihnúť", u"&Kopírovať", u"&Prilepiť", u"&Odstrániť", u"Vybrať &všetko"}},
};

bool is_possible(const EditInput& edit, UINT doing) {
    const auto& state = edit.state();
    const bool is_secret = state.password != 0;
    const bool can_change = !edit.is_read_only();
    const auto selected = state.text.selection();
    switch (doing) {
        case EM_UNDO:
            return can_change && state.text.can_undo();
        case WM_CUT:
            return can_change && !is_secret && !selected.is_empty();
        case WM_COPY:
            return !is_secret && !selected.is_empty();
        case WM_PASTE:
            return can_change && IsClipboardFormatAvailable(CF_UNICODETEXT) != FALSE;
        case WM_CLEAR:
            return can_change && !selected.is_empty();
        default:
            return selected.end - selected.start < state.text.size();
    }
}

// A number of an item is that of its doing, and one more.
HMENU make_menu(const EditInput& edit) {
    auto* const menu = CreatePopupMenu();
    const auto& words = row_or_english(kEditWords, LANGIDFROMLCID(GetThreadLocale())).words;
    for (std::size_t i = 0; i < std::size(kDoings); ++i) {
        if (i == kUndo + 1 || i == kSelectAll) AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
        AppendMenuW(menu, MF_STRING | (is_possible(edit, kDoings[i]) ? 0 : MF_GRAYED), i + 1,
                    words[i]);
    }
    return menu;
}

// Below the caret, or below the place where it would be seen.
POINT place_at_caret(EditInput& edit, HWND window) {
    auto& state = edit.state();
    const auto& format = state.format;
    auto point = edit.point_of(state.text.caret());
    point.x = std::clamp(point.x, format.left, std::max(format.left, format.right));
    point.y =
        std::clamp(point.y + state.row_height, format.top, std::max(format.top, format.bottom));
    ClientToScreen(window, &point);
    return point;
}

}  // namespace

void show_edit_menu(EditInput& edit, HWND window, LPARAM where) {
    if (GetFocus() != window) SetFocus(window);
    if (!IsWindow(window)) return;
    edit.ready();
    const POINT pointed{GET_X_LPARAM(where), GET_Y_LPARAM(where)};
    const auto place = where == -1 ? place_at_caret(edit, window) : pointed;
    auto* const menu = make_menu(edit);
    const auto chosen =
        TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, static_cast<int>(place.x),
                       static_cast<int>(place.y), 0, window, nullptr);
    DestroyMenu(menu);
    if (chosen <= 0 || !IsWindow(window)) return;
    const auto doing = kDoings[chosen - 1];
    SendMessageW(window, doing, 0, doing == EM_SETSEL ? -1 : 0);
}

}  // namespace tvutil2
