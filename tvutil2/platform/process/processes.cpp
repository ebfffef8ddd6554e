#include "tvutil2/platform/process/processes.h"

#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/objects/waitable.h"
#include "tvutil2/platform/process/start_program.h"

#include <sys/wait.h>

#include <cerrno>
#include <future>
#include <system_error>

namespace tvutil2 {
namespace {

constexpr DWORD kUnknownCode = 0xFFFFFFFF;

class Process : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::process;
    Process() : WaitableObject(kHandleKind) {}

    void set_id(pid_t id) { m_id = static_cast<DWORD>(id); }
    [[nodiscard]] DWORD id() const { return m_id; }
    [[nodiscard]] DWORD code() const { return m_is_over ? m_code.load() : STILL_ACTIVE; }

    // Waits for the end of the child, on a thread of its own.
    void watch(pid_t child) {
        int status = 0;
        pid_t got = 0;
        while ((got = waitpid(child, &status, 0)) < 0 && errno == EINTR) {
        }
        WakeList woken;
        const Locked guard(*this);
        m_code = got < 0 ? kUnknownCode : code_of(status);
        m_is_over = true;
        offer(woken);
    }

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& /*thread*/) const override {
        return m_is_over;
    }
    void take(ThreadRecord& /*thread*/) override {}

  private:
    static DWORD code_of(int status) {
        return static_cast<DWORD>(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
    }

    std::atomic<DWORD> m_id = 0;
    std::atomic<DWORD> m_code = 0;
    std::atomic<bool> m_is_over = false;
};

}  // namespace

// The thread is there before the child is: a program that nobody can wait for isn't started.
HANDLE start_process(const Program& program, int& error) {
    error = 0;
    const auto process = std::make_shared<Process>();
    auto* const handle = make_handle<HANDLE>(process);
    if (handle == nullptr) return nullptr;
    const auto child = std::make_shared<std::promise<pid_t>>();
    try {
        start_service_thread([process, child] {
            if (const auto id = child->get_future().get(); id > 0) process->watch(id);
        });
    } catch (const std::system_error&) {
        CloseHandle(handle);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    pid_t id = -1;
    error = start_child(program, id);
    if (error == 0) process->set_id(id);
    child->set_value(error == 0 ? id : -1);
    if (error == 0) return handle;
    CloseHandle(handle);
    return nullptr;
}

}  // namespace tvutil2

BOOL GetExitCodeProcess(HANDLE process, DWORD* code) {
    const auto object = tvutil2::pin_object<tvutil2::Process>(process);
    if (!object) return FALSE;
    *code = object->code();
    return TRUE;
}

DWORD GetProcessId(HANDLE process) {
    const auto object = tvutil2::pin_object<tvutil2::Process>(process);
    return object ? object->id() : 0;
}
