#include "tvutil2/services/http.h"

#include "tvutil2/framework/inet.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <mutex>
#include <string>

#include "tests/support/child.h"
#include "tests/support/http_server.h"
#include "tests/support/profile.h"
#include "tests/support/threads.h"

namespace {

std::string answer(const std::string& body, const std::string& head = "") {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + head +
           "\r\n" + body;
}

struct Fetched {
    DWORD result;
    std::string body;
};
bool operator==(const Fetched& a, const Fetched& b) {
    return a.result == b.result && a.body == b.body;
}
std::ostream& operator<<(std::ostream& out, const Fetched& fetched) {
    return out << fetched.result << " \"" << fetched.body.substr(0, 100) << '"';
}

Fetched fetch(const std::string& url) {
    CString response;
    SetLastError(0);
    const auto result = TvHTTPConnection(tvutil2::to_utf16(url)->c_str(), response);
    return {result, tvutil2::to_utf8_lossy(response.View())};
}

// What a server was asked last: its thread writes it.
class Asked {
  public:
    void set(const std::string& text) {
        const std::lock_guard guard(m_lock);
        m_text = text;
    }
    [[nodiscard]] std::string get() const {
        const std::lock_guard guard(m_lock);
        return m_text;
    }

  private:
    mutable std::mutex m_lock;
    std::string m_text;
};

TEST(Http, AsksAsListed) {
    Asked asked;
    const tests::HttpServer server([&](const std::string& head, int socket) {
        asked.set(head);
        tests::send_all(socket, answer("hello"));
    });
    EXPECT_EQ(fetch(server.address() + "/a b/ü?q=1"), (Fetched{0, "hello"}));
    EXPECT_EQ(asked.get(),
              "GET /a%20b/%C3%BC?q=1 HTTP/1.1\r\nHost: " + server.address().substr(7) +
                  "\r\nUser-Agent: Mozilla/4.0 (compatible; MSIE 5.0;* Windows NT)\r\n"
                  "Accept: text*/*\r\nContent-type: application/x-www-form-urlencoded\r\n"
                  "\r\n");
    EXPECT_EQ(fetch(server.address() + "/x\r\nEvil: 1"), (Fetched{0, "hello"}));
    EXPECT_TRUE(asked.get().starts_with("GET /x%0D%0AEvil:%201 HTTP/1.1\r\n")) << asked.get();
    EXPECT_EQ(fetch(server.address()), (Fetched{0, "hello"}));
    EXPECT_TRUE(asked.get().starts_with("GET / HTTP/1.1\r\n")) << asked.get();
}

TEST(Http, BodiesComeAsTheyAreCut) {
    const std::string piece(4096, 'x');
    const std::string huge(100'000'000, 'y');  // NOLINT(bugprone-string-constructor): it is meant
    const auto headers = [](int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "X-" + std::to_string(i) + ": " + std::string(500, 'h') + "\r\n";
        return text;
    };
    const struct {
        std::string response;
        Fetched fetched;
    } cases[] = {
        {answer(""), {0, ""}},
        {answer(piece), {0, piece}},
        {answer(piece + "z"), {0, piece + "z"}},
        {answer(std::string("a\0b", 3) + piece), {0, "a" + piece.substr(0, 3)}},
        {answer(piece.substr(1) + "ü"), {0, piece.substr(1) + "\uFFFD\uFFFD"}},
        {"HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone", {0, "gone"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\ncut", {0, "cut"}},
        {"HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\n\r\ncut", {0, "cut"}},
        {"HTTP/1.1 200 OK\r\n\r\nto the end", {0, "to the end"}},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n",
         {0, "abcde"}},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\nfffffffffffffffff\r\nde",
         {0, "abc"}},
        {"HTTP/1.1 100 Continue\r\n\r\n" + answer("b"), {0, "b"}},
        {answer("many", headers(400)), {0, "many"}},
        {answer("too many", headers(2000)), {ERROR_HTTP_INVALID_SERVER_RESPONSE, ""}},
        {answer("long", "X: " + std::string(1'000'000, 'h') + "\r\n"),
         {ERROR_HTTP_INVALID_SERVER_RESPONSE, ""}},
        {"no answer at all\r\n\r\n", {ERROR_HTTP_INVALID_SERVER_RESPONSE, ""}},
        {"HTTP/1.1 200 O", {ERROR_INTERNET_CONNECTION_ABORTED, ""}},
        {"", {ERROR_INTERNET_CONNECTION_ABORTED, ""}},
        {answer(huge), {0, huge}},
    };
    for (const auto& [response, fetched] : cases) {
        const tests::HttpServer server(response);
        EXPECT_EQ(fetch(server.address() + "/"), fetched) << response.substr(0, 80);
    }
}

TEST(Http, WhatCannotBeFetchedSaysWhy) {
    for (const char* url : {"ftp://127.0.0.1/", "http:/x", "x", "", "http://", "http://a:0/",
                            "http://a:65536/", "http://[::1", "mailto:a@b"}) {
        EXPECT_EQ(fetch(url), (Fetched{0, ""})) << url;
    }
    SetLastError(ERROR_BUSY);
    CString response = u"kept";
    EXPECT_EQ(TvHTTPConnection(u"ftp://127.0.0.1/", response), ERROR_BUSY);
    EXPECT_EQ(response, u"kept");
    std::string dead;
    { dead = tests::HttpServer("").address(); }
    EXPECT_EQ(fetch(dead + "/"), (Fetched{ERROR_INTERNET_CANNOT_CONNECT, ""}));
    EXPECT_EQ(fetch("http://no-such-host.invalid/"),
              (Fetched{ERROR_INTERNET_NAME_NOT_RESOLVED, ""}));
}

TEST(Http, FollowsRedirectsButNotForEver) {
    const tests::HttpServer target(answer("there"));
    const tests::HttpServer server([&](const std::string& head, int socket) {
        const bool is_loop = head.starts_with("GET /loop");
        tests::send_all(
            socket, "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 4\r\nLocation: " +
                        (is_loop ? "/loop" : target.address()) + "\r\n\r\nhere");
    });
    EXPECT_EQ(fetch(server.address() + "/"), (Fetched{0, "there"}));
    EXPECT_EQ(fetch(server.address() + "/loop"), (Fetched{ERROR_HTTP_REDIRECT_FAILED, ""}));
}

TEST(Http, GoesThroughTheSystemsProxy) {
    Asked asked;
    const tests::HttpServer proxy([&](const std::string& head, int socket) {
        asked.set(head.substr(0, head.find('\r')));
        tests::send_all(socket, answer("by proxy"));
    });
    setenv("http_proxy", proxy.address().c_str(), 1);
    EXPECT_EQ(fetch("http://no-such-host.invalid/x"), (Fetched{0, "by proxy"}));
    EXPECT_EQ(asked.get(), "GET http://no-such-host.invalid/x HTTP/1.1");
    unsetenv("http_proxy");
}

// One request, with its checks less `flags`.
DWORD error_of_check(const std::string& address, DWORD flags) {
    DWORD service = 0;
    CString server;
    CString object;
    INTERNET_PORT port = 0;
    AfxParseURL(tvutil2::to_utf16(address)->c_str(), service, server, object, port);
    const auto session = InternetOpenW(u"t", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
    const auto connection =
        InternetConnectW(session, server, port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
    const auto request = HttpOpenRequestW(connection, nullptr, u"/page", nullptr, nullptr, nullptr,
                                          INTERNET_FLAG_SECURE, 0);
    InternetSetOptionW(request, INTERNET_OPTION_SECURITY_FLAGS, &flags, sizeof flags);
    SetLastError(0);
    HttpSendRequestW(request, nullptr, 0, nullptr, 0);
    const auto error = GetLastError();
    for (const auto handle : {request, connection, session})
        EXPECT_TRUE(InternetCloseHandle(handle));
    EXPECT_FALSE(InternetCloseHandle(request));
    return error;
}

TEST(Http, CertificatesOfAnyKindPassWhereTheirCheckIsTakenAway) {
    constexpr DWORD kIssuer = SECURITY_FLAG_IGNORE_UNKNOWN_CA;
    constexpr DWORD kName = SECURITY_FLAG_IGNORE_CERT_CN_INVALID;
    constexpr DWORD kDate = SECURITY_FLAG_IGNORE_CERT_DATE_INVALID;
    const struct {
        const char* name;
        bool is_expired;
        DWORD flags;
        DWORD error;
    } cases[] = {
        {"127.0.0.1", false, 0, ERROR_INTERNET_INVALID_CA},
        {"127.0.0.1", false, kName | kDate, ERROR_INTERNET_INVALID_CA},
        {"127.0.0.1", false, kIssuer, 0},
        {"127.0.0.1", true, kIssuer | kName, ERROR_INTERNET_SEC_CERT_DATE_INVALID},
        {"127.0.0.1", true, kIssuer | kDate, 0},
        {"127.0.0.2", false, kIssuer | kDate, ERROR_INTERNET_SEC_CERT_CN_INVALID},
        {"127.0.0.2", true, kIssuer | kName | kDate, 0},
    };
    for (const auto& [name, is_expired, flags, error] : cases) {
        const auto folder = tests::new_folder();
        tests::write_file(folder + "/page", answer("secret"));
        const tests::TlsServer server(folder, name, is_expired);
        EXPECT_EQ(error_of_check(server.address(), flags), error) << name << is_expired << flags;
        EXPECT_EQ(fetch(server.address() + "/page"), (Fetched{0, "secret"}));
    }
}

TEST(Http, LeavesProtectionOnlyWhereThatIsAllowed) {
    const tests::HttpServer target(answer("open"));
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/page", "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " +
                                            target.address() + "/\r\n\r\n");
    const tests::TlsServer server(folder, "127.0.0.1", false);
    EXPECT_EQ(fetch(server.address() + "/page"), (Fetched{0, "open"}));
    EXPECT_EQ(error_of_check(server.address(), SECURITY_FLAG_IGNORE_UNKNOWN_CA),
              ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR);
}

TEST(Http, WaitsForASlowBodyAndNotForASilentServer) {
    std::promise<void> go;
    const tests::HttpServer server([&](const std::string& head, int socket) {
        tests::send_all(socket, "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab");
        if (head.find("slow") != std::string::npos) return tests::send_all(socket, "cd");
        go.get_future().wait();
    });
    EXPECT_EQ(fetch(server.address() + "/slow"), (Fetched{0, "abcd"}));
    const auto session = InternetOpenW(u"t", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
    const auto port = static_cast<INTERNET_PORT>(std::stoi(server.address().substr(17)));
    const auto connection = InternetConnectW(session, u"127.0.0.1", port, nullptr, nullptr,
                                             INTERNET_SERVICE_HTTP, 0, 0);
    const auto request =
        HttpOpenRequestW(connection, u"GET", u"/", nullptr, nullptr, nullptr, 0, 0);
    char bytes[8];
    DWORD read = 0;
    EXPECT_FALSE(InternetReadFile(request, bytes, sizeof bytes, &read));
    EXPECT_EQ(GetLastError(), ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    EXPECT_FALSE(InternetReadFile(session, bytes, sizeof bytes, &read));
    EXPECT_EQ(GetLastError(), ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
    constexpr DWORD kSoon = 50;
    InternetSetOptionW(request, INTERNET_OPTION_RECEIVE_TIMEOUT, &kSoon, sizeof kSoon);
    ASSERT_TRUE(HttpSendRequestW(request, nullptr, 0, nullptr, 0));
    EXPECT_EQ(tvutil2::http_status(request), 200U);
    ASSERT_TRUE(InternetReadFile(request, bytes, sizeof bytes, &read));
    EXPECT_EQ(std::string(bytes, read), "ab");
    EXPECT_FALSE(InternetReadFile(request, bytes, sizeof bytes, &read));
    EXPECT_EQ(GetLastError(), ERROR_INTERNET_TIMEOUT);
    go.set_value();
    for (const auto handle : {request, connection, session}) InternetCloseHandle(handle);
}

TEST(Http, RunsOnSeveralThreads) {
    const tests::HttpServer server(answer("shared"));
    tests::on_threads(4, [&](int) {
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(fetch(server.address() + "/"), (Fetched{0, "shared"}));
    });
}

TEST(Http, ServicesAreWhereTheUserSaysOnceForAProcess) {
    const auto store = [](const char16_t* value, const char16_t* text) {
        CRegistry key;
        key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\LiveUpdate", 1, KEY_ALL_ACCESS);
        key.SetValue(value, text);
        key.Close();
    };
    store(u"TransactDomain", u"");
    store(u"HelpDomain", u"help.test");
    EXPECT_EQ(tests::in_child([&] {
                  return TvGetHttpTransactAddress() == u"https://transact.tolvarine.example" &&
                                 TvGetHttpHelpAddress() == u"https://api.help.test"
                             ? 0
                             : 1;
              }),
              0);
    store(u"TransactDomain", u"pay.test");
    EXPECT_EQ(TvGetHttpTransactAddress(), u"https://transact.pay.test");
    store(u"TransactDomain", u"other.test");
    EXPECT_EQ(TvGetHttpTransactAddress(), u"https://transact.pay.test");
}

}  // namespace
