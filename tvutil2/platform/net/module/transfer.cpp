// Transfers on libcurl. The multi interface is used for a single transfer, since it hands the body
// out when the caller asks for it, on the caller's thread.
#include "tvutil2/platform/net/transfer.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/late/openssl_start.h"

#include <curl/curl.h>
#include <openssl/ssl.h>
#include <strings.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace tvutil2 {
namespace {

using Clock = std::chrono::steady_clock;

constexpr long kReceiveSize = 128L * 1024;
constexpr long kMostRedirects = 10;
constexpr std::size_t kLongestHead = std::size_t{256} * 1024;

bool is_about_date(int error) {
    return error == X509_V_ERR_CERT_HAS_EXPIRED || error == X509_V_ERR_CERT_NOT_YET_VALID;
}

// What a check of the chain may find wrong and be accepted all the same.
int pass_date(int is_good, X509_STORE_CTX* context) {
    if (is_good == 0 && is_about_date(X509_STORE_CTX_get_error(context))) {
        X509_STORE_CTX_set_error(context, X509_V_OK);
        return 1;
    }
    return is_good;
}

int pass_issuer(int is_good, X509_STORE_CTX* context) {
    switch (X509_STORE_CTX_get_error(context)) {
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_CERT_UNTRUSTED:
            X509_STORE_CTX_set_error(context, X509_V_OK);
            return 1;
        default:
            return is_good;
    }
}

CURLcode set_check(CURL* /*easy*/, void* context, void* request) {
    const auto& wanted = *static_cast<const TransferRequest*>(request);
    SSL_CTX_set_verify(static_cast<SSL_CTX*>(context), SSL_VERIFY_PEER,
                       wanted.accepts_any_date ? pass_date : pass_issuer);
    return CURLE_OK;
}

DWORD error_of_check(long verify_result) {
    if (verify_result == X509_V_OK) return ERROR_INTERNET_SEC_CERT_CN_INVALID;
    return is_about_date(static_cast<int>(verify_result)) ? ERROR_INTERNET_SEC_CERT_DATE_INVALID
                                                          : ERROR_INTERNET_INVALID_CA;
}

struct EasyEnd {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiEnd {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct ListEnd {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

class CurlTransfer final : public Transfer {
  public:
    explicit CurlTransfer(const TransferRequest& request) : m_request(request) {
        static const bool is_started = OPENSSL_init_crypto(kOpensslStart, nullptr) == 1 &&
                                       curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
        if (!is_started) throw std::bad_alloc();
        m_multi.reset(curl_multi_init());
        m_easy.reset(curl_easy_init());
        if (!m_multi || !m_easy) throw std::bad_alloc();
        set_target();
        set_headers();
        set_security();
        set_receivers();
        curl_multi_add_handle(m_multi.get(), m_easy.get());
    }
    ~CurlTransfer() override { curl_multi_remove_handle(m_multi.get(), m_easy.get()); }
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    DWORD send() override {
        const auto until =
            after(m_request.connect_timeout) + std::chrono::milliseconds(m_request.receive_timeout);
        while (!m_has_head && !m_is_done) {
            if (const auto error = move_on(until); error != 0) return error;
        }
        return m_has_head ? 0 : m_error;
    }

    DWORD read(char* data, std::size_t size, std::size_t& read) override {
        read = 0;
        if (size == 0) return 0;
        if (m_taken == m_body.size()) {
            const auto until = after(m_request.receive_timeout);
            while (m_taken == m_body.size() && !m_is_done) {
                if (const auto error = move_on(until); error != 0) return error;
            }
        }
        read = std::min(size, m_body.size() - m_taken);
        if (read == 0) return m_error;
        std::memcpy(data, m_body.data() + m_taken, read);
        m_taken += read;
        return 0;
    }

    [[nodiscard]] DWORD status() const override {
        long code = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &code);
        return static_cast<DWORD>(code);
    }

    [[nodiscard]] std::uint64_t length() const override {
        curl_off_t length = 0;
        curl_easy_getinfo(m_easy.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
        return length > 0 ? static_cast<std::uint64_t>(length) : 0;
    }

  private:
    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(m_easy.get(), option, value);
    }
    static Clock::time_point after(DWORD milliseconds) {
        return Clock::now() + std::chrono::milliseconds(milliseconds);
    }

