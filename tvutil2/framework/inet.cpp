#include "tvutil2/framework/inet.h"

#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr struct {
    const char16_t* scheme;
    DWORD service;
    INTERNET_PORT port;
} kServices[] = {
    {u"http", INTERNET_SERVICE_HTTP, 80},
    {u"https", AFX_INET_SERVICE_HTTPS, 443},
    {u"ftp", INTERNET_SERVICE_FTP, 21},
    {u"gopher", INTERNET_SERVICE_GOPHER, 70},
};

// ":8080"; an empty number is the service's own port.
std::optional<INTERNET_PORT> port_of(std::u16string_view text, INTERNET_PORT own) {
    if (text.empty()) return own;
    if (text.front() != u':') return std::nullopt;
    text.remove_prefix(1);
    if (text.empty()) return own;
    DWORD port = 0;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9') return std::nullopt;
        port = port * 10 + (c - u'0');
        if (port > 0xFFFF) return std::nullopt;
    }
    if (port == 0) return std::nullopt;
    return static_cast<INTERNET_PORT>(port);
}

}  // namespace

BOOL AfxParseURL(const char16_t* url, DWORD& service, CString& server, CString& object,
                 INTERNET_PORT& port) {
    const std::u16string_view text = url != nullptr ? url : u"";
    const auto colon = text.find(u"://");
    if (colon == std::u16string_view::npos) return FALSE;
    const std::u16string scheme(text.substr(0, colon));
    const auto* const found = std::find_if(
        std::begin(kServices), std::end(kServices),
        [&](const auto& entry) { return _wcsicmp(entry.scheme, scheme.c_str()) == 0; });
    if (found == std::end(kServices)) return FALSE;
    auto authority = text.substr(colon + 3);
    const auto end = std::min(authority.find_first_of(u"/\\?#"), authority.size());
    const auto rest = authority.substr(end);
    authority = authority.substr(0, end);
    authority.remove_prefix(authority.rfind(u'@') + 1);  // nothing without one
    const bool is_bracketed = authority.starts_with(u'[');
    const auto bracket = is_bracketed ? authority.find(u']') : 0;
    if (bracket == std::u16string_view::npos) return FALSE;
    const auto server_end = std::min(authority.find(u':', bracket), authority.size());
    const auto found_port = port_of(authority.substr(server_end), found->port);
    if (server_end == 0 || !found_port) return FALSE;
    service = found->service;
    server = CString(std::u16string(authority.substr(0, server_end)).c_str());
    object = CString(std::u16string(rest).c_str());
    port = *found_port;
    return TRUE;
}
