// One HTTP request and its answer, as the module of the HTTP client carries it out.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tvutil2 {

/// What is asked for. Text is UTF-8 without controls.
struct TransferRequest {
    std::string verb;
    std::string url;
    std::vector<std::string> headers;  ///< "Name: value"
    std::string body;                  ///< of verbs other than GET and HEAD
    bool is_direct = false;            ///< no proxy, whatever the system's settings say
    std::string proxy;                 ///< instead of the system's settings; empty: those
    std::string proxy_bypass;
    bool follows_redirects = true;
    bool may_leave_protection = false;  ///< follow from https to http
    bool keeps_cookies = false;         ///< from one redirect to the next
    bool accepts_any_issuer = false;
    bool accepts_any_name = false;
    bool accepts_any_date = false;
    DWORD connect_timeout = 60000;  ///< milliseconds
    DWORD receive_timeout = 30000;  ///< without a byte; milliseconds
};

/// A request under way, for one thread at a time. Errors are those of the HTTP client, 0 for none.
class Transfer {
  public:
    Transfer() = default;
    virtual ~Transfer() = default;
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Sends, and waits for the head of the answer, redirects followed.
    virtual DWORD send() = 0;
    /// Up to `size` bytes of the body, as many as are there, at least one; `read` is 0 at its end.
    /// What came before a failure is given before it.
    virtual DWORD read(char* data, std::size_t size, std::size_t& read) = 0;
    /// The answer's status.
    [[nodiscard]] virtual DWORD status() const = 0;
    /// How many bytes the head of the answer says its body has; 0 when it doesn't say.
    [[nodiscard]] virtual std::uint64_t length() const = 0;
};

/// The module's one function; null for lack of memory.
using OpenTransfer = Transfer*(const TransferRequest& request);
inline constexpr auto kOpenTransfer = "tvutil2_open_transfer";

}  // namespace tvutil2
