#include "tvutil2/framework/wnd.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/bar_controls.h"
#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/dialog.h"
#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/temporaries.h"
#include "tvutil2/framework/wnd_creation.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/window.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

// The thread's windows that have objects, and what it is in the middle of.
struct WindowObjects {
    std::unordered_map<HWND, CWnd*> permanent;
    std::unordered_map<HWND, std::unique_ptr<CWnd>> temporary;
    CWnd* creating = nullptr;
    MSG handled{};

    static WindowObjects& current() {
        static thread_local WindowObjects objects;
        return objects;
    }
    ~WindowObjects() {
        for (auto& each : temporary) each.second->m_hWnd = nullptr;
    }
};

IMPLEMENT_DYNCREATE(CWnd, CCmdTarget)

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
ON_MESSAGE(WM_CTLCOLOR, &CWnd::OnColorRecord)
END_MESSAGE_MAP()

CWnd::~CWnd() {
    CWinThread::forget_main_window(this, m_hWnd != nullptr);
    if (m_hWnd == nullptr) return;
    auto* const window = m_hWnd;
    forget_window();
    ::DestroyWindow(window);
}

// Gives the window back to its former procedure, which hears the rest.
void CWnd::forget_window() {
    auto& objects = WindowObjects::current();
    const auto found = objects.permanent.find(m_hWnd);
    if (found != objects.permanent.end() && found->second == this) objects.permanent.erase(found);
    if (m_former != nullptr && IsWindow(m_hWnd) &&
        GetWindowLongPtrW(m_hWnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&CWnd::procedure)) {
        SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_former));
    }
    m_former = nullptr;
    m_hWnd = nullptr;
}

void CWnd::hear(HWND window) {
    Attach(window);
    PreSubclassWindow();
    m_former = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CWnd::procedure)));
}

