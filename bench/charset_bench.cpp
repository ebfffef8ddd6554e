// Streams: characters decoded a byte at a time, beside ICU's ucnv_toUnicode and iconv fed the same
// way, and texts encoded whole.
#include "tvutil2/frame/buffer.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/text/charset.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <string>

#include "bench/support/page_peers.h"

namespace {

using bench::Host;
using bench::Icu;
using bench::Page;

struct Sample {
    std::u16string text;
    std::string bytes;
};

std::shared_ptr<Sample> sample_of(unsigned int page, const std::u16string& text) {
    auto sample = std::make_shared<Sample>();
    sample->text = text;
    CBuffer out;
    CCharSetEncoder(page).Encode(text.c_str(), out);
    sample->bytes.assign(reinterpret_cast<const char*>(out.Ptr()), out.Len());
    return sample;
}

// `make` is called when the first work on the text runs, not when it is registered.
class Text {
  public:
    Text(unsigned int page, std::function<std::u16string()> make)
        : m_page(page), m_make(std::move(make)) {}
    const Sample& get() {
        if (!m_sample) m_sample = sample_of(m_page, m_make());
        return *m_sample;
    }

  private:
    unsigned int m_page;
    std::function<std::u16string()> m_make;
    std::shared_ptr<Sample> m_sample;
};

template <class Work>
void add(const std::string& name, const std::shared_ptr<Text>& text, const Work& work) {
    const auto run = [text, work](benchmark::State& state) {
        const auto& sample = text->get();
        for (auto _ : state) {
            if (!work(sample)) state.SkipWithError("conversion failed");
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(state.iterations() *
                                static_cast<std::int64_t>(sample.bytes.size()));
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

bool decode_ours(unsigned int page, const Sample& sample) {
    CCharSetDecoder decoder(page);
    unsigned int sum = 0;
    for (const char byte : sample.bytes) {
        unsigned int code = 0;
        if (decoder.Decode(static_cast<unsigned char>(byte), code, nullptr, nullptr) != 0) {
            sum += code;
        }
    }
    benchmark::DoNotOptimize(sum);
    return true;
}

bool decode_by_icu(UConverter* converter, const Sample& sample) {
    unsigned int sum = 0;
    const char* from = sample.bytes.data();
    for (std::size_t i = 0; i < sample.bytes.size(); ++i) {
        UErrorCode status = U_ZERO_ERROR;
        char16_t units[4];
        char16_t* to = units;
        ucnv_toUnicode(converter, &to, units + 4, &from, from + 1, nullptr, 0, &status);
        if (U_FAILURE(status)) return false;
        for (const auto* unit = units; unit != to; ++unit) sum += *unit;
    }
    benchmark::DoNotOptimize(sum);
    return true;
}

// iconv has no memory for a character begun: the caller keeps what it left.
bool decode_by_iconv(iconv_t converter, const Sample& sample) {
    unsigned int sum = 0;
    char held[8];
    std::size_t count = 0;
    for (const char byte : sample.bytes) {
        held[count++] = byte;
        char* in = held;
        char16_t units[4];
        auto* to = reinterpret_cast<char*>(units);
        std::size_t room = sizeof units;
        if (iconv(converter, &in, &count, &to, &room) == static_cast<std::size_t>(-1)) {
            if (count == sizeof held) return false;
            continue;
        }
        count = 0;
        const auto size = (sizeof units - room) / sizeof(char16_t);
        for (std::size_t i = 0; i < size; ++i) sum += units[i];
    }
    benchmark::DoNotOptimize(sum);
    return true;
}

bool encode_ours(unsigned int page, const Sample& sample) {
    CBuffer out;
    return CCharSetEncoder(page).Encode(sample.text.c_str(), out) != 0;
}

void add_page(const Page& page, const std::string& kind, std::function<std::u16string()> make) {
    const auto text = std::make_shared<Text>(page.number, std::move(make));
    const auto decode = "decode byte by byte: " + kind + "|";
    const auto encode = "encode a text: " + kind + "|";
    const auto number = page.number;
    add(decode + "ours", text, [number](const Sample& s) { return decode_ours(number, s); });
    if (page.icu != nullptr) {
        const auto icu = std::make_shared<Icu>(page.icu);
        add(decode + "ICU", text, [icu](const Sample& s) { return decode_by_icu(icu->get(), s); });
    }
    if (page.host != nullptr) {
        const auto host = std::make_shared<Host>("UTF-16LE", page.host);
        add(decode + "iconv", text,
            [host](const Sample& s) { return decode_by_iconv(host->get(), s); });
    }
    add(encode + "ours", text, [number](const Sample& s) { return encode_ours(number, s); });
    if (page.icu != nullptr) {
        const auto icu = std::make_shared<Icu>(page.icu);
        add(encode + "ICU", text, [icu](const Sample& s) {
            std::string out(s.text.size() * 4, '\0');
            return icu->narrow(s.text, out) > 0;
        });
    }
    if (page.host != nullptr) {
        const auto host = std::make_shared<Host>(page.host, "UTF-16LE");
        add(encode + "iconv", text, [host](const Sample& s) {
            std::string out(s.text.size() * 4, '\0');
            return host->convert(s.text, out);
        });
    }
}

const bool kIsRegistered = [] {
    constexpr Page kUtf8 = {CP_UTF8, "UTF-8", "UTF-8"};
    add_page(kUtf8, "ASCII", [] {
        std::u16string text;
        while (text.size() < bench::kSize) text += u"The quick brown fox jumps over the lazy dog. ";
        return text;
    });
    const auto from = [](char16_t first, char16_t last) {
        std::u16string letters(static_cast<std::size_t>(last - first + 1), u'\0');
        std::iota(letters.begin(), letters.end(), first);
        return letters;
    };
    const auto cyrillic = from(u'\u0430', u'\u044F');
    const auto chinese = from(u'\u4E00', u'\u4E1F');
    add_page(kUtf8, "UTF-8, two bytes", [cyrillic] { return bench::mixed_text(cyrillic); });
    add_page(kUtf8, "UTF-8, three bytes", [chinese] { return bench::mixed_text(chinese); });
    add_page(kUtf8, "UTF-8, both", [=] {
        return bench::mixed_text(u"\u00E9\u00FC\u0436\u0448\u03B1\u05D0\u0627\u0E01" + chinese);
    });
    for (const auto& page : bench::kPages) {
        add_page(page, std::to_string(page.number),
                 [&page] { return bench::mixed_text(bench::letters_of(page)); });
    }
    return true;
}();

}  // namespace
