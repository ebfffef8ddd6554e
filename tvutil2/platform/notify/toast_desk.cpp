#include "tvutil2/platform/notify/toast_desk.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/notify/activation.h"
#include "tvutil2/platform/notify/desktop.h"
#include "tvutil2/platform/notify/desktop_files.h"
#include "tvutil2/platform/notify/toast_store.h"
#include "tvutil2/platform/notify/toast_view.h"
#include "tvutil2/platform/process/own_module.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <system_error>

namespace tvutil2 {
namespace {

using Windows::Data::Xml::Dom::XmlDocument;
using SystemTime = std::chrono::system_clock::time_point;

constexpr std::size_t kMostRemembered = 100;
constexpr auto kRetry = std::chrono::minutes(1);

class ToastDesk final : private DesktopEvents {
  public:
    // Lives as long as the process.
    static ToastDesk& get() {
        static auto* const only = new ToastDesk;
        return *only;
    }

    HRESULT show(const std::u16string& model_id, const XmlDocument& document);
    HRESULT clear(const std::u16string& model_id);
    void serve(const CLSID& id) {
        post([this, id] { begin_to_serve(id); });
    }
    void deliver(const std::u16string& model_id) {
        post([this, model_id] { m_delivered.insert(model_id); });
    }

  private:
    struct Remembered {
        ShownToast toast;
        std::u16string model_id;
        std::u16string launch;
    };

    ToastDesk()
        : m_fork_safe(ForkRank::objects, this, &before_fork, &in_parent, &in_child),
          m_fork_safe_link(m_link_lock, ForkRank::caller) {}

    void action_invoked(ShownToast toast, std::string key) override {
        post([this, toast = std::move(toast), key = std::move(key)] { answer(toast, key); });
    }
    void closed(ShownToast toast) override {
        post([this, toast = std::move(toast)] { forget(toast); });
    }
    void called(std::string name, std::string key) override {
        post([name = std::move(name), key = std::move(key)] { activate_from_outside(name, key); });
    }

    HRESULT link(Desktop*& desktop);
    std::optional<Remembered> remembered(const ShownToast& toast);
    void answer(const ShownToast& toast, const std::string& key);
    void forget(const ShownToast& toast);
    bool is_heir(const ShownRecord& record);
    static void activate_from_outside(const std::string& name, const std::string& key);

    void post(std::function<void()> job);
    void work();
    void begin_to_serve(const CLSID& id);
    std::optional<SystemTime> deliver_due();

    static void before_fork(void* self) { static_cast<ToastDesk*>(self)->m_lock.lock(); }
    static void in_parent(void* self) { static_cast<ToastDesk*>(self)->m_lock.unlock(); }
    // The thread is the parent's, and so is all that was left to it.
    static void in_child(void* self) {
        auto& desk = *static_cast<ToastDesk*>(self);
        desk.m_lock.unlock();
        new (&desk.m_lock) std::mutex;
        new (&desk.m_news) std::condition_variable;
        desk.m_jobs.clear();
        desk.m_has_thread = false;
    }

    std::mutex m_lock;  // of what follows
    std::condition_variable m_news;
    std::deque<std::function<void()>> m_jobs;
    bool m_has_thread = false;
    std::set<std::u16string> m_delivered;  // the thread's own

    // From the question to the server until its answer is remembered. Never taken in a child.
    std::mutex m_showing_lock;
    std::deque<Remembered> m_remembered;

    std::mutex m_link_lock;
    Desktop* m_desktop = nullptr;
    pid_t m_owner = 0;

