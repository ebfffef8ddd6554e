// Windows as objects.
//
// A CWnd and a window belong to each other from Create, Attach or SubclassWindow until the window's
// last message or Detach. The object hears the window's messages through WindowProc and its message
// map; what no map wants goes to the procedure that the window's class has. An object belongs to
// the thread of its window, whose map from windows to objects has it.
//
// Members that are named as functions of the platform do with the window what those do.
#pragma once

#include "tvutil2/framework/notification_forms.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"

class CDataExchange;
class CFont;
class CRgn;
struct SCROLLINFO;

class TVUTIL_API CWnd : public CCmdTarget {
    DECLARE_DYNCREATE(CWnd)
  public:
    CWnd() = default;
    /// Destroys a window that it still has; what the derived classes do about its end is over.
    ~CWnd() override;

    operator HWND() const { return m_hWnd; }
    [[nodiscard]] HWND GetSafeHwnd() const { return m_hWnd; }

    /// Makes the window and lets it be this object's from its first message on. FALSE when it fails
    /// or PreCreateWindow forbids it. A null class is AfxRegisterWndClass(0).
    BOOL CreateEx(DWORD ex_style, const char16_t* class_name, const char16_t* title, DWORD style,
                  int x, int y, int width, int height, HWND parent, HMENU menu_or_id,
                  void* parameter = nullptr);
    BOOL CreateEx(DWORD ex_style, const char16_t* class_name, const char16_t* title, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, void* parameter = nullptr);
    /// A child window.
    BOOL Create(const char16_t* class_name, const char16_t* title, DWORD style, const RECT& rect,
                CWnd* parent, UINT id);
    virtual BOOL DestroyWindow();

    /// Takes a window over, without hearing its messages. FALSE for null, or when this object or
    /// the window has another one.
    BOOL Attach(HWND window);
    /// Gives it up.
    HWND Detach();
    /// Takes a window over and hears its messages from now on, before its former procedure does.
    BOOL SubclassWindow(HWND window);
    BOOL SubclassDlgItem(UINT id, CWnd* parent);
    HWND UnsubclassWindow();

    /// The object of a window; one made for the while where it has none, null for null. Such an
    /// object is there until DeleteTempMap, which an idle CWinThread::Run calls, or the end of the
    /// thread.
    static CWnd* FromHandle(HWND window);
    /// The object that lasts; null for none.
    static CWnd* FromHandlePermanent(HWND window);
    static void DeleteTempMap();

