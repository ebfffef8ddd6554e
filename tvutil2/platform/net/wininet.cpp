#include "tvutil2/platform/net/wininet.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/net/transfer.h"
#include "tvutil2/platform/process/own_module.h"

#include <strings.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

enum class Level { session, connection, request };

class InternetObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::internet;
    explicit InternetObject(Level level) : HandleObject(kHandleKind), m_level(level) {}
    [[nodiscard]] Level level() const { return m_level; }

  private:
    Level m_level;
};

struct Session : InternetObject {
    static constexpr Level kLevel = Level::session;
    Session() : InternetObject(kLevel) {}
    TransferRequest settings;  // with what the session knows
};

struct Connection : InternetObject {
    static constexpr Level kLevel = Level::connection;
    Connection() : InternetObject(kLevel) {}
    TransferRequest settings;
    std::string server;
    INTERNET_PORT port = 0;
};

struct Request : InternetObject {
    static constexpr Level kLevel = Level::request;
    Request() : InternetObject(kLevel) {}
    std::mutex lock;
    TransferRequest settings;
    std::unique_ptr<Transfer> transfer;  // once it is sent
    DWORD failure = 0;                   // that came behind bytes of the body, for the next call
};

template <class T>
std::shared_ptr<T> opened(HINTERNET handle) {
    auto object = object_of<InternetObject>(handle);
    if (!object) return nullptr;
    if (object->level() != T::kLevel) {
        return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_TYPE), nullptr;
    }
    return std::static_pointer_cast<T>(std::move(object));
}

bool is_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// UTF-8 of a text that goes into the head of a request; nothing for one that could end its line.
std::optional<std::string> head_text(std::u16string_view text) {
    auto bytes = to_utf8(text);
    if (!bytes || std::any_of(bytes->begin(), bytes->end(),
                              [](char c) { return is_control(c) && c != '\t'; })) {
        return fail_with(ERROR_INVALID_PARAMETER), std::nullopt;
    }
    return bytes;
}

bool is_empty(const char16_t* text) {
    return text == nullptr || *text == 0;
}

// A name that can't reach into the rest of an address.
bool is_server_name(std::string_view name) {
    if (name.starts_with('[') && name.ends_with(']')) {
        name = name.substr(1, name.size() - 2);
        return !name.empty() && name.find_first_not_of("0123456789abcdefABCDEF:.%") == name.npos;
    }
    return !name.empty() && name.find_first_of("/\\?#@:%[]<>\"' ") == name.npos &&
           std::none_of(name.begin(), name.end(), is_control);
}

std::string escaped_path(std::string_view path) {
    constexpr auto kDigits = "0123456789ABCDEF";
    std::string result;
    if (!path.starts_with('/')) result += '/';
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7F) {
            result += c;
        } else {
            result += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return result;
}

bool is_token(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return c > 0x20 && c < 0x7F &&
               std::string_view("\"(),/:;<=>?@[\\]{}").find(c) == std::string_view::npos;
    });
}

std::string_view name_of(std::string_view header) {
    return header.substr(0, header.find(':'));
}

bool add_header(std::vector<std::string>& headers, std::string header, DWORD flags) {
    const auto name = name_of(header);
    const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& other) {
        const auto other_name = name_of(other);
        return other_name.size() == name.size() &&
               strncasecmp(other_name.data(), name.data(), name.size()) == 0;
    });
    const bool is_there = found != headers.end();
    if (is_there && (flags & HTTP_ADDREQ_FLAG_ADD_IF_NEW) != 0) {
        return fail_with(ERROR_HTTP_HEADER_ALREADY_EXISTS);
    }
    if (is_there && (flags & HTTP_ADDREQ_FLAG_REPLACE) != 0) {
        *found = std::move(header);
        return true;
    }
    if (!is_there && flags == HTTP_ADDREQ_FLAG_REPLACE) {
        return fail_with(ERROR_HTTP_HEADER_NOT_FOUND);
    }
    headers.push_back(std::move(header));
    return true;
}

// All of the lines or none.
bool add_headers(std::vector<std::string>& headers, std::u16string_view lines, DWORD flags) {
    auto result = headers;
    while (!lines.empty()) {
        const auto end = std::min(lines.find_first_of(u"\r\n"), lines.size());
        const auto line = lines.substr(0, end);
        lines.remove_prefix(std::min(end + 1, lines.size()));
        if (line.empty()) continue;
        auto header = head_text(line);
        if (!header) return false;
        if (header->find(':') == std::string::npos || !is_token(name_of(*header))) {
            return fail_with(ERROR_INVALID_PARAMETER);
        }
        if (!add_header(result, std::move(*header), flags)) return false;
    }
    headers = std::move(result);
    return true;
}

