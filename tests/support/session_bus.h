// A private session bus, and a notification server on it.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

namespace tests {

/// A process with pipes to its standard input and output. It ends with the object.
class PipedProcess {
  public:
    PipedProcess(const std::string& file, const std::vector<std::string>& arguments);
    ~PipedProcess();
    PipedProcess(const PipedProcess&) = delete;
    PipedProcess& operator=(const PipedProcess&) = delete;

    /// The next line, without its end; waits for it. Empty once the process has ended.
    [[nodiscard]] std::string line();
    void write_line(const std::string& text);
    /// Waits for its end, which comes by itself.
    void join();

  private:
    pid_t m_process = -1;
    std::FILE* m_in = nullptr;   // what it reads
    std::FILE* m_out = nullptr;  // what it writes
};

/// dbus-daemon, which starts programs by the service files of the profile alone. As long as it
/// lives it is the session's bus of this process and of those that it starts.
class SessionBus {
  public:
    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// The next line that a program prints which the bus has started; waits for it.
    [[nodiscard]] std::string printed() { return m_daemon.line(); }

  private:
    PipedProcess m_daemon;
};

/// The notification server of TESTS_STARTED, which is `program`.
class NotificationServer {
  public:
    explicit NotificationServer(const std::string& program,
                                const std::vector<std::string>& abilities = {"actions", "body"},
                                int first_id = 1,
                                const std::string& name = "org.freedesktop.Notifications");

    /// The next thing that it was asked, in its fields.
    [[nodiscard]] std::vector<std::string> asked();
    /// Has it done something, to the end; see the program.
    void order(const std::string& text);
    void join() { m_process.join(); }

  private:
    PipedProcess m_process;
};

}  // namespace tests