LRESULT CWnd::hook(int code, WPARAM wparam, LPARAM lparam) {
    auto*& creating = WindowObjects::current().creating;
    if (code == HCBT_CREATEWND && creating != nullptr) {
        // The first window of this call, and none that its procedure makes.
        std::exchange(creating, nullptr)->hear(reinterpret_cast<HWND>(wparam));
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

CWnd::Creation::Creation(CWnd& object)
    : m_object(object),
      m_before(std::exchange(WindowObjects::current().creating, &object)),
      m_hook(SetWindowsHookExW(WH_CBT, &CWnd::hook, nullptr, GetCurrentThreadId())) {}

void CWnd::Creation::end() {
    if (m_hook == nullptr) return;
    UnhookWindowsHookEx(std::exchange(m_hook, nullptr));
    WindowObjects::current().creating = m_before;
}

bool CWnd::Creation::is_waiting() const {
    return WindowObjects::current().creating == &m_object;
}

BOOL CWnd::CreateEx(DWORD ex_style, const char16_t* class_name, const char16_t* title, DWORD style,
                    int x, int y, int width, int height, HWND parent, HMENU menu_or_id,
                    void* parameter) {
    CREATESTRUCTW given{
        parameter, AfxGetInstanceHandle(),   menu_or_id, parent,     height,  width, y,
        x,         static_cast<LONG>(style), title,      class_name, ex_style};
    if (m_hWnd != nullptr) return FALSE;
    if (!PreCreateWindow(given)) {
        PostNcDestroy();
        return FALSE;
    }
    const auto* const name = given.lpszClass != nullptr ? given.lpszClass : AfxRegisterWndClass(0);
    const Creation creation(*this);
    auto* const window = CreateWindowExW(
        given.dwExStyle, name, given.lpszName, static_cast<DWORD>(given.style), given.x, given.y,
        given.cx, given.cy, given.hwndParent, given.hMenu, given.hInstance, given.lpCreateParams);
    // One that never became this object's has had no last message.
    if (window == nullptr && creation.is_waiting()) PostNcDestroy();
    return window != nullptr ? TRUE : FALSE;
}

BOOL CWnd::CreateEx(DWORD ex_style, const char16_t* class_name, const char16_t* title, DWORD style,
                    const RECT& rect, CWnd* parent, UINT id, void* parameter) {
    return CreateEx(ex_style, class_name, title, style, rect.left, rect.top, rect.right - rect.left,
                    rect.bottom - rect.top, parent != nullptr ? parent->m_hWnd : nullptr,
                    reinterpret_cast<HMENU>(std::uintptr_t{id}), parameter);
}

BOOL CWnd::Create(const char16_t* class_name, const char16_t* title, DWORD style, const RECT& rect,
                  CWnd* parent, UINT id) {
    return CreateEx(0, class_name, title, style | WS_CHILD, rect, parent, id);
}

BOOL CWnd::PreCreateWindow(CREATESTRUCTW& /*given*/) {
    return TRUE;
}

BOOL CWnd::DestroyWindow() {
    return m_hWnd != nullptr ? ::DestroyWindow(m_hWnd) : FALSE;
}

BOOL CWnd::Attach(HWND window) {
    if (window == nullptr || m_hWnd != nullptr) return FALSE;
    auto& objects = WindowObjects::current();
    if (!objects.permanent.try_emplace(window, this).second) return FALSE;
    m_hWnd = window;
    return TRUE;
}

HWND CWnd::Detach() {
    auto* const window = m_hWnd;
    if (window != nullptr) WindowObjects::current().permanent.erase(window);
    m_hWnd = nullptr;
    return window;
}

BOOL CWnd::SubclassWindow(HWND window) {
    if (m_hWnd != nullptr || FromHandlePermanent(window) != nullptr || !IsWindow(window)) {
        return FALSE;
    }
    hear(window);
    return TRUE;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd* parent) {
    return SubclassWindow(::GetDlgItem(parent->m_hWnd, static_cast<int>(id)));
}

HWND CWnd::UnsubclassWindow() {
    auto* const window = m_hWnd;
    if (window != nullptr) forget_window();
    return window;
}

CWnd* CWnd::FromHandlePermanent(HWND window) {
    const auto& permanent = WindowObjects::current().permanent;
    const auto found = permanent.find(window);
    return found != permanent.end() ? found->second : nullptr;
}

CWnd* CWnd::FromHandle(HWND window) {
    if (window == nullptr) return nullptr;
    if (auto* const permanent = FromHandlePermanent(window)) return permanent;
    auto& object = WindowObjects::current().temporary[window];
    if (!object) {
        object = std::make_unique<CWnd>();
        object->m_hWnd = window;
    }
    return object.get();
}

void CWnd::DeleteTempMap() {
    auto& temporary = WindowObjects::current().temporary;
    // They only stand for their windows, and don't end them.
    for (auto& each : temporary) each.second->m_hWnd = nullptr;
    temporary.clear();
    tvutil2::Temporaries<CEdit>::delete_all();
    tvutil2::Temporaries<CScrollBar>::delete_all();
}

void tvutil2::hold(CWnd& object, HWND handle) {
    object.m_hWnd = handle;
}

void CWnd::DoDataExchange(CDataExchange* /*exchange*/) {}

BOOL CWnd::UpdateData(BOOL save) {
    struct Exchanging {
        bool& place;
        bool before;
        ~Exchanging() { place = before; }
    } exchanging{m_is_exchanging, std::exchange(m_is_exchanging, true)};
    CDataExchange exchange(this, save);
    try {
        DoDataExchange(&exchange);
        return TRUE;
    } catch (const CException&) {
        return FALSE;
    }
}

BOOL CWnd::PreTranslateMessage(MSG* /*message*/) {
    return FALSE;
}

BOOL CWnd::WalkPreTranslateTree(HWND stop, MSG* message) {
    for (auto* window = message->hwnd; window != nullptr; window = ::GetParent(window)) {
        auto* const object = FromHandlePermanent(window);
        if (object != nullptr && object->PreTranslateMessage(message)) return TRUE;
        if (window == stop) break;
    }
    return FALSE;
}

// The object of the window hears the message; behind the last one they are strangers.
LRESULT CWnd::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const object = FromHandlePermanent(window);
    if (object == nullptr) return DefWindowProcW(window, message, wparam, lparam);
    struct Handled {
        MSG& place;
        MSG before;
        ~Handled() { place = before; }
    } handled{WindowObjects::current().handled, WindowObjects::current().handled};
    handled.place = {window, message, wparam, lparam, 0, {}};
    const auto result = object->WindowProc(message, wparam, lparam);
    if (message == WM_NCDESTROY && FromHandlePermanent(window) == object) {
        object->forget_window();
        CWinThread::forget_main_window(object, true);
        object->PostNcDestroy();
    }
    return result;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
    LRESULT result = 0;
    return OnWndMsg(message, wparam, lparam, &result) ? result
                                                      : DefWindowProc(message, wparam, lparam);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wparam, LPARAM lparam) {
    return m_former != nullptr ? CallWindowProcW(m_former, m_hWnd, message, wparam, lparam)
                               : DefWindowProcW(m_hWnd, message, wparam, lparam);
}

LRESULT CWnd::Default() {
    const auto handled = WindowObjects::current().handled;
    return DefWindowProc(handled.message, handled.wParam, handled.lParam);
}

LRESULT CWnd::reflect_or_default() {
    const auto handled = WindowObjects::current().handled;
    LRESULT result = 0;
    return reflect(handled.message, handled.wParam, handled.lParam, &result) ? result : Default();
}

const char16_t* AfxRegisterWndClass(UINT style, HCURSOR cursor, HBRUSH background, HICON icon) {
    static std::mutex lock;
    static std::set<std::u16string> names;
    CString name;
    name.Format(u"Afx:%p:%x:%p:%p:%p", static_cast<const void*>(AfxGetInstanceHandle()), style,
                static_cast<const void*>(cursor), static_cast<const void*>(background),
                static_cast<const void*>(icon));
    const std::lock_guard guard(lock);
    const auto [place, is_new] = names.insert(name.GetString());
    if (is_new) {
        WNDCLASSW description{};
        description.style = style;
        description.lpfnWndProc = DefWindowProcW;
        description.hInstance = AfxGetInstanceHandle();
        description.hCursor = cursor;
        description.hbrBackground = background;
        description.hIcon = icon;
        description.lpszClassName = place->c_str();
        RegisterClassW(&description);
    }
    return place->c_str();
}
