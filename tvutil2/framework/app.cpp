#include "tvutil2/framework/app.h"

#include "tvutil2/framework/app_thread.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/show.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct State {
    std::mutex lock;
    tvutil2::ForkLock is_fork_safe{lock, tvutil2::ForkRank::area};
    std::vector<CWinApp*> applications;
    std::vector<CDynLinkLibrary*> chain;
    HINSTANCE resources = nullptr;
};

// Never destroyed: application objects are static, and leave at any time of the process's end.
State& state() {
    static auto* const instance = new State;
    return *instance;
}

template <class T>
void enter(std::vector<T*>& list, T* object) {
    const std::lock_guard guard(state().lock);
    list.push_back(object);
}

template <class T>
void leave(std::vector<T*>& list, T* object) {
    const std::lock_guard guard(state().lock);
    list.erase(std::remove(list.begin(), list.end(), object), list.end());
}

// The icon that the framework gives to a message whose caller chose none.
UINT with_icon(UINT type) {
    if ((type & MB_ICONMASK) != 0) return type;
    switch (type & MB_TYPEMASK) {
        case MB_OK:
        case MB_OKCANCEL:
            return type | MB_ICONWARNING;
        case MB_YESNO:
        case MB_YESNOCANCEL:
            return type | MB_ICONQUESTION;
        default:
            return type;
    }
}

// The window that the person is in front of, so that he answers before he goes on there.
HWND box_owner() {
    auto* const active = GetActiveWindow();
    return IsWindowVisible(active) && IsWindowEnabled(active) ? active : nullptr;
}

}  // namespace

std::u16string tvutil2::executable_name() {
    char16_t path[MAX_PATH] = {};
    char16_t name[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    _wsplitpath_s(path, nullptr, 0, nullptr, 0, name, MAX_PATH, nullptr, 0);
    return name;
}

IMPLEMENT_DYNAMIC(CWinApp, CWinThread)

CWinApp::CWinApp(const char16_t* name) : m_pszAppName(name) {
    m_bAutoDelete = FALSE;
    enter(state().applications, this);
}

CWinApp::~CWinApp() {
    leave(state().applications, this);
}

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& extension, HMODULE module) {
    if (module == nullptr) return FALSE;
    extension = {TRUE, module};
    return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& extension) {
    extension = {};
}

CDynLinkLibrary::CDynLinkLibrary(const AFX_EXTENSION_MODULE& extension)
    : m_hModule(extension.hModule) {
    enter(state().chain, this);
}

CDynLinkLibrary::~CDynLinkLibrary() {
    leave(state().chain, this);
}

CWinApp* AfxGetApp() {
    auto& all = state();
    const std::lock_guard guard(all.lock);
    return all.applications.empty() ? nullptr : all.applications.back();
}

BOOL AfxWinInit(HINSTANCE instance) {
    auto* const app = AfxGetApp();
    if (app == nullptr || instance == nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    app->m_hInstance = instance;
    tvutil2::application_starts_here();
    return TRUE;
}

BOOL AfxStartModule(HINSTANCE instance) {
    if (!AfxWinInit(instance)) return FALSE;
    auto* const app = AfxGetApp();
    if (app->InitInstance()) return TRUE;
    app->ExitInstance();
    return FALSE;
}

HINSTANCE AfxGetInstanceHandle() {
    const auto* const app = AfxGetApp();
    return app != nullptr && app->m_hInstance != nullptr ? app->m_hInstance
                                                         : GetModuleHandleW(nullptr);
}

HINSTANCE AfxGetResourceHandle() {
    {
        const std::lock_guard guard(state().lock);
        if (state().resources != nullptr) return state().resources;
    }
    return AfxGetInstanceHandle();
}

void AfxSetResourceHandle(HINSTANCE module) {
    const std::lock_guard guard(state().lock);
    state().resources = module;
}

int AfxMessageBox(const char16_t* text, UINT type, UINT /*help*/) {
    const auto* const app = AfxGetApp();
    const bool is_named = app != nullptr && app->m_pszAppName != nullptr;
    return MessageBoxW(box_owner(), text,
                       is_named ? app->m_pszAppName : tvutil2::executable_name().c_str(),
                       with_icon(type));
}

HINSTANCE AfxFindResourceHandle(const char16_t* name, const char16_t* type) {
    const auto own = AfxGetResourceHandle();
    if (FindResourceW(own, name, type) != nullptr) return own;
    std::vector<HMODULE> others;
    {
        const std::lock_guard guard(state().lock);
        for (const auto* library : state().chain) others.push_back(library->m_hModule);
    }
    const auto found = std::find_if(others.rbegin(), others.rend(), [&](HMODULE module) {
        return FindResourceW(module, name, type) != nullptr;
    });
    return found != others.rend() ? *found : own;
}

int AfxMessageBox(UINT id, UINT type, UINT help) {
    CString text;
    if (text.LoadString(id) == 0) text.Format(u"%u", id);
    return AfxMessageBox(text.GetString(), type, help);
}
