// Real servers on the loopback.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <thread>

namespace tests {

/// Answers each connection in turn: `answer` gets the request's head and the socket to write to,
/// which is closed behind it.
class HttpServer {
  public:
    explicit HttpServer(std::function<void(const std::string& head, int socket)> answer);
    /// Answers always the same.
    explicit HttpServer(const std::string& response);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// "http://127.0.0.1:PORT"
    [[nodiscard]] const std::string& address() const { return m_address; }

  private:
    int m_listener;
    std::string m_address;
    std::thread m_thread;
};

/// All of `bytes` to a socket whose other end may be gone.
void send_all(int socket, const std::string& bytes);

/// OpenSSL's server, which answers with the bytes of the file that is asked for in `folder`. Its
/// certificate is made for it: self-signed, for that name, and out of date if `is_expired`.
class TlsServer {
  public:
    TlsServer(const std::string& folder, const std::string& name, bool is_expired);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    /// "https://127.0.0.1:PORT"
    [[nodiscard]] const std::string& address() const { return m_address; }

  private:
    pid_t m_process = -1;
    std::string m_address;
};

}  // namespace tests
