// The system's controls as objects: each member sends the control the message of its name.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/controls/button.h"
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
};