std::u16string_view counted(const char16_t* text, DWORD length) {
    if (text == nullptr) return {};
    return length == 0xFFFFFFFF ? std::u16string_view(text) : std::u16string_view(text, length);
}

OpenTransfer* transfer_opener() {
    static auto* const opener =
        reinterpret_cast<OpenTransfer*>(own_module_function("net", kOpenTransfer));
    return opener;
}

bool add_named(TransferRequest& settings, const char* name, const char16_t* value) {
    if (is_empty(value)) return true;
    const auto text = head_text(value);
    if (!text) return false;
    auto header = std::string(name).append(": ").append(*text);
    return add_header(settings.headers, std::move(header), HTTP_ADDREQ_FLAG_ADD);
}

bool set_up(Request& request, const Connection& connection, const char16_t* verb,
            const char16_t* path, const char16_t* referrer, const char16_t** accept, DWORD flags) {
    auto& settings = request.settings;
    settings = connection.settings;
    settings.verb = "GET";
    if (!is_empty(verb)) {
        const auto text = head_text(verb);
        if (!text) return false;
        if (!is_token(*text)) return fail_with(ERROR_INVALID_PARAMETER);
        settings.verb = *text;
    }
    const auto path_text = to_utf8(path != nullptr ? path : u"");
    if (!path_text) return fail_with(ERROR_INTERNET_INVALID_URL);
    const bool is_secure = (flags & INTERNET_FLAG_SECURE) != 0;
    settings.url = is_secure ? "https://" : "http://";
    settings.url += connection.server;
    if (connection.port != 0) settings.url.append(":").append(std::to_string(connection.port));
    settings.url += escaped_path(*path_text);
    settings.follows_redirects = (flags & INTERNET_FLAG_NO_AUTO_REDIRECT) == 0;
    settings.keeps_cookies = (flags & INTERNET_FLAG_NO_COOKIES) == 0;
    if (!add_named(settings, "Referer", referrer)) return false;
    for (; accept != nullptr && *accept != nullptr; ++accept) {
        if (!add_named(settings, "Accept", *accept)) return false;
    }
    return true;
}

}  // namespace

DWORD http_status(HINTERNET handle) {
    const auto request = opened<Request>(handle);
    if (!request) return 0;
    const std::lock_guard guard(request->lock);
    return request->transfer ? request->transfer->status() : 0;
}

std::uint64_t http_length(HINTERNET handle) {
    const auto request = opened<Request>(handle);
    if (!request) return 0;
    const std::lock_guard guard(request->lock);
    return request->transfer ? request->transfer->length() : 0;
}

}  // namespace tvutil2

using namespace tvutil2;