    ForkMember m_fork_safe;
    ForkLock m_fork_safe_link;
};

HRESULT ToastDesk::link(Desktop*& desktop) {
    const std::lock_guard guard(m_link_lock);
    if (m_desktop == nullptr) {
        auto* const open =
            reinterpret_cast<OpenDesktop*>(own_module_function("notify", kOpenDesktop));
        if (open == nullptr) return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
        m_owner = getpid();
        m_desktop = open(*this);
    }
    if (m_owner != getpid()) return HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED);
    desktop = m_desktop;
    return S_OK;
}

HRESULT ToastDesk::show(const std::u16string& model_id, const XmlDocument& document) {
    const auto registration = toast_registration(model_id);
    ToastContent content;
    if (!read_toast(document, registration, model_id, content)) return E_INVALIDARG;
    Desktop* desktop = nullptr;
    if (const auto result = link(desktop); FAILED(result)) return result;
    // First, so that no files are left behind where nobody could ever answer.
    bool reads_markup = false;
    if (const auto result = desktop->find_server(reads_markup); FAILED(result)) return result;
    const auto published = publish_program(registration, content.view.program);
    if (published != Published::no) {
        content.view.desktop_entry = name_of_class(registration.class_text);
    }
    if (published == Published::anew) desktop->reload();
    ShownToast shown;
    {
        const std::lock_guard guard(m_showing_lock);
        const auto result = desktop->show(content.view, reads_markup, shown);
        if (FAILED(result)) return result;
        m_remembered.push_back({shown, model_id, content.launch});
        if (m_remembered.size() > kMostRemembered) m_remembered.pop_front();
    }
    note_shown(shown, {model_id, content.launch, desktop->own_name()});
    return S_OK;
}

HRESULT ToastDesk::clear(const std::u16string& model_id) {
    const auto toasts = take_shown(model_id);
    Desktop* desktop = nullptr;
    if (!toasts.empty() && SUCCEEDED(link(desktop))) desktop->close(toasts);
    return S_OK;
}

std::optional<ToastDesk::Remembered> ToastDesk::remembered(const ShownToast& toast) {
    const std::lock_guard guard(m_showing_lock);
    const auto found =
        std::find_if(m_remembered.rbegin(), m_remembered.rend(), [&toast](const Remembered& entry) {
            return entry.toast.id == toast.id && entry.toast.server == toast.server;
        });
    return found != m_remembered.rend() ? std::optional(*found) : std::nullopt;
}

// Of a toast whose process is gone: whether this one has taken its place.
bool ToastDesk::is_heir(const ShownRecord& record) {
    Desktop* desktop = nullptr;
    const auto name = name_of_class(toast_registration(record.model_id).class_text);
    return !name.empty() && SUCCEEDED(link(desktop)) && desktop->has(name) &&
           !desktop->is_there(record.sender);
}

void ToastDesk::answer(const ShownToast& toast, const std::string& key) {
    const auto own = remembered(toast);
    std::u16string model_id;
    std::u16string launch;
    if (own) {
        model_id = own->model_id;
        launch = own->launch;
    } else {
        const auto record = find_shown(toast);
        if (!record || !is_heir(*record)) return;
        model_id = record->model_id;
        launch = record->launch;
    }
    const auto class_text = toast_registration(model_id).class_text;
    CLSID id;
    if (class_text.empty() || FAILED(CLSIDFromString(class_text.c_str(), &id)) ||
        activate_class(id, model_id, arguments_of(key, launch)) || !own) {
        return;
    }
    Desktop* desktop = nullptr;
    if (SUCCEEDED(link(desktop))) desktop->activate(name_of_class(id), key);
}

void ToastDesk::forget(const ShownToast& toast) {
    if (!remembered(toast)) {
        const auto record = find_shown(toast);
        if (!record || !is_heir(*record)) return;
    }
    forget_shown(toast);
}

void ToastDesk::activate_from_outside(const std::string& name, const std::string& key) {
    const auto class_text = class_of_name(name);
    CLSID id;
    if (class_text.empty() || FAILED(CLSIDFromString(class_text.c_str(), &id))) return;
    const auto latest = latest_of_class(class_text).value_or(ShownRecord{});
    activate_class(id, latest.model_id, arguments_of(key, latest.launch));
}

void ToastDesk::post(std::function<void()> job) {
    const std::lock_guard guard(m_lock);
    m_jobs.push_back(std::move(job));
    m_news.notify_one();
    if (m_has_thread) return;
    try {
        start_service_thread([this] { work(); });
        m_has_thread = true;
    } catch (const std::system_error&) {
        // The next one tries again.
    }
}

void ToastDesk::work() {
    std::optional<SystemTime> next;
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock guard(m_lock);
            const auto has_job = [this] { return !m_jobs.empty(); };
            if (next) {
                m_news.wait_until(guard, *next, has_job);
            } else {
                m_news.wait(guard, has_job);
            }
            if (has_job()) {
                job = std::move(m_jobs.front());
                m_jobs.pop_front();
            }
        }
        if (job) job();
        next = deliver_due();
    }
}

void ToastDesk::begin_to_serve(const CLSID& id) {
    Desktop* desktop = nullptr;
    const auto name = name_of_class(id);
    if (SUCCEEDED(link(desktop))) desktop->serve(name);
    for (const auto& model_id : ids_with_toasts()) {
        if (name_of_class(toast_registration(model_id).class_text) == name) {
            m_delivered.insert(model_id);
        }
    }
}

// Shows what is due, and says when to look again.
std::optional<SystemTime> ToastDesk::deliver_due() {
    std::optional<SystemTime> next;
    const auto look_at = [&next](SystemTime time) {
        if (!next || time < *next) next = time;
    };
    for (const auto& model_id : m_delivered) {
        for (auto& toast : scheduled_toasts(model_id)) {
            FILETIME now;
            GetSystemTimeAsFileTime(&now);
            const auto rest = static_cast<std::int64_t>(ticks_of(toast.time) - ticks_of(now));
            if (rest > 0) {
                using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
                constexpr Ticks kFarAhead = std::chrono::hours(24);
                look_at(std::chrono::system_clock::now() +
                        std::chrono::duration_cast<std::chrono::system_clock::duration>(
                            std::min(Ticks(rest), kFarAhead)));
                break;
            }
            if (!take_scheduled(model_id, toast.key)) continue;
            HRESULT result = E_FAIL;
            try {
                const XmlDocument document;
                document.LoadXml(toast.xml);
                result = show(model_id, document);
            } catch (const ResultError&) {
                continue;  // what isn't XML won't become it
            }
            if (SUCCEEDED(result) || result == E_INVALIDARG) continue;
            // Kept until there is a server again.
            add_scheduled(model_id, toast);
            look_at(std::chrono::system_clock::now() + kRetry);
            break;
        }
    }
    return next;
}

}  // namespace

HRESULT show_toast(const std::u16string& model_id, const XmlDocument& document) {
    return ToastDesk::get().show(model_id, document);
}

HRESULT clear_toasts(const std::u16string& model_id) {
    return ToastDesk::get().clear(model_id);
}

void serve_class(const CLSID& id) {
    ToastDesk::get().serve(id);
}

void deliver_scheduled(const std::u16string& model_id) {
    ToastDesk::get().deliver(model_id);
}

}  // namespace tvutil2
