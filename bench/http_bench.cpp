// Processor time, in user and system mode, of the side that fetches a body of 100 MB over HTTP from
// the loopback: TvHTTPConnection, which makes 16-bit text of it, beside the curl program, which
// writes it to a file and, doing nothing with it at all, to /dev/null.
//
// The server is a process of its own. Turns alternate, and each gets the median of its turns.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/services/http.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/support/profile.h"

namespace {

constexpr std::size_t kBlock = 1'000'000;
constexpr int kBlocks = 100;

void serve(int listener) {
    const std::string head = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                             std::to_string(kBlock * kBlocks) + "\r\n\r\n";
    const std::string block(kBlock, 'x');
    const auto send_all = [](int socket, const std::string& bytes) {
        for (std::size_t sent = 0; sent < bytes.size();) {
            const auto count = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) return;
            sent += static_cast<std::size_t>(count);
        }
    };
    for (;;) {
        const int client = accept(listener, nullptr, nullptr);
        char request[4096];
        if (recv(client, request, sizeof request, 0) > 0) {
            send_all(client, head);
            for (int i = 0; i < kBlocks; ++i) send_all(client, block);
        }
        close(client);
    }
}

class Server {
  public:
    Server() {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof name;
        if (bind(listener, reinterpret_cast<sockaddr*>(&name), size) != 0 ||
            listen(listener, 16) != 0 ||
            getsockname(listener, reinterpret_cast<sockaddr*>(&name), &size) != 0) {
            std::abort();
        }
        m_address = "http://127.0.0.1:" + std::to_string(ntohs(name.sin_port)) + "/";
        m_process = fork();
        if (m_process == 0) serve(listener);
        close(listener);
    }
    ~Server() {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    [[nodiscard]] const std::string& address() const { return m_address; }

  private:
    pid_t m_process = -1;
    std::string m_address;
};

double seconds_of(const rusage& usage) {
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double own_seconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return seconds_of(usage);
}

double fetch_ours(const std::string& address) {
    const auto start = own_seconds();
    {
        CString body;
        if (TvHTTPConnection(tvutil2::to_utf16(address)->c_str(), body) != 0 ||
            body.View().size() != kBlock * kBlocks) {
            std::abort();
        }
    }
    return own_seconds() - start;
}

double fetch_curl(const std::string& address, const std::string& target) {
    std::string words[] = {"curl", "-s", "-o", target, address};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(),
                         words[3].data(), words[4].data(), nullptr};
    pid_t child = -1;
    if (posix_spawnp(&child, "curl", nullptr, nullptr, arguments, environ) != 0) std::abort();
    int status = -1;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (status != 0) std::abort();
    return seconds_of(usage);
}

struct Medians {
    double ours, to_file, to_null;
};

Medians measured() {
    constexpr int kTurns = 11;
    const Server server;
    const auto file = bench::profile_folder() + "/body";
    std::vector<double> times[3];
    fetch_ours(server.address());  // loads the module
    for (int turn = 0; turn < kTurns; ++turn) {
        times[0].push_back(fetch_ours(server.address()));
        times[1].push_back(fetch_curl(server.address(), file));
        times[2].push_back(fetch_curl(server.address(), "/dev/null"));
        unlink(file.c_str());
    }
    for (auto& list : times) std::sort(list.begin(), list.end());
    return {times[0][kTurns / 2], times[1][kTurns / 2], times[2][kTurns / 2]};
}

// Measured together once, reported as three benchmarks.
void report(benchmark::State& state, double Medians::*who) {
    static const Medians medians = measured();
    for (auto _ : state) state.SetIterationTime(medians.*who);
}

void add(const char* name, double Medians::*who) {
    benchmark::RegisterBenchmark((std::string("http: processor time of 100 MB|") + name).c_str(),
                                 [who](benchmark::State& state) { report(state, who); })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

const bool kRegistered = [] {
    add("ours", &Medians::ours);
    add("curl, to a file", &Medians::to_file);
    add("curl, to /dev/null", &Medians::to_null);
    return true;
}();

}  // namespace
