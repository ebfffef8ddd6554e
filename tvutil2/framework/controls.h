// The system's controls as objects: each member sends the control the message of its name.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/controls/static.h"

class TVUTIL_API CStatic : public CWnd {
    DECLARE_DYNAMIC(CStatic)
  public:
    /// WS_CHILD is added to the style.
    BOOL Create(const char16_t* text, DWORD style, const RECT& rect, CWnd* parent,
                UINT id = 0xFFFF) {
        return CWnd::Create(u"Static", text, style, rect, parent, id);
    }
    /// They stay the caller's; the one before.
    HICON SetIcon(HICON icon) {
        return reinterpret_cast<HICON>(
            SendMessage(STM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(icon)));
    }
    HBITMAP SetBitmap(HBITMAP bitmap) {
        return reinterpret_cast<HBITMAP>(
            SendMessage(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap)));
    }

  protected:
    /// With SS_OWNERDRAW, when the parent has no handler for it.
    virtual void DrawItem(DRAWITEMSTRUCT* /*item*/) {}
    BOOL OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) override;
};

class TVUTIL_API CButton : public CWnd {
    DECLARE_DYNAMIC(CButton)
  public:
    BOOL Create(const char16_t* text, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(u"Button", text, style, rect, parent, id);
    }
    [[nodiscard]] int GetCheck() const { return static_cast<int>(SendMessage(BM_GETCHECK)); }
    void SetCheck(int check) { SendMessage(BM_SETCHECK, static_cast<WPARAM>(check)); }
    [[nodiscard]] UINT GetState() const { return static_cast<UINT>(SendMessage(BM_GETSTATE)); }
    void SetState(BOOL pressed) { SendMessage(BM_SETSTATE, static_cast<WPARAM>(pressed)); }
    void SetButtonStyle(UINT style, BOOL redraw = TRUE) { SendMessage(BM_SETSTYLE, style, redraw); }
    void SetNote(const char16_t* note) {
        SendMessage(BCM_SETNOTE, 0, reinterpret_cast<LPARAM>(note));
    }

  protected:
    /// With BS_OWNERDRAW, when the parent has no handler for it.
    virtual void DrawItem(DRAWITEMSTRUCT* /*item*/) {}
    BOOL OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) override;
};

