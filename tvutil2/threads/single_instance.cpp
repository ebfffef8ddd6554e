#include "tvutil2/threads/single_instance.h"

#include "tvutil2/framework/win_thread.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/objects/mappings.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/show.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kDataSize = 256;
constexpr UINT kSingleInstance = 2131;
constexpr UINT kSingleInstanceWithData = 2132;

bool lock(HANDLE mutex) {
    const auto got = WaitForSingleObject(mutex, INFINITE);
    // One that its owner left behind guards nothing but a text.
    return got == WAIT_OBJECT_0 || got == WAIT_ABANDONED;
}

void close(HANDLE& handle) {
    if (handle != nullptr) CloseHandle(handle);
    handle = nullptr;
}

CString object_name(const CString& name, const char16_t* kind) {
    CString full;
    full.Format(u"Global\\%s-%s", name.GetString(), kind);
    return full;
}

}  // namespace

namespace NUtil {

CSingleInstance::~CSingleInstance() {
    if (m_event != nullptr && m_thread != nullptr) {
        m_stop = true;
        if (SetEvent(m_event)) WaitForSingleObject(m_thread, INFINITE);
        close(m_thread);
    }
    close(m_event);
    release_memory();
}

bool CSingleInstance::CreateW(const char16_t* name) {
    if (!m_is_first) CreateInternal(name != nullptr ? name : u"");
    return m_is_first;
}

bool CSingleInstance::CreateA(const char* name) {
    const int size = name != nullptr ? MultiByteToWideChar(CP_ACP, 0, name, -1, nullptr, 0) : 0;
    if (size <= 0) return m_is_first;
    CString wide;
    MultiByteToWideChar(CP_ACP, 0, name, -1, wide.GetBuffer(size), size);
    wide.ReleaseBuffer();
    return CreateW(wide.GetString());
}

void CSingleInstance::SetData(const char* text) {
    if (!m_is_data_open || m_view == nullptr || text == nullptr) return;
    const auto size = strnlen(text, kDataSize - 1);
    std::memcpy(m_view, text, size);
    m_view[size] = 0;
}

void CSingleInstance::CreateInternal(const char16_t* name) {
    close(m_event);  // of a start whose hook threw
    release_memory();
    const CString base(name);
    share_memory(base);
    m_event = CreateEventW(nullptr, FALSE, FALSE, object_name(base, u"Event").GetString());
    if (m_event == nullptr) return;
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        run_hook(&CSingleInstance::OnSecondInstance);
        PulseEvent(m_event);
        close(m_event);
        return;
    }
    m_thread = CreateThread(nullptr, 0, EventHandler, this, 0, nullptr);
    m_is_first = m_thread != nullptr;
    if (!m_is_first) close(m_event);
}

void CSingleInstance::share_memory(const CString& name) {
    m_mutex = CreateMutexW(nullptr, FALSE, object_name(name, u"Data-Mutex").GetString());
    if (m_mutex == nullptr) return;
    const auto block = object_name(name, u"Data-File");
    m_mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kDataSize,
                                   block.GetString());
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        // Opened before the first handle is closed: with that the name can't go, whoever else ends.
        auto* const existing = OpenFileMappingW(FILE_MAP_WRITE, FALSE, block.GetString());
        close(m_mapping);
        m_mapping = existing;
    }
    if (m_mapping == nullptr) return;
    m_view = static_cast<char*>(MapViewOfFile(m_mapping, FILE_MAP_WRITE, 0, 0, kDataSize));
    if (m_view != nullptr && lock(m_mutex)) {
        std::memset(m_view, 0, kDataSize);
        ReleaseMutex(m_mutex);
    }
}

// Whatever a hook throws, the mutex isn't kept.
void CSingleInstance::run_hook(void (CSingleInstance::*hook)()) {
    struct Open {
        Flag& is_open;
        HANDLE mutex;
        explicit Open(Flag& flag, HANDLE its_mutex) : is_open(flag), mutex(its_mutex) {
            is_open = true;
        }
        ~Open() {
            is_open = false;
            if (mutex != nullptr) ReleaseMutex(mutex);
        }
        Open(const Open&) = delete;
        Open& operator=(const Open&) = delete;
    };
    const bool is_locked = m_mutex != nullptr && lock(m_mutex);
    const Open open(m_is_data_open, is_locked ? m_mutex : nullptr);
    // The memory is everybody's of the name: no text in it is without an end.
    if (m_view != nullptr) m_view[kDataSize - 1] = 0;
    (this->*hook)();
}

DWORD CSingleInstance::EventHandler(void* object) {
    static_cast<CSingleInstance*>(object)->listen();
    return 0;
}

void CSingleInstance::listen() {
    while (!m_stop) {
        if (WaitForSingleObject(m_event, INFINITE) != WAIT_OBJECT_0 || m_stop) return;
        run_hook(&CSingleInstance::OnSecondInstanceDetected);
    }
}

void CSingleInstance::release_memory() {
    if (m_view != nullptr) UnmapViewOfFile(m_view);
    m_view = nullptr;
    close(m_mapping);
    close(m_mutex);
}

}  // namespace NUtil

namespace NSingleInstance {

BEGIN_MESSAGE_MAP(CSingleInstance, CWnd)
ON_MESSAGE(kSingleInstance, &CSingleInstance::OnSingleInstance)
ON_MESSAGE(kSingleInstanceWithData, &CSingleInstance::OnSingleInstanceExMsg)
END_MESSAGE_MAP()

namespace {

CWnd* main_window() {
    auto* const thread = AfxGetThread();
    return thread != nullptr ? thread->GetMainWnd() : nullptr;
}

void bring_to_front(CWnd& window) {
    window.ShowWindow(SW_RESTORE);
    BringWindowToTop(window);
    SetForegroundWindow(window);
}

}  // namespace

int CSingleInstance::Create(const char16_t* name) {
    m_title = tvutil2::instance_window_title(name);
    auto* const other = FindWindowW(tvutil2::kInstanceWindowClass, m_title.GetString());
    if (other != nullptr) {
        ::SetForegroundWindow(other);
        PostMessageW(other, kSingleInstance, 0, 0);
        return 0;
    }
    CreateEx(0, tvutil2::kInstanceWindowClass, m_title.GetString(), 0, RECT{}, nullptr, 0);
    return 1;
}

LRESULT CSingleInstance::OnSingleInstance(WPARAM /*wparam*/, LPARAM /*lparam*/) {
    if (auto* const window = main_window()) bring_to_front(*window);
    return 0;
}

LRESULT CSingleInstance::OnSingleInstanceExMsg(WPARAM wparam, LPARAM lparam) {
    if (auto* const window = main_window()) {
        window->PostMessage(kSingleInstanceWithData, wparam, lparam);
        bring_to_front(*window);
    }
    return 0;
}

}  // namespace NSingleInstance

CString tvutil2::instance_window_title(const char16_t* name) {
    CString title;
    title.Format(u"%s::%s", u"_SINGLE_INSTANCE", name != nullptr ? name : u"");
    return title;
}
