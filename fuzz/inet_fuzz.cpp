// Addresses and header lines that nobody would write: what is found in an address is part of it,
// and what a request takes can't end a line of its head. Nothing is sent.
#include "tvutil2/framework/inet.h"
#include "tvutil2/platform/net/wininet.h"

#include <algorithm>

#include "fuzz/fuzz_input.h"

namespace {

bool can_be_object(std::u16string_view text) {
    return text.empty() || std::u16string_view(u"/\\?#").find(text.front()) != text.npos;
}

void parse(const std::u16string& url, CString& server, INTERNET_PORT& port) {
    DWORD service = 0;
    CString object;
    if (AfxParseURL(url.c_str(), service, server, object, port) == FALSE) {
        fuzz::require(service == 0 && server.IsEmpty() && object.IsEmpty() && port == 0);
        return;
    }
    fuzz::require(service != 0 && port != 0 && !server.IsEmpty() && can_be_object(object.View()));
    fuzz::require(server.View().find_first_of(u"/\\?#@") == std::u16string_view::npos);
    const std::u16string_view text(url.c_str());
    fuzz::require(text.ends_with(object.View()) && text.find(server.View()) != text.npos);
}

void ask(const CString& server, INTERNET_PORT port, const std::u16string& headers) {
    const auto session = InternetOpenW(u"a", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
    const auto connection =
        InternetConnectW(session, server, port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
    if (connection != nullptr) {
        const auto request =
            HttpOpenRequestW(connection, nullptr, headers.c_str(), nullptr, nullptr, nullptr, 0, 0);
        fuzz::require(request != nullptr || !headers.empty());
        for (const auto flags :
             {HTTP_ADDREQ_FLAG_ADD, HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE}) {
            HttpAddRequestHeadersW(request, headers.data(), static_cast<DWORD>(headers.size()),
                                   flags);
        }
        InternetCloseHandle(request);
        InternetCloseHandle(connection);
    }
    InternetCloseHandle(session);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto end = std::min(bytes.find('\0'), bytes.size());
    CString server;
    INTERNET_PORT port = 0;
    parse(fuzz::widened(bytes.substr(0, end)), server, port);
    ask(server, port, fuzz::widened(bytes.substr(std::min(end + 1, bytes.size()))));
    CString wide_server;
    INTERNET_PORT wide_port = 0;
    auto wide = fuzz::wide_text(data, size);
    parse(wide, wide_server, wide_port);
    ask(wide_server, wide_port, wide);
    return 0;
}
