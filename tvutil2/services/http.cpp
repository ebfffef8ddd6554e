#include "tvutil2/services/http.h"

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/inet.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/settings/registry.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace {

constexpr std::u16string_view kHeaders =
    u"Accept: text*/*\r\n"
    u"User-Agent: Mozilla/4.0 (compatible; MSIE 5.0;* Windows NT)\r\n"
    u"Content-type: application/x-www-form-urlencoded\r\n"
    u"\r\n\r\n";
constexpr DWORD kFlags =
    INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_COOKIES;
constexpr DWORD kSecurity =
    SECURITY_FLAG_IGNORE_REVOCATION | SECURITY_FLAG_IGNORE_UNKNOWN_CA |
    SECURITY_FLAG_IGNORE_CERT_CN_INVALID | SECURITY_FLAG_IGNORE_CERT_DATE_INVALID |
    SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTPS | SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTP;
constexpr DWORD kPiece = 4096;
constexpr std::size_t kLongestText = std::numeric_limits<int>::max();
constexpr auto kServiceDomain = u"tolvarine.example";  // a name that is nobody's (RFC 2606)

class InternetHandle {
  public:
    explicit InternetHandle(HINTERNET handle) : m_handle(handle) {}
    ~InternetHandle() {
        if (m_handle != nullptr) InternetCloseHandle(m_handle);
    }
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;

    explicit operator bool() const { return m_handle != nullptr; }
    [[nodiscard]] HINTERNET get() const { return m_handle; }

  private:
    HINTERNET m_handle;
};

std::u16string_view request_path(std::u16string_view url, std::u16string_view server) {
    auto path = url.substr(url.find(server) + server.size());
    if (path.starts_with(u':')) {
        path.remove_prefix(std::min(path.find_first_not_of(u"0123456789", 1), path.size()));
    }
    return path;
}

bool set_security(HINTERNET request) {
    return InternetSetOptionW(request, INTERNET_OPTION_SECURITY_FLAGS, &kSecurity,
                              sizeof kSecurity) != FALSE;
}

// Room for what the server says is coming, within reason: it costs nothing until it is used.
void make_room(HINTERNET request, CString& response) {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 28;
    const auto length = std::min(tvutil2::http_length(request), kMost) + response.View().size();
    if (length > kLongestText) return;
    try {
        response.Preallocate(static_cast<int>(length));
    } catch (const std::bad_alloc&) {
        // Then it grows with what comes.
    }
}

// One piece in the ANSI code page, up to its first zero.
void append_piece(CString& response, std::string_view piece) {
    char16_t units[kPiece];
    const auto count = tvutil2::codepage::put_units(CP_ACP, 0, piece, units);
    if (!count || response.View().size() > kLongestText - *count) throw std::bad_alloc();
    response += std::u16string_view(units, *count);
}

void read_body(HINTERNET request, CString& response) {
    make_room(request, response);
    char piece[kPiece + 1] = {};
    DWORD read = 0;
    while (InternetReadFile(request, piece, kPiece, &read) != FALSE && read != 0) {
        piece[read] = 0;
        append_piece(response, piece);
    }
}

// Whether the body, or its beginning, was had; what is open is closed then.
bool fetch(const CString& url, CString& response) {
    DWORD service = 0;
    CString server;
    CString object;
    INTERNET_PORT port = 0;
    if (AfxParseURL(url, service, server, object, port) == FALSE ||
        (service != INTERNET_SERVICE_HTTP && service != AFX_INET_SERVICE_HTTPS)) {
        return false;
    }
    const bool is_secure = service == AFX_INET_SERVICE_HTTPS;
    const std::u16string path(request_path(url.View(), server.View()));
    const InternetHandle session(
        InternetOpenW(u"Request", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (!session) return false;
    const InternetHandle connection(InternetConnectW(session.get(), server, port, nullptr, nullptr,
                                                     INTERNET_SERVICE_HTTP, 0, 0));
    if (!connection) return false;
    const InternetHandle request(
        HttpOpenRequestW(connection.get(), u"GET", path.c_str(), u"HTTP/1.1", nullptr, nullptr,
                         is_secure ? kFlags | INTERNET_FLAG_SECURE : kFlags, 0));
    if (!request || (is_secure && !set_security(request.get())) ||
        HttpAddRequestHeadersW(request.get(), kHeaders.data(), DWORD{kHeaders.size()},
                               HTTP_ADDREQ_FLAG_ADD | HTTP_ADDREQ_FLAG_REPLACE) == FALSE ||
        HttpSendRequestW(request.get(), nullptr, 0, nullptr, 0) == FALSE) {
        return false;
    }
    read_body(request.get(), response);
    return true;
}

CString address_of(const char16_t* label, const char16_t* value) {
    CString domain;
    CRegistry key;
    if (key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\LiveUpdate", 0,
                 KEY_ALL_ACCESS) != 0) {
        domain = key.GetValue(value, CString());
    }
    if (domain.IsEmpty()) domain = kServiceDomain;
    return CString(u"https://") + label + u"." + domain;
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): products' code is built for this signature
DWORD TvHTTPConnection(CString url, CString& response) {
    try {
        return fetch(url, response) ? 0 : GetLastError();
    } catch (const CException& exception) {
        constexpr std::size_t kLongestMessage = 255;
        const auto text = tvutil2::to_utf16_lossy(exception.what());
        response = text.substr(0, kLongestMessage).c_str();
        return 1;
    } catch (const std::bad_alloc&) {
        // An exception of the framework too, where the products come from.
        response = u"Out of memory.";
        return 1;
    }
}

CString TvGetHttpTransactAddress() {
    static const CString address = address_of(u"transact", u"TransactDomain");
    return address;
}

CString TvGetHttpHelpAddress() {
    static const CString address = address_of(u"api", u"HelpDomain");
    return address;
}
