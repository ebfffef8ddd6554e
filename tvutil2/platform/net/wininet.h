// A synchronous HTTP client: a session, a connection below it, a request below that.
//
// Built on libcurl, in a module of its own that is loaded with the first request (without it
// HttpOpenRequestW fails with ERROR_MOD_NOT_FOUND). Every call works on the caller's thread and
// waits for as long as the network takes, within the time-outs: 60 seconds for a connection, 30
// seconds without a byte; nothing bounds a transfer that goes on. HTTP/1.1, over TLS for a request
// with INTERNET_FLAG_SECURE. Nothing is cached and no answer is decompressed.
//
// Certificates are checked against the host's trusted ones. Each SECURITY_FLAG_IGNORE_ flag takes
// one of these checks away; a caller that sets those for the issuer, the name and the date talks to
// whoever answers, and must not take what it gets for the server's word.
//
// Redirects are followed, at most ten, from http to https at will and from https to http only with
// SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTP. The system's proxy settings are the environment's
// (http_proxy, https_proxy, all_proxy, no_proxy).
//
// Handles may be used and closed from any thread; calls on one request wait for one another. A
// closed session or connection lives on in what was opened below it. A child after a fork must not
// use its parent's requests. Every call fails with ERROR_INVALID_HANDLE for a handle that is none,
// and with ERROR_INTERNET_INCORRECT_HANDLE_TYPE for one of another level.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

using INTERNET_PORT = WORD;

inline constexpr DWORD INTERNET_OPEN_TYPE_PRECONFIG = 0;
inline constexpr DWORD INTERNET_OPEN_TYPE_DIRECT = 1;
inline constexpr DWORD INTERNET_OPEN_TYPE_PROXY = 3;

inline constexpr DWORD INTERNET_SERVICE_FTP = 1;
inline constexpr DWORD INTERNET_SERVICE_GOPHER = 2;
inline constexpr DWORD INTERNET_SERVICE_HTTP = 3;
inline constexpr INTERNET_PORT INTERNET_INVALID_PORT_NUMBER = 0;  ///< the scheme's own

inline constexpr DWORD INTERNET_FLAG_RELOAD = 0x80000000;          ///< always so here
inline constexpr DWORD INTERNET_FLAG_NO_CACHE_WRITE = 0x04000000;  ///< always so here
inline constexpr DWORD INTERNET_FLAG_SECURE = 0x00800000;
inline constexpr DWORD INTERNET_FLAG_NO_AUTO_REDIRECT = 0x00200000;
/// Without it cookies go from one redirect of a request to the next, and no further.
inline constexpr DWORD INTERNET_FLAG_NO_COOKIES = 0x00080000;

inline constexpr DWORD INTERNET_OPTION_CONNECT_TIMEOUT = 2;  ///< DWORD, milliseconds
inline constexpr DWORD INTERNET_OPTION_RECEIVE_TIMEOUT = 6;  ///< DWORD, milliseconds
inline constexpr DWORD INTERNET_OPTION_SECURITY_FLAGS = 31;  ///< DWORD, SECURITY_FLAG_

inline constexpr DWORD SECURITY_FLAG_IGNORE_REVOCATION = 0x00000080;  ///< always so here
inline constexpr DWORD SECURITY_FLAG_IGNORE_UNKNOWN_CA = 0x00000100;
inline constexpr DWORD SECURITY_FLAG_IGNORE_CERT_CN_INVALID = 0x00001000;
inline constexpr DWORD SECURITY_FLAG_IGNORE_CERT_DATE_INVALID = 0x00002000;
inline constexpr DWORD SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTPS = 0x00004000;  ///< always so here
inline constexpr DWORD SECURITY_FLAG_IGNORE_REDIRECT_TO_HTTP = 0x00008000;

inline constexpr DWORD HTTP_ADDREQ_FLAG_ADD_IF_NEW = 0x10000000;
inline constexpr DWORD HTTP_ADDREQ_FLAG_ADD = 0x20000000;
inline constexpr DWORD HTTP_ADDREQ_FLAG_REPLACE = 0x80000000;

