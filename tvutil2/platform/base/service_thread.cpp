#include "tvutil2/platform/base/service_thread.h"

#include "tvutil2/platform/base/signal_stack.h"

#include <csignal>
#include <thread>
#include <utility>

namespace tvutil2 {
namespace {

// All but those that a fault raises: blocked, they end the process without a word of where.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP}) {
            sigdelset(&all, number);
        }
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t m_before{};
};

}  // namespace

void start_service_thread(std::function<void()> body) {
    const SignalsBlocked blocked;
    std::thread([body = std::move(body)] {
        give_signal_stack_if_wanted();
        body();
    }).detach();
}

}  // namespace tvutil2