    LRESULT SendMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const {
        return SendMessageW(m_hWnd, message, wparam, lparam);
    }
    BOOL PostMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return PostMessageW(m_hWnd, message, wparam, lparam);
    }
    void SetWindowText(const char16_t* text);
    void GetWindowText(CString& text) const;
    int GetWindowText(char16_t* text, int size) const;
    [[nodiscard]] int GetWindowTextLength() const;
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds,
                      void (*callback)(HWND, UINT, UINT_PTR, DWORD) = nullptr);
    BOOL KillTimer(UINT_PTR id);
    /// In the font's place null stands for the system's.
    void SetFont(CFont* font, BOOL redraw = TRUE);
    [[nodiscard]] CFont* GetFont() const;
    /// Answers the one before. The icon stays the caller's, and is to outlive the window.
    HICON SetIcon(HICON icon, BOOL big) {
        return reinterpret_cast<HICON>(SendMessage(WM_SETICON, big != 0 ? ICON_BIG : ICON_SMALL,
                                                   reinterpret_cast<LPARAM>(icon)));
    }
    [[nodiscard]] HICON GetIcon(BOOL big) const {
        return reinterpret_cast<HICON>(SendMessage(WM_GETICON, big != 0 ? ICON_BIG : ICON_SMALL));
    }

    [[nodiscard]] DWORD GetStyle() const;
    [[nodiscard]] DWORD GetExStyle() const;
    /// FALSE when nothing changes. With flags (SWP_...) the window is told by SetWindowPos.
    BOOL ModifyStyle(DWORD remove, DWORD add, UINT flags = 0);
    BOOL ModifyStyleEx(DWORD remove, DWORD add, UINT flags = 0);

    // State.
    BOOL ShowWindow(int command);
    [[nodiscard]] BOOL IsWindowVisible() const;
    BOOL EnableWindow(BOOL enable = TRUE);
    [[nodiscard]] BOOL IsWindowEnabled() const;
    [[nodiscard]] BOOL IsIconic() const;
    [[nodiscard]] BOOL IsZoomed() const;
    CWnd* SetFocus();
    static CWnd* GetFocus();
    CWnd* SetActiveWindow();
    static CWnd* GetActiveWindow();
    BOOL SetForegroundWindow();
    static CWnd* GetForegroundWindow();
    CWnd* SetCapture();
    static CWnd* GetCapture();

    // Place.
    void GetWindowRect(RECT* rect) const;
    void GetClientRect(RECT* rect) const;
    void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE);
    void MoveWindow(const RECT* rect, BOOL repaint = TRUE);
    BOOL SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags);
    void BringWindowToTop();
    /// In the middle of another window, or of its owner or parent, on its monitor's work area.
    void CenterWindow(CWnd* around = nullptr);
    void ClientToScreen(POINT* point) const;
    void ClientToScreen(RECT* rect) const;
    void ScreenToClient(POINT* point) const;
    void ScreenToClient(RECT* rect) const;
    void MapWindowPoints(const CWnd* to, POINT* points, UINT count) const;
    void MapWindowPoints(const CWnd* to, RECT* rect) const;

    // Painting.
    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(const RECT* rect, BOOL erase = TRUE);
    void UpdateWindow();
    void ValidateRect(const RECT* rect);
    /// With RDW_ flags; of no rectangle: all of it.
    BOOL RedrawWindow(const RECT* rect, CRgn* region, UINT flags);
    void SetRedraw(BOOL redraw = TRUE);
    /// Given back by ReleaseDC.
    CDC* GetDC();
    CDC* GetWindowDC();
    int ReleaseDC(CDC* context);

    // The frame's scroll bars (SB_HORZ, SB_VERT), and its menu.
    int SetScrollPos(int bar, int position, BOOL redraw = TRUE);
    [[nodiscard]] int GetScrollPos(int bar) const;
    void SetScrollRange(int bar, int least, int most, BOOL redraw = TRUE);
    /// They fill in the record's size themselves.
    BOOL SetScrollInfo(int bar, SCROLLINFO* info, BOOL redraw = TRUE);
    BOOL GetScrollInfo(int bar, SCROLLINFO* info, UINT what = kAllOfScrollInfo) const;
    /// Null for none.
    [[nodiscard]] CMenu* GetMenu() const;
    BOOL SetMenu(CMenu* menu);
    void DrawMenuBar();

    // Family.
    static CWnd* FindWindow(const char16_t* class_name, const char16_t* title);
    static CWnd* WindowFromPoint(POINT point);
    [[nodiscard]] CWnd* GetOwner() const;
    [[nodiscard]] CWnd* GetParent() const;
    [[nodiscard]] CWnd* GetTopLevelParent() const;
    [[nodiscard]] CWnd* GetWindow(UINT relation) const;
    [[nodiscard]] BOOL IsChild(const CWnd* window) const;
    [[nodiscard]] CWnd* GetDlgItem(int id) const;
    void GetDlgItem(int id, HWND* window) const;
    [[nodiscard]] int GetDlgCtrlID() const;
    [[nodiscard]] CWnd* GetNextDlgTabItem(CWnd* control, BOOL previous = FALSE) const;
    void SetDlgItemText(int id, const char16_t* text);
    int GetDlgItemText(int id, CString& text) const;
    void SetDlgItemInt(int id, UINT number, BOOL is_signed = TRUE);
    /// 0 for what is no number, which `is_one` then says too.
    UINT GetDlgItemInt(int id, BOOL* is_one = nullptr, BOOL is_signed = TRUE) const;
    LRESULT SendDlgItemMessage(int id, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    void CheckDlgButton(int id, UINT check);
    [[nodiscard]] UINT IsDlgButtonChecked(int id) const;
    void CheckRadioButton(int first, int last, int checked);
    /// 0 for none.
    [[nodiscard]] int GetCheckedRadioButton(int first, int last) const;

    /// A message box of this window, under the application's name with a null caption.
    int MessageBox(const char16_t* text, const char16_t* caption = nullptr, UINT type = 0);

    /// Moves data between members and controls by DoDataExchange: from the controls, or with FALSE
    /// to them. FALSE when the exchange failed (CDataExchange::Fail). What controls tell meanwhile
    /// isn't heard.
    BOOL UpdateData(BOOL save = TRUE);

    /// A message that the thread's loop has got, before its translation; non-zero uses it up.
    virtual BOOL PreTranslateMessage(MSG* message);
    /// Asks the window's object, and those of its parents up to `stop`.
    static BOOL WalkPreTranslateTree(HWND stop, MSG* message);

    HWND m_hWnd = nullptr;

  protected:
    /// May change what CreateEx asks for; 0 forbids the window.
    virtual BOOL PreCreateWindow(CREATESTRUCTW& given);
    /// The window has just become this object's.
    virtual void PreSubclassWindow() {}
    /// Behind the window's last message; may delete the object.
    virtual void PostNcDestroy() {}
    /// Which members belong to which controls, by DDX_ functions.
    virtual void DoDataExchange(CDataExchange* exchange);
    /// Every message: the map's handler, or DefWindowProc.
    virtual LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam);
    virtual BOOL OnWndMsg(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wparam, LPARAM lparam);
    virtual BOOL OnCommand(WPARAM wparam, LPARAM lparam);
    /// What a control tells by WM_NOTIFY; `result` is never null.
    virtual BOOL OnNotify(WPARAM wparam, LPARAM lparam, LRESULT* result);
    /// What this control has told its parent, before the parent's default handling or, for
    /// WM_COMMAND and WM_NOTIFY, its map. Non-zero keeps it from the parent. Here: the entries for
    /// what is reflected.
    virtual BOOL OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result);
    /// The default handling of the message that is being handled.
    LRESULT Default();

    // What maps of derived classes name; each does the default.
    int OnCreate(CREATESTRUCTW* given);
    void OnDestroy();
    void OnNcDestroy();
    void OnClose();
    void OnSize(UINT type, int width, int height);
    void OnMove(int x, int y);
    void OnGetMinMaxInfo(MINMAXINFO* limits);
    void OnWindowPosChanging(WINDOWPOS* place);
    void OnWindowPosChanged(WINDOWPOS* place);
    void OnShowWindow(BOOL show, UINT why);
    void OnEnable(BOOL enable);
    void OnActivate(UINT state, CWnd* other, BOOL minimized);
    void OnPaint();
    BOOL OnEraseBkgnd(CDC* context);
    void OnDrawItem(int id, DRAWITEMSTRUCT* item);
    HBRUSH OnCtlColor(CDC* context, CWnd* control, UINT kind);
    LRESULT OnNcHitTest(CPoint point);
    BOOL OnSetCursor(CWnd* window, UINT hit, UINT message);
    void OnSetFocus(CWnd* before);
    void OnKillFocus(CWnd* next);
    UINT OnGetDlgCode();
    void OnKeyDown(UINT key, UINT count, UINT flags);
    void OnKeyUp(UINT key, UINT count, UINT flags);
    void OnChar(UINT character, UINT count, UINT flags);
    void OnMouseMove(UINT keys, CPoint point);
    void OnLButtonDown(UINT keys, CPoint point);
    void OnLButtonUp(UINT keys, CPoint point);
    void OnLButtonDblClk(UINT keys, CPoint point);
    void OnRButtonDown(UINT keys, CPoint point);
    void OnRButtonUp(UINT keys, CPoint point);
    BOOL OnMouseWheel(UINT keys, short delta, CPoint point);
    void OnMouseLeave();
    void OnCaptureChanged(CWnd* next);
    void OnContextMenu(CWnd* window, CPoint point);
    void OnInitMenuPopup(CMenu* menu, UINT position, BOOL is_system);
    void OnSysCommand(UINT command, LPARAM parameter);
    void OnHScroll(UINT code, UINT position, CScrollBar* bar);
    void OnVScroll(UINT code, UINT position, CScrollBar* bar);
    void OnTimer(UINT_PTR id);
    LRESULT OnColorRecord(WPARAM wparam, LPARAM lparam);

    DECLARE_MESSAGE_MAP()

  private:
    friend struct WindowObjects;
    friend class CDialog;
    class Creation;
    static LRESULT procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    static LRESULT hook(int code, WPARAM wparam, LPARAM lparam);
    static constexpr UINT kAllOfScrollInfo = 0x17;  // SIF_ALL
    void hear(HWND window);
    void forget_window();
    BOOL reflect(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result);
    LRESULT reflect_or_default();

    WNDPROC m_former = nullptr;
    bool m_is_exchanging = false;
};

/// A class of windows that only differ in these; its name. The same name for the same values.
TVUTIL_API const char16_t* AfxRegisterWndClass(UINT style, HCURSOR cursor = nullptr,
                                               HBRUSH background = nullptr, HICON icon = nullptr);
