// Windows as objects.
//
// A CWnd and a window belong to each other from Create, Attach or SubclassWindow until the window's
// last message or Detach. The object hears the window's messages through WindowProc and its message
// map; what no map wants goes to the procedure that the window's class has. An object belongs to
// the thread of its window, whose map from windows to objects has it.
#pragma once

#include "tvutil2/framework/command_target.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"

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
    HWND UnsubclassWindow();

    /// The object of a window; one made for the while where it has none, null for null. Such an
    /// object is there until DeleteTempMap, which an idle CWinThread::Run calls, or the end of the
    /// thread.
    static CWnd* FromHandle(HWND window);
    /// The object that lasts; null for none.
    static CWnd* FromHandlePermanent(HWND window);
    static void DeleteTempMap();

    LRESULT SendMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return SendMessageW(m_hWnd, message, wparam, lparam);
    }
    BOOL PostMessage(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
        return PostMessageW(m_hWnd, message, wparam, lparam);
    }
    void SetWindowText(const char16_t* text);
    void GetWindowText(CString& text) const;
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds,
                      void (*callback)(HWND, UINT, UINT_PTR, DWORD) = nullptr);
    BOOL KillTimer(UINT_PTR id);
    BOOL ShowWindow(int command);
    BOOL EnableWindow(BOOL enable = TRUE);
    [[nodiscard]] CWnd* GetParent() const;
    [[nodiscard]] CWnd* GetDlgItem(int id) const;

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
    /// Every message: the map's handler, or DefWindowProc.
    virtual LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam);
    virtual BOOL OnWndMsg(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wparam, LPARAM lparam);
    virtual BOOL OnCommand(WPARAM wparam, LPARAM lparam);
    /// The default handling of the message that is being handled.
    LRESULT Default();

    // What maps of derived classes name; each does the default.
    int OnCreate(CREATESTRUCTW* given);
    void OnDestroy();
    void OnClose();
    void OnPaint();
    void OnSize(UINT type, int width, int height);
    void OnTimer(UINT_PTR id);

    DECLARE_MESSAGE_MAP()

  private:
    friend struct WindowObjects;
    static LRESULT procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    static LRESULT hook(int code, WPARAM wparam, LPARAM lparam);
    void hear(HWND window);
    void forget_window();

    WNDPROC m_former = nullptr;
};

/// A class of windows that only differ in these; its name. The same name for the same values.
TVUTIL_API const char16_t* AfxRegisterWndClass(UINT style, HCURSOR cursor = nullptr,
                                               HBRUSH background = nullptr, HICON icon = nullptr);
