#include "tests/support/http_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tests/support/program.h"

namespace tests {

void send_all(int socket, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const auto count = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) return;
        sent += static_cast<std::size_t>(count);
    }
}

HttpServer::HttpServer(std::function<void(const std::string&, int)> answer)
    : m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof name;
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&name), size) != 0 ||
        listen(m_listener, 16) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&name), &size) != 0) {
        throw std::runtime_error("no server");
    }
    m_address = "http://127.0.0.1:" + std::to_string(ntohs(name.sin_port));
    m_thread = std::thread([this, answer = std::move(answer)] {
        for (;;) {
            const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (client < 0) return;
            std::string head;
            char bytes[4096];
            while (head.find("\r\n\r\n") == std::string::npos) {
                const auto count = recv(client, bytes, sizeof bytes, 0);
                if (count <= 0) break;
                head.append(bytes, static_cast<std::size_t>(count));
            }
            answer(head, client);
            close(client);
        }
    });
}

HttpServer::HttpServer(const std::string& response)
    : HttpServer([response](const std::string&, int socket) { send_all(socket, response); }) {}

HttpServer::~HttpServer() {
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    close(m_listener);
}

TlsServer::TlsServer(const std::string& folder, const std::string& name, bool is_expired) {
    // Dates can be given to a certificate authority alone, which here is the certificate itself.
    const std::string script = R"(set -e; cd "$1"
openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout key -out request -subj "/CN=$2"
: > index; echo 01 > serial; printf '[ca]\ndatabase=index\npolicy=p\nserial=serial\nnew_certs_dir=.\n[p]\ncommonName=supplied\n' > ca
printf 'subjectAltName=IP:%s\n' "$2" > names
openssl ca -batch -config ca -name ca -selfsign -keyfile key -in request -out cert -md sha256 \
  -startdate 20200101000000Z -enddate "$3" -extfile names)";
    if (run("/bin/sh",
            {"-c", script, "sh", folder, name, is_expired ? "20210101000000Z" : "20990101000000Z"})
            .code != 0) {
        throw std::runtime_error("no certificate");
    }
    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const std::string command =
        "cd '" + folder +
        "' && exec openssl s_server -accept 127.0.0.1:0 -cert cert -key key "
        "-HTTP";
    std::string shell = "sh";
    std::string flag = "-c";
    std::string text = command;
    char* arguments[] = {shell.data(), flag.data(), text.data(), nullptr};
    const int failed = posix_spawn(&m_process, "/bin/sh", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    std::string said;
    char byte = 0;
    while (failed == 0 && read(output[0], &byte, 1) == 1) {
        if (byte == '\n' && said.find("ACCEPT") != std::string::npos) break;
        said += byte;
    }
    close(output[0]);
    m_address = "https://127.0.0.1" + said.substr(said.rfind(':'));
}

TlsServer::~TlsServer() {
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

}  // namespace tests
