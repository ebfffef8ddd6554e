#include "tools/crash/upload.h"

#include <curl/curl.h>

#include <memory>

namespace crash {
namespace {

constexpr long kConnectSeconds = 10;
constexpr long kSeconds = 60;

struct EasyEnd {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct FormEnd {
    void operator()(curl_mime* form) const { curl_mime_free(form); }
};
struct ListEnd {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

void add_text(curl_mime* form, const char* name, const std::string& text) {
    curl_mimepart* const part = curl_mime_addpart(form);
    curl_mime_name(part, name);
    curl_mime_data(part, text.data(), text.size());
}

void add_archive(curl_mime* form, const Upload& what) {
    curl_mimepart* const part = curl_mime_addpart(form);
    curl_mime_name(part, "report");
    curl_mime_filedata(part, what.archive.c_str());
    curl_mime_filename(part, (what.name + ".zip").c_str());
    curl_mime_type(part, "application/zip");
}

// What the server has to say beyond its status isn't kept.
std::size_t pass_over(char* /*data*/, std::size_t /*one*/, std::size_t size, void* /*nothing*/) {
    return size;
}

}  // namespace

Answer upload(const Upload& what) {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    const std::unique_ptr<CURL, EasyEnd> easy(started == CURLE_OK ? curl_easy_init() : nullptr);
    if (!easy) return {false, false, "no memory"};
    const std::unique_ptr<curl_mime, FormEnd> form(curl_mime_init(easy.get()));
    add_text(form.get(), "name", what.name);
    add_text(form.get(), "application", what.application);
    add_text(form.get(), "version", what.version);
    add_archive(form.get(), what);
    // A server that doesn't know of asking first would cost a second.
    const std::unique_ptr<curl_slist, ListEnd> headers(curl_slist_append(nullptr, "Expect:"));
    const auto set = [&](CURLoption option, auto value) {
        curl_easy_setopt(easy.get(), option, value);
    };
    set(CURLOPT_URL, what.address.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_USERAGENT, "tvutil2-crash/8");
    set(CURLOPT_HTTPHEADER, headers.get());
    set(CURLOPT_MIMEPOST, form.get());
    set(CURLOPT_WRITEFUNCTION, &pass_over);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    set(CURLOPT_TIMEOUT, kSeconds);
    const CURLcode result = curl_easy_perform(easy.get());
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK) return {false, status != 0, curl_easy_strerror(result)};
    if (status / 100 == 2) return {true, true, ""};
    return {false, true, "the server refused it with " + std::to_string(status)};
}

}  // namespace crash
