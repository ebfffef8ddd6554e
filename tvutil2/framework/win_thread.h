// A thread as an object: its message loop, its main window, its start and end.
#pragma once

#include "tvutil2/framework/command_target.h"
#include "tvutil2/platform/window/messages.h"

class CWnd;
struct SECURITY_ATTRIBUTES;

/// An application's object stands for the thread that the application was started on; every other
/// one starts a thread of its own with CreateThread. Between CreateThread and the thread's end an
/// object belongs to its thread, and must stay until then.
class TVUTIL_API CWinThread : public CCmdTarget {
    DECLARE_DYNCREATE(CWinThread)
  public:
    CWinThread() = default;
    /// Closes the handle.
    ~CWinThread() override;

    /// Starts the thread, which runs InitInstance and then Run, or ExitInstance alone where the
    /// former gave FALSE; what came last is its exit code. It begins at ResumeThread with
    /// CREATE_SUSPENDED. FALSE when it fails, with the reasons of ::CreateThread, or for an object
    /// that has started one (ERROR_INVALID_PARAMETER).
    ///
    /// With m_bAutoDelete the object is gone as soon as the thread has ended: whoever waits for
    /// m_hThread starts suspended and clears it first.
    BOOL CreateThread(DWORD flags = 0, UINT stack = 0, SECURITY_ATTRIBUTES* attributes = nullptr);
    /// Results as ::ResumeThread.
    DWORD ResumeThread();
    /// Results as PostThreadMessageW: a thread has a queue from its first look for messages, or its
    /// first window, on.
    BOOL PostThreadMessage(UINT message, WPARAM wparam, LPARAM lparam) {
        return PostThreadMessageW(m_nThreadID, message, wparam, lparam);
    }

    /// What the thread does first; FALSE, as here, for no message loop.
    virtual BOOL InitInstance() { return FALSE; }
    /// The message loop, with OnIdle whenever no message waits; what ExitInstance gives, after
    /// WM_QUIT.
    virtual int Run();
    /// What the thread does last. The exit code: that of WM_QUIT, 0 before there was one.
    virtual int ExitInstance();

    /// Waits for the next message and dispatches it unless PreTranslateMessage uses it up. FALSE
    /// for WM_QUIT: a loop inside of another one then calls AfxPostQuitMessage again for the outer.
    virtual BOOL PumpMessage();
    /// Asks the objects of the message's window and of those above it, up to the main window; and
    /// the main window in any case. Non-zero uses the message up.
    virtual BOOL PreTranslateMessage(MSG* message);
    /// Nothing waits; `count` is 0 for the first call since the last message. Non-zero asks for
    /// another call. Here the second one drops the thread's temporary window objects.
    virtual BOOL OnIdle(LONG count);
    /// Whether there is something for OnIdle to do behind a message: not behind WM_PAINT, nor when
    /// the pointer stays where it was.
    virtual BOOL IsIdleMessage(MSG* message);

    /// For a loop inside of the thread's own: takes and dispatches one message as the thread's
    /// object does, if there is one. False for WM_QUIT, which is posted again then.
    static bool pump();

    virtual CWnd* GetMainWnd() { return m_pMainWnd; }

    /// The window whose end ends the loop, with 0, when it is one of this thread; not owned, null
    /// again from its end on. A new thread has one that stands for its starter's main window.
    CWnd* m_pMainWnd = nullptr;
    /// Whether the thread deletes the object at its end.
    BOOL m_bAutoDelete = TRUE;
    /// The object's own. Null for an application.
    HANDLE m_hThread = nullptr;
    /// 0 before the start; before Run, for an application.
    DWORD m_nThreadID = 0;

  protected:
    /// What PumpMessage got last.
    MSG m_msgCur{};

  private:
    friend class CWnd;
    static DWORD begin(void* object);
    static void forget_main_window(const CWnd* window, bool had_window);
    int live();

    HWND m_starters_window = nullptr;
    POINT m_pointer{};
};

/// The calling thread's object: the application's on the thread that it was started on, null on a
/// thread that no object stands for.
TVUTIL_API CWinThread* AfxGetThread();
/// The main window of the calling thread's object; null without one.
TVUTIL_API CWnd* AfxGetMainWnd();
/// Ends the calling thread's loop, once no posted message is left.
TVUTIL_API void AfxPostQuitMessage(int code);