class TVUTIL_API CEdit : public CWnd {
    DECLARE_DYNAMIC(CEdit)
  public:
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(u"Edit", u"", style, rect, parent, id);
    }
    void GetSel(int& first, int& end) const;
    void SetSel(int first, int end) {
        SendMessage(EM_SETSEL, static_cast<WPARAM>(first), end);
        SendMessage(EM_SCROLLCARET);
    }
    void ReplaceSel(const char16_t* text, BOOL can_undo = FALSE) {
        SendMessage(EM_REPLACESEL, static_cast<WPARAM>(can_undo), reinterpret_cast<LPARAM>(text));
    }
    void GetRect(RECT* rect) const { SendMessage(EM_GETRECT, 0, reinterpret_cast<LPARAM>(rect)); }
    void SetRectNP(const RECT* rect) {
        SendMessage(EM_SETRECTNP, 0, reinterpret_cast<LPARAM>(rect));
    }
    [[nodiscard]] DWORD GetSel() const { return static_cast<DWORD>(SendMessage(EM_GETSEL)); }
    void SetRect(const RECT* rect) { SendMessage(EM_SETRECT, 0, reinterpret_cast<LPARAM>(rect)); }
    /// Up to `most` units, without a zero: how many.
    int GetLine(int line, char16_t* text, int most) const;
    [[nodiscard]] int LineFromChar(int index = -1) const {
        return static_cast<int>(SendMessage(EM_LINEFROMCHAR, static_cast<WPARAM>(index)));
    }
    [[nodiscard]] int LineIndex(int line = -1) const {
        return static_cast<int>(SendMessage(EM_LINEINDEX, static_cast<WPARAM>(line)));
    }
    [[nodiscard]] int LineLength(int index = -1) const {
        return static_cast<int>(SendMessage(EM_LINELENGTH, static_cast<WPARAM>(index)));
    }
    void LineScroll(int lines, int characters = 0) {
        SendMessage(EM_LINESCROLL, static_cast<WPARAM>(characters), lines);
    }
    void SetMargins(UINT left, UINT right) {
        SendMessage(EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                    MAKELONG(static_cast<WORD>(left), static_cast<WORD>(right)));
    }
    /// Shown while there is no text and, unless `while_focused`, no focus.
    BOOL SetCueBanner(const char16_t* text, BOOL while_focused = FALSE) {
        return SendMessage(EM_SETCUEBANNER, static_cast<WPARAM>(while_focused),
                           reinterpret_cast<LPARAM>(text)) != 0
                   ? TRUE
                   : FALSE;
    }
    [[nodiscard]] BOOL CanUndo() const { return SendMessage(EM_CANUNDO) != 0 ? TRUE : FALSE; }
    void EmptyUndoBuffer() { SendMessage(EM_EMPTYUNDOBUFFER); }
    [[nodiscard]] UINT GetLimitText() const {
        return static_cast<UINT>(SendMessage(EM_GETLIMITTEXT));
    }
    void SetLimitText(UINT count) { SendMessage(EM_SETLIMITTEXT, count); }
    [[nodiscard]] int GetLineCount() const {
        return static_cast<int>(SendMessage(EM_GETLINECOUNT));
    }
    [[nodiscard]] BOOL GetModify() const { return SendMessage(EM_GETMODIFY) != 0 ? TRUE : FALSE; }
    void SetModify(BOOL modified = TRUE) {
        SendMessage(EM_SETMODIFY, static_cast<WPARAM>(modified));
    }
    BOOL SetReadOnly(BOOL read_only = TRUE) {
        return SendMessage(EM_SETREADONLY, static_cast<WPARAM>(read_only)) != 0 ? TRUE : FALSE;
    }
    void LimitText(int count = 0) { SendMessage(EM_LIMITTEXT, static_cast<WPARAM>(count)); }
    void SetPasswordChar(char16_t character) { SendMessage(EM_SETPASSWORDCHAR, character); }
    BOOL Undo() { return SendMessage(EM_UNDO) != 0 ? TRUE : FALSE; }
    void Cut() { SendMessage(WM_CUT); }
    void Copy() { SendMessage(WM_COPY); }
    void Paste() { SendMessage(WM_PASTE); }
    void Clear() { SendMessage(WM_CLEAR); }
};

