// Session URLs beside two general URL parsers on the same text, and the price of a secret beside
// the bare algorithms that its format asks for.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/url/string_protection.h"
#include "tvutil2/url/url_info.h"

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <glib.h>
#include <openssl/md5.h>
#include <openssl/rc4.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

namespace {

constexpr char kUrl[] = "ssh://alice@host.example.org:2222/var%2Flog?Session=lab+1&Name=x%3Dy";
constexpr char16_t kPassword[] = u"correct horse battery";

std::u16string wide(const char* text) {
    return {text, text + std::char_traits<char>::length(text)};
}

void parse_ours(benchmark::State& state) {
    const auto url = wide(kUrl);
    for (auto _ : state) {
        CUrlInfo info;
        if (info.Parse_URL(url.c_str(), 1) == 0) state.SkipWithError("refused");
        benchmark::DoNotOptimize(info);
    }
}

void parse_glib(benchmark::State& state) {
    for (auto _ : state) {
        GUri* const uri = g_uri_parse(kUrl, G_URI_FLAGS_NONE, nullptr);
        GHashTable* const items =
            g_uri_parse_params(g_uri_get_query(uri), -1, "&", G_URI_PARAMS_WWW_FORM, nullptr);
        benchmark::DoNotOptimize(items);
        g_hash_table_unref(items);
        g_uri_unref(uri);
    }
}

// Without its query, which libcurl hands over as one text.
void parse_curl(benchmark::State& state) {
    for (auto _ : state) {
        CURLU* const url = curl_url();
        if (curl_url_set(url, CURLUPART_URL, kUrl, CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
            state.SkipWithError("refused");
        }
        for (const auto part : {CURLUPART_SCHEME, CURLUPART_USER, CURLUPART_HOST, CURLUPART_PORT,
                                CURLUPART_PATH, CURLUPART_QUERY}) {
            char* text = nullptr;
            curl_url_get(url, part, &text, CURLU_URLDECODE);
            benchmark::DoNotOptimize(text);
            curl_free(text);
        }
        curl_url_cleanup(url);
    }
}

void make_ours(benchmark::State& state) {
    CUrlInfo info;
    info.Parse_URL(wide(kUrl).c_str(), 1);
    for (auto _ : state) {
        CString url;
        info.MakeURL(url, 0, 1);
        benchmark::DoNotOptimize(url);
    }
}

void make_glib(benchmark::State& state) {
    for (auto _ : state) {
        char* const url = g_uri_join_with_user(G_URI_FLAGS_NONE, "ssh", "alice", nullptr, nullptr,
                                               "host.example.org", 2222, "/var/log",
                                               "Session=lab+1&Name=x%3Dy", nullptr);
        benchmark::DoNotOptimize(url);
        g_free(url);
    }
}

void make_curl(benchmark::State& state) {
    for (auto _ : state) {
        CURLU* const url = curl_url();
        curl_url_set(url, CURLUPART_SCHEME, "ssh", CURLU_NON_SUPPORT_SCHEME);
        curl_url_set(url, CURLUPART_USER, "alice", CURLU_URLENCODE);
        curl_url_set(url, CURLUPART_HOST, "host.example.org", 0);
        curl_url_set(url, CURLUPART_PORT, "2222", 0);
        curl_url_set(url, CURLUPART_PATH, "/var/log", CURLU_URLENCODE);
        curl_url_set(url, CURLUPART_QUERY, "Session=lab 1", CURLU_URLENCODE | CURLU_APPENDQUERY);
        curl_url_set(url, CURLUPART_QUERY, "Name=x=y", CURLU_URLENCODE | CURLU_APPENDQUERY);
        char* text = nullptr;
        curl_url_get(url, CURLUPART_URL, &text, CURLU_NON_SUPPORT_SCHEME);
        benchmark::DoNotOptimize(text);
        curl_free(text);
        curl_url_cleanup(url);
    }
}

// What no maker of this format can save: the digest of the key, the digest of the secret, the
// cipher's schedule and the cipher. And where the account can change, in a program of root's, the
// system is asked which one it is.
template <bool kWithAccount>
void algorithms(benchmark::State& state) {
    CString sid;
    GetCurSID(sid, u"5.3");
    const CAnsiString key(sid.GetString());
    const CAnsiString secret(kPassword);
    const auto size = static_cast<std::size_t>(secret.GetLength());
    unsigned char out[64];
    for (auto _ : state) {
        if (kWithAccount) benchmark::DoNotOptimize(syscall(SYS_geteuid));
        unsigned char digest[2][MD5_DIGEST_LENGTH];
        for (int i = 0; i < 2; ++i) {
            const char* const text = i == 0 ? key : secret;
            MD5_CTX context;
            MD5_Init(&context);
            MD5_Update(&context, text, std::char_traits<char>::length(text));
            MD5_Final(digest[i], &context);
        }
        RC4_KEY schedule;
        RC4_set_key(&schedule, MD5_DIGEST_LENGTH, digest[0]);
        RC4(&schedule, size,
            reinterpret_cast<const unsigned char*>(static_cast<const char*>(secret)), out);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(digest);
    }
}

CUrlInfo with_secret() {
    CUrlInfo info;
    info.m_strScheme = u"ssh";
    info.m_strUser = u"alice";
    info.m_strHost = u"host.example.org";
    info.m_strPassword = kPassword;
    return info;
}

void make_secret(benchmark::State& state) {
    const auto info = with_secret();
    for (auto _ : state) {
        CString url;
        info.MakeURL(url, 0, 1);
        benchmark::DoNotOptimize(url);
    }
}

void parse_secret(benchmark::State& state) {
    CString url;
    with_secret().MakeURL(url, 0, 1);
    for (auto _ : state) {
        CUrlInfo info;
        info.Parse_URL(url, 1);
        benchmark::DoNotOptimize(info);
    }
}

BENCHMARK(parse_ours)->Name("parse a session URL|ours");
BENCHMARK(parse_glib)->Name("parse a session URL|GLib");
BENCHMARK(parse_curl)->Name("parse a session URL|libcurl");
BENCHMARK(make_ours)->Name("make a session URL|ours");
BENCHMARK(make_glib)->Name("make a session URL|GLib");
BENCHMARK(make_curl)->Name("make a session URL|libcurl");
BENCHMARK(make_secret)->Name("make a session URL with a password|ours");
BENCHMARK(algorithms<false>)->Name("make a session URL with a password|two MD5 and RC4");
BENCHMARK(algorithms<true>)->Name("make a session URL with a password|the same and geteuid");
BENCHMARK(parse_secret)->Name("parse a session URL with a password|ours");
BENCHMARK(algorithms<false>)->Name("parse a session URL with a password|two MD5 and RC4");
BENCHMARK(algorithms<true>)->Name("parse a session URL with a password|the same and geteuid");

}  // namespace