    void set_target() {
        set(CURLOPT_URL, m_request.url.c_str());
        set(CURLOPT_PATH_AS_IS, 1L);
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        if (m_request.verb == "HEAD") {
            set(CURLOPT_NOBODY, 1L);
        } else if (m_request.verb != "GET") {
            if (m_request.verb != "POST") set(CURLOPT_CUSTOMREQUEST, m_request.verb.c_str());
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
            set(CURLOPT_POSTFIELDS, m_request.body.c_str());
        }
        if (m_request.is_direct || !m_request.proxy.empty()) {
            set(CURLOPT_PROXY, m_request.is_direct ? "" : m_request.proxy.c_str());
            set(CURLOPT_NOPROXY, m_request.proxy_bypass.c_str());
        }
        // Ends with a signal, and waits for a name in a thread, are not for a library to arrange.
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_request.connect_timeout));
        set(CURLOPT_FOLLOWLOCATION, m_request.follows_redirects ? 1L : 0L);
        set(CURLOPT_MAXREDIRS, kMostRedirects);
        if (m_request.keeps_cookies) set(CURLOPT_COOKIEFILE, "");
    }

    void set_headers() {
        for (const auto& header : m_request.headers) {
            // Without a value the name would be taken out.
            const auto end = header.find_last_not_of(" \t");
            const auto text = end != std::string::npos && header[end] == ':'
                                  ? header.substr(0, end) + ";"
                                  : header;
            curl_slist* const list = curl_slist_append(m_headers.get(), text.c_str());
            if (list == nullptr) throw std::bad_alloc();
            static_cast<void>(m_headers.release());
            m_headers.reset(list);
        }
        set(CURLOPT_HTTPHEADER, m_headers.get());
    }

    void set_security() {
        const bool is_protected = m_request.url.starts_with("https:");
        set(CURLOPT_REDIR_PROTOCOLS_STR,
            is_protected && !m_request.may_leave_protection ? "https" : "http,https");
        const bool accepts_any = m_request.accepts_any_issuer && m_request.accepts_any_date;
        set(CURLOPT_SSL_VERIFYPEER, accepts_any ? 0L : 1L);
        set(CURLOPT_SSL_VERIFYHOST, m_request.accepts_any_name ? 0L : 2L);
        if (!accepts_any && (m_request.accepts_any_issuer || m_request.accepts_any_date)) {
            set(CURLOPT_SSL_CTX_FUNCTION, &set_check);
            set(CURLOPT_SSL_CTX_DATA, &m_request);
        }
    }

    void set_receivers() {
        set(CURLOPT_BUFFERSIZE, kReceiveSize);
        set(CURLOPT_HEADERFUNCTION, &take_header);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_WRITEFUNCTION, &take_body);
        set(CURLOPT_WRITEDATA, this);
    }

    // Answers that another one follows end in an empty line too.
    static std::size_t take_header(char* data, std::size_t, std::size_t size, void* self) {
        auto& transfer = *static_cast<CurlTransfer*>(self);
        constexpr std::string_view kLocation = "location:";
        const std::string_view line(data, size);
        if (line.starts_with("HTTP/")) {
            transfer.m_has_location = false;
            transfer.m_head_size = 0;
        }
        transfer.m_head_size += size;
        if (transfer.m_head_size > kLongestHead) return 0;
        if (size > kLocation.size() && strncasecmp(data, kLocation.data(), kLocation.size()) == 0) {
            transfer.m_has_location = true;
        }
        if (line == "\r\n" || line == "\n") {
            const auto code = transfer.status();
            const bool is_followed =
                transfer.m_request.follows_redirects && code / 100 == 3 && transfer.m_has_location;
            if (code >= 200 && !is_followed) transfer.m_has_head = true;
        }
        return size;
    }

    static std::size_t take_body(char* data, std::size_t, std::size_t size, void* self) {
        auto& transfer = *static_cast<CurlTransfer*>(self);
        try {
            transfer.m_body.insert(transfer.m_body.end(), data, data + size);
        } catch (const std::bad_alloc&) {
            return 0;
        }
        transfer.m_has_head = true;
        return size;
    }

