#include "tvutil2/platform/objects/thread_record.h"

#include "tvutil2/platform/objects/apc.h"
#include "tvutil2/platform/objects/mutex.h"
#include "tvutil2/platform/objects/shared/shared_object.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>

namespace tvutil2 {
namespace {

class Numbers {
  public:
    DWORD take() {
        const std::lock_guard guard(m_lock);
        if (m_free.empty()) {
            m_free.reserve(m_last + 1);  // so that give_back() can't fail
            return ++m_last;
        }
        const auto number = m_free.back();
        m_free.pop_back();
        return number;
    }
    void give_back(DWORD number) {
        const std::lock_guard guard(m_lock);
        m_free.push_back(number);
    }
    [[nodiscard]] std::mutex& lock() { return m_lock; }

  private:
    std::mutex m_lock;
    std::vector<DWORD> m_free;
    DWORD m_last = 0;
};

// Never destroyed: threads outlive static objects.
Numbers& numbers() {
    static auto* const instance = new Numbers;
    return *instance;
}

}  // namespace

thread_local constinit ThreadRecord* ThreadRecord::t_current = nullptr;

ThreadRecord::ThreadRecord()
    : m_number(numbers().take()),
      m_host_id(static_cast<DWORD>(gettid())),
      m_apcs(std::make_shared<ApcQueue>()) {}

ThreadRecord& ThreadRecord::make_current() {
    // A key's destructor runs behind those of all thread-local objects, so that what they still
    // lock and unlock is part of the thread's life.
    static const pthread_key_t key = [] {
        pthread_key_t made{};
        pthread_key_create(&made, &ThreadRecord::end);
        return made;
    }();
    WaitableObject::guard_forks();
    t_current = new ThreadRecord;
    pthread_setspecific(key, t_current);
    return *t_current;
}

void ThreadRecord::end(void* record) {
    delete static_cast<ThreadRecord*>(record);
}

ThreadRecord::~ThreadRecord() {
    m_apcs->close();
    for (const auto mutex : m_owned) Mutex::abandon(mutex, *this);
    for (const auto& mutex : m_shared) mutex->abandon();
    m_shared.clear();
    const auto at_end = std::move(m_at_end);
    numbers().give_back(m_number);
    t_current = nullptr;
    if (at_end) at_end();
}

void ThreadRecord::grow(std::size_t count) {
    m_owned.reserve(2 * m_owned.size() + count);
    m_shared.reserve(2 * m_shared.size() + count);
}

void ThreadRecord::remove_inner(std::uintptr_t mutex) {
    const auto found = std::find(m_owned.rbegin(), m_owned.rend(), mutex);
    if (found != m_owned.rend()) m_owned.erase(std::next(found).base());
}

void ThreadRecord::remove_shared(const SharedMutex* mutex) {
    std::erase_if(m_shared, [mutex](const auto& owned) { return owned.get() == mutex; });
}

void ThreadRecord::after_fork() {
    m_host_id = static_cast<DWORD>(gettid());
}

void lock_thread_numbers() {
    numbers().lock().lock();
}

void unlock_thread_numbers() {
    numbers().lock().unlock();
}

}  // namespace tvutil2
