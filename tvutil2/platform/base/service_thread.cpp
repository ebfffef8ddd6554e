#include "tvutil2/platform/base/service_thread.h"

#include <csignal>
#include <thread>
#include <utility>

namespace tvutil2 {
namespace {

class AllSignalsBlocked {
  public:
    AllSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

  private:
    sigset_t m_before{};
};

}  // namespace

void start_service_thread(std::function<void()> body) {
    const AllSignalsBlocked blocked;
    std::thread(std::move(body)).detach();
}

}  // namespace tvutil2
