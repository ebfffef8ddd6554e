#include "tvutil2/platform/objects/mutex.h"

#include "tvutil2/platform/objects/objects.h"

#include <pthread.h>

#include <algorithm>

namespace tvutil2 {
namespace {

// Plain, so that it can be looked at however late in the life of its thread.
[[gnu::tls_model("initial-exec")]] thread_local constinit OwnedMutexes* g_current = nullptr;

void end_thread(void* owned) {
    delete static_cast<OwnedMutexes*>(owned);
    g_current = nullptr;
}

// A key's destructor runs behind those of all thread-local objects, so that what they still lock
// and unlock is part of the thread's life.
pthread_key_t thread_end_key() {
    static const pthread_key_t key = [] {
        pthread_key_t made{};
        pthread_key_create(&made, end_thread);
        return made;
    }();
    return key;
}

}  // namespace

OwnedMutexes& OwnedMutexes::current() {
    if (g_current == nullptr) {
        g_current = new OwnedMutexes;
        pthread_setspecific(thread_end_key(), g_current);
    }
    return *g_current;
}

OwnedMutexes::~OwnedMutexes() {
    for (const auto& mutex : m_mutexes) mutex->abandon();
}

void OwnedMutexes::remove(const Mutex* mutex) {
    // The last one taken is as a rule the first one given back.
    const auto found = std::find_if(m_mutexes.rbegin(), m_mutexes.rend(),
                                    [mutex](const auto& owned) { return owned.get() == mutex; });
    if (found != m_mutexes.rend()) m_mutexes.erase(std::next(found).base());
}

Mutex::Mutex(OwnedMutexes* owner)
    : WaitableObject(kHandleKind), m_owner(owner), m_times_owned(owner == nullptr ? 0 : 1) {}

bool Mutex::release() {
    auto& thread = OwnedMutexes::current();
    {
        WakeList woken;
        const std::lock_guard guard(lock());
        if (m_owner != &thread) return false;
        if (--m_times_owned > 0) return true;
        m_owner = nullptr;
        offer(woken);
    }
    thread.remove(this);
    return true;
}

void Mutex::abandon() {
    WakeList woken;
    const std::lock_guard guard(lock());
    m_owner = nullptr;
    m_times_owned = 0;
    m_is_abandoned = true;
    offer(woken);
}

void Mutex::on_taken(const std::shared_ptr<WaitableObject>& self, OwnedMutexes& thread) {
    if (m_times_owned == 1) thread.add(std::static_pointer_cast<Mutex>(self));
}

bool Mutex::is_available(const OwnedMutexes& thread) const {
    return m_owner == nullptr || m_owner == &thread;
}

DWORD Mutex::outcome() const {
    return m_is_abandoned ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
}

void Mutex::take(OwnedMutexes& thread) {
    m_owner = &thread;
    ++m_times_owned;
    m_is_abandoned = false;
}

}  // namespace tvutil2