HINTERNET InternetOpenW(const char16_t* agent, DWORD access, const char16_t* proxy,
                        const char16_t* bypass, DWORD flags) {
    const bool has_proxy = access == INTERNET_OPEN_TYPE_PROXY;
    const bool is_known =
        access == INTERNET_OPEN_TYPE_PRECONFIG || access == INTERNET_OPEN_TYPE_DIRECT || has_proxy;
    if (!is_known || flags != 0 || is_empty(proxy) == has_proxy ||
        (!has_proxy && !is_empty(bypass))) {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    auto session = std::make_shared<Session>();
    auto& settings = session->settings;
    settings.is_direct = access == INTERNET_OPEN_TYPE_DIRECT;
    if (!add_named(settings, "User-Agent", agent)) return nullptr;
    if (has_proxy) {
        const auto name = head_text(proxy);
        auto names = head_text(bypass != nullptr ? bypass : u"");
        if (!name || !names) return nullptr;
        std::replace(names->begin(), names->end(), ';', ',');
        settings.proxy = *name;
        settings.proxy_bypass = std::move(*names);
    }
    return make_handle<HINTERNET>(std::move(session));
}

HINTERNET InternetConnectW(HINTERNET session_handle, const char16_t* server, INTERNET_PORT port,
                           const char16_t* user, const char16_t* password, DWORD service,
                           DWORD /*flags*/, DWORD_PTR /*context*/) {
    const auto session = opened<Session>(session_handle);
    if (!session) return nullptr;
    if (service != INTERNET_SERVICE_HTTP || !is_empty(user) || !is_empty(password)) {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    const auto name = to_utf8(server != nullptr ? server : u"");
    if (!name || !is_server_name(*name)) return fail_with(ERROR_INTERNET_INVALID_URL), nullptr;
    auto connection = std::make_shared<Connection>();
    connection->settings = session->settings;
    connection->server = *name;
    connection->port = port;
    return make_handle<HINTERNET>(std::move(connection));
}

HINTERNET HttpOpenRequestW(HINTERNET connection_handle, const char16_t* verb, const char16_t* path,
                           const char16_t* version, const char16_t* referrer,
                           const char16_t** accept, DWORD flags, DWORD_PTR /*context*/) {
    const auto connection = opened<Connection>(connection_handle);
    if (!connection) return nullptr;
    if (!is_empty(version) && std::u16string_view(version) != u"HTTP/1.1") {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    if (transfer_opener() == nullptr) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    auto request = std::make_shared<Request>();
    if (!set_up(*request, *connection, verb, path, referrer, accept, flags)) return nullptr;
    return make_handle<HINTERNET>(std::move(request));
}

BOOL InternetSetOptionW(HINTERNET handle, DWORD option, const void* buffer, DWORD size) {
    const auto request = opened<Request>(handle);
    if (!request) return FALSE;
    if (buffer == nullptr || size != sizeof(DWORD)) return fail_with(ERROR_INVALID_PARAMETER);
    DWORD value = 0;
    std::copy_n(static_cast<const char*>(buffer), sizeof value, reinterpret_cast<char*>(&value));
    const std::lock_guard guard(request->lock);
    if (request->transfer) return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    auto& settings = request->settings;
    switch (option) {
        case INTERNET_OPTION_CONNECT_TIMEOUT:
            settings.connect_timeout = value;
            return TRUE;
        case INTERNET_OPTION_RECEIVE_TIMEOUT:
            settings.receive_timeout = value;
            return TRUE;
        case INTERNET_OPTION_SECURITY_FLAGS:
            settings.accepts_any_issuer = (value & SECURITY_FLAG_IGNORE_UNKNOWN_CA) != 0;
            settings.accepts_any_name = (value & SECURITY_FLAG_IGNORE_CERT_CN_INVALID) != 0;
            settings.accepts_any_date = (value & SECURITY_FLAG_IGNORE_CERT_DATE_INVALID) != 0;
            settings.may_leave_protection = (value & SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTP) != 0;
            return TRUE;
        default:
            return fail_with(ERROR_INTERNET_INVALID_OPTION);
    }
}

BOOL HttpAddRequestHeadersW(HINTERNET handle, const char16_t* headers, DWORD length, DWORD flags) {
    const auto request = opened<Request>(handle);
    if (!request) return FALSE;
    if (headers == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    const std::lock_guard guard(request->lock);
    if (request->transfer) return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    return add_headers(request->settings.headers, counted(headers, length), flags) ? TRUE : FALSE;
}

BOOL HttpSendRequestW(HINTERNET handle, const char16_t* headers, DWORD length, const void* body,
                      DWORD body_size) {
    const auto request = opened<Request>(handle);
    if (!request) return FALSE;
    const std::lock_guard guard(request->lock);
    if (request->transfer) return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    auto& settings = request->settings;
    if (!add_headers(settings.headers, counted(headers, length), HTTP_ADDREQ_FLAG_ADD)) {
        return FALSE;
    }
    if (body != nullptr) settings.body.assign(static_cast<const char*>(body), body_size);
    request->transfer.reset(transfer_opener()(settings));
    if (!request->transfer) return fail_with(ERROR_NOT_ENOUGH_MEMORY);
    const auto error = request->transfer->send();
    return error == 0 ? TRUE : fail_with(error);
}

BOOL InternetReadFile(HINTERNET handle, void* buffer, DWORD size, DWORD* read) {
    *read = 0;
    const auto request = pin_object<InternetObject>(handle);
    if (!request) return FALSE;
    if (request->level() != Level::request) return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_TYPE);
    auto& open = static_cast<Request&>(*request);
    const std::lock_guard guard(open.lock);
    if (!open.transfer) return fail_with(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    while (*read < size && open.failure == 0) {
        std::size_t count = 0;
        open.failure = open.transfer->read(static_cast<char*>(buffer) + *read, size - *read, count);
        if (count == 0) break;
        *read += static_cast<DWORD>(count);
    }
    if (*read != 0 || open.failure == 0) return TRUE;
    return fail_with(open.failure);
}

BOOL InternetCloseHandle(HINTERNET handle) {
    return close_handle_of<InternetObject>(handle);
}