/// Indices are -1 for none.
class TVUTIL_API CListBox : public CWnd {
    DECLARE_DYNAMIC(CListBox)
  public:
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(u"ListBox", u"", style, rect, parent, id);
    }
    int AddString(const char16_t* text) { return ask(LB_ADDSTRING, 0, text); }
    int InsertString(int index, const char16_t* text) { return ask(LB_INSERTSTRING, index, text); }
    int DeleteString(int index) { return ask(LB_DELETESTRING, index); }
    void ResetContent() { SendMessage(LB_RESETCONTENT); }
    [[nodiscard]] int GetCount() const { return ask(LB_GETCOUNT); }
    [[nodiscard]] int GetCurSel() const { return ask(LB_GETCURSEL); }
    int SetCurSel(int index) { return ask(LB_SETCURSEL, index); }
    // With LBS_MULTIPLESEL or LBS_EXTENDEDSEL; index -1 is all.
    int SetSel(int index, BOOL select = TRUE) {
        return static_cast<int>(SendMessage(LB_SETSEL, static_cast<WPARAM>(select), index));
    }
    [[nodiscard]] int GetSel(int index) const { return ask(LB_GETSEL, index); }
    [[nodiscard]] int GetSelCount() const { return ask(LB_GETSELCOUNT); }
    int GetSelItems(int most, int* indices) const {
        return static_cast<int>(SendMessage(LB_GETSELITEMS, static_cast<WPARAM>(most),
                                            reinterpret_cast<LPARAM>(indices)));
    }
    [[nodiscard]] int GetTopIndex() const { return ask(LB_GETTOPINDEX); }
    int SetTopIndex(int index) { return ask(LB_SETTOPINDEX, index); }
    int GetItemRect(int index, RECT* rect) const {
        return static_cast<int>(SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(index),
                                            reinterpret_cast<LPARAM>(rect)));
    }
    [[nodiscard]] int GetTextLen(int index) const { return ask(LB_GETTEXTLEN, index); }
    /// Throws CInvalidArgException for an index that isn't one.
    void GetText(int index, CString& text) const;
    [[nodiscard]] int FindString(int after, const char16_t* text) const {
        return ask(LB_FINDSTRING, after, text);
    }
    [[nodiscard]] int FindStringExact(int after, const char16_t* text) const {
        return ask(LB_FINDSTRINGEXACT, after, text);
    }
    int SelectString(int after, const char16_t* text) { return ask(LB_SELECTSTRING, after, text); }
    [[nodiscard]] DWORD_PTR GetItemData(int index) const {
        return static_cast<DWORD_PTR>(SendMessage(LB_GETITEMDATA, static_cast<WPARAM>(index)));
    }
    int SetItemData(int index, DWORD_PTR data) {
        return static_cast<int>(
            SendMessage(LB_SETITEMDATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data)));
    }

  private:
    [[nodiscard]] int ask(UINT message, int index = 0, const char16_t* text = nullptr) const {
        return static_cast<int>(
            SendMessage(message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
    }
};

/// Indices are -1 for none.
class TVUTIL_API CComboBox : public CWnd {
    DECLARE_DYNAMIC(CComboBox)
  public:
    /// The rectangle holds the open list.
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(u"ComboBox", u"", style, rect, parent, id);
    }
    int AddString(const char16_t* text) { return ask(CB_ADDSTRING, 0, text); }
    /// -1 puts it at the end, also of a sorted list.
    int InsertString(int index, const char16_t* text) { return ask(CB_INSERTSTRING, index, text); }
    int DeleteString(UINT index) { return ask(CB_DELETESTRING, static_cast<int>(index)); }
    void ResetContent() { SendMessage(CB_RESETCONTENT); }
    [[nodiscard]] int GetCount() const { return ask(CB_GETCOUNT); }
    [[nodiscard]] int GetCurSel() const { return ask(CB_GETCURSEL); }
    int SetCurSel(int index) { return ask(CB_SETCURSEL, index); }
    int SelectString(int after, const char16_t* text) { return ask(CB_SELECTSTRING, after, text); }
    [[nodiscard]] int GetLBTextLen(int index) const { return ask(CB_GETLBTEXTLEN, index); }
    /// Throws CInvalidArgException for an index that isn't one.
    void GetLBText(int index, CString& text) const;
    [[nodiscard]] int FindString(int after, const char16_t* text) const {
        return ask(CB_FINDSTRING, after, text);
    }
    [[nodiscard]] int FindStringExact(int after, const char16_t* text) const {
        return ask(CB_FINDSTRINGEXACT, after, text);
    }
    void ShowDropDown(BOOL show = TRUE) { ask(CB_SHOWDROPDOWN, show); }
    [[nodiscard]] BOOL GetDroppedState() const { return ask(CB_GETDROPPEDSTATE); }
    int SetDroppedWidth(UINT width) { return ask(CB_SETDROPPEDWIDTH, static_cast<int>(width)); }
    [[nodiscard]] DWORD GetEditSel() const { return static_cast<DWORD>(ask(CB_GETEDITSEL)); }
    BOOL SetEditSel(int first, int end) {
        return static_cast<BOOL>(SendMessage(
            CB_SETEDITSEL, 0, MAKELONG(static_cast<WORD>(first), static_cast<WORD>(end))));
    }
    void LimitText(int count) { ask(CB_LIMITTEXT, count); }
    [[nodiscard]] DWORD_PTR GetItemData(int index) const {
        return static_cast<DWORD_PTR>(SendMessage(CB_GETITEMDATA, static_cast<WPARAM>(index)));
    }
    int SetItemData(int index, DWORD_PTR data) {
        return static_cast<int>(
            SendMessage(CB_SETITEMDATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data)));
    }

  private:
    int ask(UINT message, int index = 0, const char16_t* text = nullptr) const {
        return static_cast<int>(
            SendMessage(message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
    }
};
