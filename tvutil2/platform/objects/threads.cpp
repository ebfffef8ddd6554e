#include "tvutil2/platform/objects/threads.h"

#include "tvutil2/platform/base/signal_stack.h"
#include "tvutil2/platform/objects/apc.h"
#include "tvutil2/platform/objects/waitable.h"

#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

namespace tvutil2 {
namespace {

class Thread : public WaitableObject, public std::enable_shared_from_this<Thread> {
  public:
    static constexpr auto kHandleKind = HandleKind::thread;
    using Routine = std::function<DWORD()>;

    Thread(Routine routine, bool is_suspended)
        : WaitableObject(kHandleKind),
          m_routine(std::move(routine)),
          m_gate(is_suspended ? kSuspended : kOpen) {}

    // The body of the new thread.
    void run() {
        give_signal_stack_if_wanted();
        auto& record = ThreadRecord::current();
        set_up(record);
        const Deadline never(INFINITE);
        while (m_gate.load() == kSuspended) futex_wait(m_gate, kSuspended, never);
        record.apcs()->run();
        m_code = m_routine();
        m_routine = nullptr;
    }

    // The host's id, once the thread has told it.
    [[nodiscard]] DWORD wait_for_id() const {
        const Deadline never(INFINITE);
        while (m_id.load() == 0) futex_wait(m_id, 0, never);
        return m_id;
    }

    // Whether it was suspended.
    bool resume() {
        if (m_gate.exchange(kOpen) == kOpen) return false;
        futex_wake(&m_gate, 1);
        return true;
    }

    [[nodiscard]] DWORD code() const { return m_is_over ? m_code : STILL_ACTIVE; }
    [[nodiscard]] ApcQueue& apcs() const { return *m_apcs; }

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& /*thread*/) const override {
        return m_is_over;
    }
    void take(ThreadRecord& /*thread*/) override {}
    void after_fork(const ThreadRecord& thread) override {
        if (&thread != m_record) m_is_over = true;
    }

  private:
    static constexpr DWORD kOpen = 0;
    static constexpr DWORD kSuspended = 1;

    void set_up(ThreadRecord& record) {
        m_record = &record;
        m_apcs = record.apcs();
        record.at_end([self = shared_from_this()] { self->end(); });
        m_id = record.host_id();
        futex_wake(&m_id, 1);
    }

    void end() {
        WakeList woken;
        const Locked guard(*this);
        m_is_over = true;
        offer(woken);
    }

    Routine m_routine;
    std::atomic<DWORD> m_gate;
    std::atomic<DWORD> m_id = 0;
    std::atomic<bool> m_is_over = false;
    DWORD m_code = 0;
    std::shared_ptr<ApcQueue> m_apcs;  // set before the id is
    const ThreadRecord* m_record = nullptr;
};

// Detached from the start: its handle says when it has ended.
int start(std::shared_ptr<Thread> thread, std::size_t stack) {
    pthread_attr_t attributes{};
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const auto smallest = static_cast<std::size_t>(PTHREAD_STACK_MIN);
    if (stack != 0) pthread_attr_setstacksize(&attributes, std::max(stack, smallest));
    auto own = std::make_unique<std::shared_ptr<Thread>>(std::move(thread));
    const auto body = [](void* argument) -> void* {
        const std::unique_ptr<std::shared_ptr<Thread>> self(
            static_cast<std::shared_ptr<Thread>*>(argument));
        (*self)->run();
        return nullptr;
    };
    pthread_t id{};
    const int error = pthread_create(&id, &attributes, body, own.get());
    pthread_attr_destroy(&attributes);
    if (error == 0) static_cast<void>(own.release());
    return error;
}

HANDLE create_thread(std::size_t stack, Thread::Routine routine, DWORD flags, DWORD* id) {
    if ((flags & ~(CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto thread =
        std::make_shared<Thread>(std::move(routine), (flags & CREATE_SUSPENDED) != 0);
    auto* const handle = make_handle<HANDLE>(thread);
    if (handle == nullptr) return nullptr;
    if (const int error = start(thread, stack); error != 0) {
        CloseHandle(handle);
        SetLastError(error == EAGAIN ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto got = thread->wait_for_id();
    if (id != nullptr) *id = got;
    return handle;
}

}  // namespace
}  // namespace tvutil2

using tvutil2::fail_with;
using tvutil2::pin_object;
using tvutil2::Thread;

HANDLE CreateThread(SECURITY_ATTRIBUTES* /*attributes*/, std::size_t stack,
                    LPTHREAD_START_ROUTINE routine, void* argument, DWORD flags, DWORD* id) {
    if (routine == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return tvutil2::create_thread(
        stack, [=] { return routine(argument); }, flags, id);
}

std::uintptr_t _beginthreadex(void* /*attributes*/, unsigned stack, unsigned (*routine)(void*),
                              void* argument, unsigned flags, unsigned* id) {
    return reinterpret_cast<std::uintptr_t>(
        CreateThread(nullptr, stack, routine, argument, flags, id));
}

DWORD ResumeThread(HANDLE thread) {
    const auto object = pin_object<Thread>(thread);
    if (!object) return 0xFFFFFFFF;
    return object->resume() ? 1 : 0;
}

BOOL GetExitCodeThread(HANDLE thread, DWORD* code) {
    const auto object = pin_object<Thread>(thread);
    if (!object) return FALSE;
    *code = object->code();
    return TRUE;
}

DWORD GetCurrentThreadId() {
    return tvutil2::ThreadRecord::current().host_id();
}

DWORD GetThreadId(HANDLE thread) {
    const auto object = pin_object<Thread>(thread);
    return object ? object->wait_for_id() : 0;
}

DWORD QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) {
    const auto object = pin_object<Thread>(thread);
    if (!object) return 0;
    if (routine == nullptr) return fail_with(ERROR_INVALID_PARAMETER) ? 1 : 0;
    const bool is_queued = object->apcs().post([routine, data] { routine(data); });
    return is_queued || fail_with(ERROR_GEN_FAILURE) ? 1 : 0;
}