/// A session. `agent` is the User-Agent of its requests; null for none. `proxy` is the proxy of
/// INTERNET_OPEN_TYPE_PROXY ("host:port") and must be null otherwise, as `bypass`, a list of names
/// parted by commas or semicolons. `flags` must be 0 (ERROR_INVALID_PARAMETER).
TVUTIL_API HINTERNET InternetOpenW(const char16_t* agent, DWORD access, const char16_t* proxy,
                                   const char16_t* bypass, DWORD flags);

/// A connection: no more than the server's name (an IPv6 address in brackets) and port, kept for
/// requests; the network isn't asked yet. `service` is INTERNET_SERVICE_HTTP; user and password
/// must be null or empty. ERROR_INVALID_PARAMETER otherwise, ERROR_INTERNET_INVALID_URL for a name
/// that can't be one.
TVUTIL_API HINTERNET InternetConnectW(HINTERNET session, const char16_t* server, INTERNET_PORT port,
                                      const char16_t* user, const char16_t* password, DWORD service,
                                      DWORD flags, DWORD_PTR context);

/// A request, not sent yet. `verb` is GET for null. `path` gets a "/" in front if there is none;
/// controls, blanks and what isn't ASCII are escaped as UTF-8. `version` is null or "HTTP/1.1".
/// `referrer` may be null, `accept` a list that ends in null, or null. Flags that aren't named
/// above mean nothing here.
TVUTIL_API HINTERNET HttpOpenRequestW(HINTERNET connection, const char16_t* verb,
                                      const char16_t* path, const char16_t* version,
                                      const char16_t* referrer, const char16_t** accept,
                                      DWORD flags, DWORD_PTR context);

/// Sets one of the options of a request that isn't sent yet. `size` must be 4. 0 with
/// ERROR_INTERNET_INVALID_OPTION for any other option, ERROR_INVALID_PARAMETER for another size.
TVUTIL_API BOOL InternetSetOptionW(HINTERNET request, DWORD option, const void* buffer, DWORD size);

/// Adds the lines of `headers` ("Name: value", parted by line ends; empty ones are passed over).
/// `length` counts units, -1 means up to the zero. With ADD and REPLACE a header of the name is
/// replaced, if there is one; with REPLACE alone there must be one (ERROR_HTTP_HEADER_NOT_FOUND);
/// with ADD_IF_NEW there must be none (ERROR_HTTP_HEADER_ALREADY_EXISTS). A line without a name, or
/// with controls, is ERROR_INVALID_PARAMETER, and nothing is added then.
TVUTIL_API BOOL HttpAddRequestHeadersW(HINTERNET request, const char16_t* headers, DWORD length,
                                       DWORD flags);

/// Sends the request and waits for the head of the answer, whatever its status. `headers` are added
/// first (ADD); `body` has `body_size` bytes, for verbs other than GET and HEAD, and may be null. A
/// request is sent once: ERROR_INTERNET_INCORRECT_HANDLE_STATE.
TVUTIL_API BOOL HttpSendRequestW(HINTERNET request, const char16_t* headers, DWORD length,
                                 const void* body, DWORD body_size);

namespace tvutil2 {
/// The status of a request that was sent, 200 and the like; 0 otherwise.
[[nodiscard]] TVUTIL_API DWORD http_status(HINTERNET request);
/// How many bytes the server says the body has, which may be any number; 0 when it doesn't say.
[[nodiscard]] TVUTIL_API std::uint64_t http_length(HINTERNET request);
}  // namespace tvutil2

/// The next bytes of the body, at most `size`: all that can be had of them, less only at the body's
/// end or before a failure, which the next call then reports. 0 bytes with success mean its end.
TVUTIL_API BOOL InternetReadFile(HINTERNET request, void* buffer, DWORD size, DWORD* read);

/// Closes a session, connection or request; the last error stays.
TVUTIL_API BOOL InternetCloseHandle(HINTERNET handle);
