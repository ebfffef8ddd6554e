#include "tvutil2/framework/win_thread.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/app_thread.h"
#include "tvutil2/framework/images.h"
#include "tvutil2/framework/menus.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace {

// Neither needs a record of the thread, so that a program's start makes none.
thread_local CWinThread* t_thread = nullptr;
thread_local bool t_has_application = false;

// What FromHandle made for the while.
void delete_temporary_objects() {
    CWnd::DeleteTempMap();
    CDC::DeleteTempMap();
    CGdiObject::DeleteTempMap();
    CImageList::DeleteTempMap();
    CMenu::DeleteTempMap();
}

}  // namespace

namespace tvutil2 {

void application_starts_here() {
    t_has_application = true;
}

}  // namespace tvutil2

IMPLEMENT_DYNCREATE(CWinThread, CCmdTarget)

CWinThread::~CWinThread() {
    if (m_hThread != nullptr) CloseHandle(m_hThread);
}

BOOL CWinThread::CreateThread(DWORD flags, UINT stack, SECURITY_ATTRIBUTES* attributes) {
    if (m_hThread != nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    const auto* const window = AfxGetMainWnd();
    m_starters_window = window != nullptr ? window->GetSafeHwnd() : nullptr;
    // The thread finds its own handle and number, and may delete the object at any time after.
    m_hThread = ::CreateThread(attributes, stack, &CWinThread::begin, this,
                               flags | CREATE_SUSPENDED, &m_nThreadID);
    if (m_hThread == nullptr) return FALSE;
    if ((flags & CREATE_SUSPENDED) == 0) ResumeThread();
    return TRUE;
}

DWORD CWinThread::ResumeThread() {
    return ::ResumeThread(m_hThread);
}

DWORD CWinThread::begin(void* object) {
    auto* const thread = static_cast<CWinThread*>(object);
    const auto code = thread->live();
    delete_temporary_objects();
    const std::unique_ptr<CWinThread> owner(thread->m_bAutoDelete ? thread : nullptr);
    return static_cast<DWORD>(code);
}

int CWinThread::live() {
    t_thread = this;
    // Objects belong to their thread, so the starter's can't be had here.
    CWnd stand_in;
    if (m_pMainWnd == nullptr && stand_in.Attach(m_starters_window)) m_pMainWnd = &stand_in;
    const auto code = InitInstance() ? Run() : ExitInstance();
    stand_in.Detach();
    if (m_pMainWnd == &stand_in) m_pMainWnd = nullptr;
    t_thread = nullptr;
    return code;
}

int CWinThread::Run() {
    if (m_nThreadID == 0) m_nThreadID = GetCurrentThreadId();
    MSG next;
    LONG count = 0;
    for (bool is_busy = true;;) {
        if (is_busy && PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE) == 0) {
            is_busy = OnIdle(count) != 0;
            count = std::min(count, std::numeric_limits<LONG>::max() - 1) + 1;
            continue;
        }
        if (!PumpMessage()) return ExitInstance();
        if (!IsIdleMessage(&m_msgCur)) continue;
        is_busy = true;
        count = 0;
    }
}

int CWinThread::ExitInstance() {
    return m_msgCur.message == WM_QUIT ? static_cast<int>(m_msgCur.wParam) : 0;
}

BOOL CWinThread::PumpMessage() {
    if (GetMessageW(&m_msgCur, nullptr, 0, 0) == 0) return FALSE;
    // A loop inside of what follows gets messages of its own.
    auto message = m_msgCur;
    if (PreTranslateMessage(&message)) return TRUE;
    TranslateMessage(&message);
    DispatchMessageW(&message);
    return TRUE;
}

bool CWinThread::pump() {
    auto* const thread = AfxGetThread();
    MSG message{};
    if (thread == nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (CWnd::WalkPreTranslateTree(nullptr, &message)) return true;
        TranslateMessage(&message);
        DispatchMessageW(&message);
        return true;
    }
    if (thread != nullptr && thread->PumpMessage()) return true;
    PostQuitMessage(static_cast<int>((thread != nullptr ? thread->m_msgCur : message).wParam));
    return false;
}

BOOL CWinThread::PreTranslateMessage(MSG* message) {
    if (message->hwnd == nullptr) return FALSE;
    auto* const main = GetMainWnd();
    auto* const main_window = main != nullptr ? main->GetSafeHwnd() : nullptr;
    if (CWnd::WalkPreTranslateTree(main_window, message)) return TRUE;
    if (main_window == nullptr || message->hwnd == main_window ||
        IsChild(main_window, message->hwnd)) {
        return FALSE;
    }
    return main->PreTranslateMessage(message);
}

BOOL CWinThread::OnIdle(LONG count) {
    if (count == 1) delete_temporary_objects();
    return count < 1 ? TRUE : FALSE;
}

BOOL CWinThread::IsIdleMessage(MSG* message) {
    if (message->message == WM_PAINT) return FALSE;
    if (message->message != WM_MOUSEMOVE) return TRUE;
    const auto before = m_pointer;
    m_pointer = message->pt;
    return before.x != m_pointer.x || before.y != m_pointer.y ? TRUE : FALSE;
}

// At the end of a window, and at that of an object.
void CWinThread::forget_main_window(const CWnd* window, bool had_window) {
    auto* const thread = AfxGetThread();
    if (thread == nullptr || thread->m_pMainWnd != window) return;
    thread->m_pMainWnd = nullptr;
    if (had_window) AfxPostQuitMessage(0);
}

CWinThread* AfxGetThread() {
    if (t_thread != nullptr) return t_thread;
    return t_has_application ? AfxGetApp() : nullptr;
}

CWnd* AfxGetMainWnd() {
    auto* const thread = AfxGetThread();
    return thread != nullptr ? thread->GetMainWnd() : nullptr;
}

void AfxPostQuitMessage(int code) {
    PostQuitMessage(code);
}
