// Base64 with 16-bit text on one side, beside what a caller would otherwise write: the peer's
// narrow text, widened or narrowed unit by unit.
#include "tvutil2/frame/base64.h"

#include <benchmark/benchmark.h>
#include <glib.h>
#include <openssl/evp.h>

#include <string>
#include <vector>

namespace {

std::vector<unsigned char> sample(std::size_t size) {
    std::vector<unsigned char> bytes(size);
    unsigned int state = 1;
    for (auto& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<unsigned char>(state >> 24U);
    }
    return bytes;
}

CString sample_text(std::size_t size) {
    const auto bytes = sample(size);
    CString text;
    CBase64::Encode(bytes.data(), static_cast<unsigned int>(size), text);
    return text;
}

template <std::size_t size>
void encode_ours(benchmark::State& state) {
    const auto bytes = sample(size);
    CString text;
    for (auto _ : state) {
        CBase64::Encode(bytes.data(), size, text);
        benchmark::DoNotOptimize(text.GetString());
    }
}

template <std::size_t size>
void encode_openssl(benchmark::State& state) {
    const auto bytes = sample(size);
    std::vector<unsigned char> narrow(size / 3 * 4 + 8);
    std::u16string text;
    for (auto _ : state) {
        const int count = EVP_EncodeBlock(narrow.data(), bytes.data(), size);
        text.assign(narrow.begin(), narrow.begin() + count);
        benchmark::DoNotOptimize(text.data());
    }
}

template <std::size_t size>
void encode_glib(benchmark::State& state) {
    const auto bytes = sample(size);
    std::u16string text;
    for (auto _ : state) {
        gchar* const narrow = g_base64_encode(bytes.data(), size);
        text.assign(narrow, narrow + std::char_traits<char>::length(narrow));
        g_free(narrow);
        benchmark::DoNotOptimize(text.data());
    }
}

template <std::size_t size>
void decode_ours(benchmark::State& state) {
    const auto text = sample_text(size);
    CBuffer bytes;
    for (auto _ : state) {
        if (CBase64::Decode(text, bytes) != 1) state.SkipWithError("refused");
        benchmark::DoNotOptimize(bytes.Ptr());
    }
}

template <std::size_t size>
void decode_openssl(benchmark::State& state) {
    const auto text = sample_text(size);
    std::vector<unsigned char> narrow(text.View().size());
    std::vector<unsigned char> bytes(size + 8);
    for (auto _ : state) {
        for (std::size_t i = 0; i < narrow.size(); ++i) {
            narrow[i] = static_cast<unsigned char>(text.View()[i]);
        }
        if (EVP_DecodeBlock(bytes.data(), narrow.data(), static_cast<int>(narrow.size())) < 0) {
            state.SkipWithError("refused");
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}

// What a caller with narrow text and room of their own would write.
template <std::size_t size>
void decode_plain_openssl(benchmark::State& state) {
    const auto text = sample_text(size);
    const std::vector<unsigned char> narrow(text.View().begin(), text.View().end());
    std::vector<unsigned char> bytes(size + 8);
    for (auto _ : state) {
        if (EVP_DecodeBlock(bytes.data(), narrow.data(), static_cast<int>(narrow.size())) < 0) {
            state.SkipWithError("refused");
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}

template <std::size_t size>
void decode_glib(benchmark::State& state) {
    const auto text = sample_text(size);
    std::string narrow;
    for (auto _ : state) {
        narrow.resize(text.View().size());
        for (std::size_t i = 0; i < narrow.size(); ++i)
            narrow[i] = static_cast<char>(text.View()[i]);
        gsize count = 0;
        guchar* const bytes = g_base64_decode(narrow.c_str(), &count);
        benchmark::DoNotOptimize(bytes);
        g_free(bytes);
    }
}

constexpr std::size_t kKey = 64;
constexpr std::size_t kSmall = 1024;
constexpr std::size_t kLarge = 1 << 20;

BENCHMARK(encode_ours<kSmall>)->Name("base64 encode 1 KiB|ours");
BENCHMARK(encode_openssl<kSmall>)->Name("base64 encode 1 KiB|OpenSSL and widening");
BENCHMARK(encode_glib<kSmall>)->Name("base64 encode 1 KiB|GLib and widening");
BENCHMARK(encode_ours<kLarge>)->Name("base64 encode 1 MiB|ours");
BENCHMARK(encode_openssl<kLarge>)->Name("base64 encode 1 MiB|OpenSSL and widening");
BENCHMARK(encode_glib<kLarge>)->Name("base64 encode 1 MiB|GLib and widening");
BENCHMARK(decode_ours<kKey>)->Name("base64 decode 64 bytes|ours");
BENCHMARK(decode_plain_openssl<kKey>)->Name("base64 decode 64 bytes|OpenSSL alone");
BENCHMARK(decode_ours<kSmall>)->Name("base64 decode 1 KiB|ours");
BENCHMARK(decode_openssl<kSmall>)->Name("base64 decode 1 KiB|OpenSSL and narrowing");
BENCHMARK(decode_glib<kSmall>)->Name("base64 decode 1 KiB|GLib and narrowing");
BENCHMARK(decode_ours<kLarge>)->Name("base64 decode 1 MiB|ours");
BENCHMARK(decode_openssl<kLarge>)->Name("base64 decode 1 MiB|OpenSSL and narrowing");
BENCHMARK(decode_glib<kLarge>)->Name("base64 decode 1 MiB|GLib and narrowing");

}  // namespace