    // Lets the transfer work until something has come or happened.
    DWORD move_on(Clock::time_point until) {
        if (m_taken == m_body.size()) {
            m_body.clear();
            m_taken = 0;
        }
        int running = 0;
        if (curl_multi_perform(m_multi.get(), &running) != CURLM_OK) {
            m_is_done = true;
            return m_error = ERROR_NOT_ENOUGH_MEMORY;
        }
        if (running == 0) {
            int left = 0;
            const auto* const message = curl_multi_info_read(m_multi.get(), &left);
            m_is_done = true;
            if (message != nullptr) m_error = error_of(message->data.result);
            return 0;
        }
        if (!m_body.empty()) return 0;
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
        if (rest <= 0) {
            m_is_done = true;
            return m_error = ERROR_INTERNET_TIMEOUT;
        }
        curl_multi_poll(m_multi.get(), nullptr, 0, static_cast<int>(rest), nullptr);
        return 0;
    }

    [[nodiscard]] DWORD error_of(CURLcode result) const {
        switch (result) {
            case CURLE_OK:
                return 0;
            case CURLE_URL_MALFORMAT:
                return ERROR_INTERNET_INVALID_URL;
            case CURLE_UNSUPPORTED_PROTOCOL: {
                // Also what is no HTTP at all.
                if (status() / 100 != 3) return ERROR_HTTP_INVALID_SERVER_RESPONSE;
                const bool is_protected = m_request.url.starts_with("https:");
                return is_protected && !m_request.may_leave_protection
                           ? ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR
                           : ERROR_INTERNET_UNRECOGNIZED_SCHEME;
            }
            case CURLE_COULDNT_RESOLVE_HOST:
            case CURLE_COULDNT_RESOLVE_PROXY:
                return ERROR_INTERNET_NAME_NOT_RESOLVED;
            case CURLE_COULDNT_CONNECT:
                return ERROR_INTERNET_CANNOT_CONNECT;
            case CURLE_OPERATION_TIMEDOUT:
                return ERROR_INTERNET_TIMEOUT;
            case CURLE_TOO_MANY_REDIRECTS:
                return ERROR_HTTP_REDIRECT_FAILED;
            case CURLE_PEER_FAILED_VERIFICATION: {
                // A chain that anything passes of has a verdict all the same.
                if (m_request.accepts_any_issuer && m_request.accepts_any_date) {
                    return ERROR_INTERNET_SEC_CERT_CN_INVALID;
                }
                long found = 0;
                curl_easy_getinfo(m_easy.get(), CURLINFO_SSL_VERIFYRESULT, &found);
                return error_of_check(found);
            }
            case CURLE_SSL_CONNECT_ERROR:
            case CURLE_SSL_CIPHER:
                return ERROR_INTERNET_SECURITY_CHANNEL_ERROR;
            case CURLE_PARTIAL_FILE:
            case CURLE_RECV_ERROR:
            case CURLE_SEND_ERROR:
            case CURLE_GOT_NOTHING:
                return ERROR_INTERNET_CONNECTION_ABORTED;
            case CURLE_WRITE_ERROR:
                return m_head_size > kLongestHead ? ERROR_HTTP_INVALID_SERVER_RESPONSE
                                                  : ERROR_NOT_ENOUGH_MEMORY;
            default:
                return ERROR_HTTP_INVALID_SERVER_RESPONSE;
        }
    }

    TransferRequest m_request;
    std::unique_ptr<CURLM, MultiEnd> m_multi;
    std::unique_ptr<CURL, EasyEnd> m_easy;
    std::unique_ptr<curl_slist, ListEnd> m_headers;
    std::vector<char> m_body;  // what came and wasn't asked for yet begins at m_taken
    std::size_t m_taken = 0;
    std::size_t m_head_size = 0;
    bool m_has_location = false;
    bool m_has_head = false;
    bool m_is_done = false;
    DWORD m_error = 0;
};

}  // namespace

extern "C" TVUTIL_API Transfer* tvutil2_open_transfer(const TransferRequest& request);

Transfer* tvutil2_open_transfer(const TransferRequest& request) {
    try {
        return std::make_unique<CurlTransfer>(request).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace tvutil2
