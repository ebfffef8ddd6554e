// Code pages beside ICU's converters and the C library's iconv: 1 MB of mixed text both ways, in
// one call each; UTF-8 with the size asked first, as callers do; and the first use of a page.
#include "tvutil2/platform/codepage/codepage.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <sys/wait.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kSize = std::size_t{1} << 20U;

struct Page {
    UINT number;
    const char* icu;
    /// Null where the C library doesn't know the page.
    const char* host;
};

constexpr Page kPages[] = {
    {708, nullptr, nullptr},
    {720, "ibm-720_P100-1997", nullptr},
    {28596, "ISO-8859-6", "ISO-8859-6"},
    {1256, "ibm-9448_X100-2005", "CP1256"},
    {28594, "ISO-8859-4", "ISO-8859-4"},
    {1257, "ibm-9449_P100-2002", "CP1257"},
    {28592, "ISO-8859-2", "ISO-8859-2"},
    {1250, "ibm-5346_P100-1998", "CP1250"},
    {936, "windows-936-2000", "CP936"},
    {54936, "gb18030", "GB18030"},
    {20936, "EUC-CN", "EUC-CN"},
    {950, "windows-950-2000", "BIG5"},
    {28595, "ISO-8859-5", "ISO-8859-5"},
    {20866, "ibm-878_P100-1996", "KOI8-R"},
    {21866, "ibm-1168_P100-2002", "KOI8-U"},
    {1251, "ibm-5347_P100-1998", "CP1251"},
    {866, "ibm-866_P100-1995", "CP866"},
    {28597, "ISO-8859-7", "ISO-8859-7"},
    {1253, "ibm-5349_P100-1998", "CP1253"},
    {862, "ibm-862_P100-1995", "CP862"},
    {28598, "ISO-8859-8", "ISO-8859-8"},
    {38598, "ISO-8859-8", "ISO-8859-8"},
    {1255, "ibm-9447_P100-2002", "CP1255"},
    {51932, "EUC-JP", "EUC-JP-MS"},
    {932, "ibm-943_P15A-2003", "CP932"},
    {949, "windows-949-2000", "UHC"},
    {51949, "EUC-KR", "EUC-KR"},
    {874, "windows-874-2000", "CP874"},
    {28599, "ISO-8859-9", "ISO-8859-9"},
    {1254, "ibm-5350_P100-1998", "CP1254"},
    {1258, "ibm-5354_P100-1998", "CP1258"},
    {28591, "ISO-8859-1", "ISO-8859-1"},
    {1252, "ibm-5348_P100-1997", "CP1252"},
};

// ---- Peers ----

class Icu {
  public:
    explicit Icu(const char* name) {
        UErrorCode status = U_ZERO_ERROR;
        m_converter = ucnv_open(name, &status);
        ucnv_setToUCallBack(m_converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                            &status);
        ucnv_setFromUCallBack(m_converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                              &status);
    }
    ~Icu() { ucnv_close(m_converter); }
    Icu(const Icu&) = delete;
    Icu& operator=(const Icu&) = delete;

    std::int32_t widen(const std::string& bytes, std::u16string& out) const {
        UErrorCode status = U_ZERO_ERROR;
        const auto count =
            ucnv_toUChars(m_converter, out.data(), static_cast<std::int32_t>(out.size()),
                          bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
        return U_SUCCESS(status) ? count : -1;
    }
    std::int32_t narrow(const std::u16string& text, std::string& out) const {
        UErrorCode status = U_ZERO_ERROR;
        const auto count =
            ucnv_fromUChars(m_converter, out.data(), static_cast<std::int32_t>(out.size()),
                            text.data(), static_cast<std::int32_t>(text.size()), &status);
        return U_SUCCESS(status) ? count : -1;
    }

  private:
    UConverter* m_converter = nullptr;
};

class Host {
  public:
    Host(const char* to, const char* from) : m_converter(iconv_open(to, from)) {}
    ~Host() { iconv_close(m_converter); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    template <class From, class To>
    bool convert(const From& from, To& out) const {
        iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(from.data()));
        std::size_t left = from.size() * sizeof from[0];
        auto* to = reinterpret_cast<char*>(out.data());
        std::size_t room = out.size() * sizeof out[0];
        return iconv(m_converter, &in, &left, &to, &room) == 0 &&
               iconv(m_converter, nullptr, nullptr, &to, &room) == 0;
    }

  private:
    iconv_t m_converter;
};

// ---- Texts ----

int widen(UINT page, const std::string& bytes, std::u16string& out) {
    return MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(bytes.size()), out.data(),
                               static_cast<int>(out.size()));
}

int narrow(UINT page, const std::u16string& text, std::string& out) {
    return WideCharToMultiByte(page, 0, text.data(), static_cast<int>(text.size()), out.data(),
                               static_cast<int>(out.size()), nullptr, nullptr);
}

// Characters of the page beyond ASCII that all peers hold: letters, as far as there are some.
std::u16string letters_of(const Page& page) {
    std::u16string result;
    const auto icu = page.icu == nullptr ? nullptr : std::make_unique<Icu>(page.icu);
    const auto host =
        page.host == nullptr ? nullptr : std::make_unique<Host>(page.host, "UTF-16LE");
    for (unsigned int unit = 0x80; unit < 0xD800; ++unit) {
        const std::u16string text(1, static_cast<char16_t>(unit));
        std::string bytes(8, '\0');
        BOOL used = FALSE;
        const auto size = WideCharToMultiByte(page.number, 0, text.data(), 1, bytes.data(), 8,
                                              nullptr, page.number == CP_UTF8 ? nullptr : &used);
        if (size == 0 || size > 2 || used != FALSE || u_isalpha(static_cast<UChar32>(unit)) == 0) {
            continue;
        }
        if (icu && icu->narrow(text, bytes) <= 0) continue;
        if (host && !host->convert(text, bytes)) continue;
        result += text;
    }
    return result;
}

// Words of the language with spaces, every fourth one in ASCII.
std::u16string mixed_text(const std::u16string& letters) {
    std::u16string text;
    std::uint32_t seed = 1;
    const auto next = [&seed](std::size_t limit) {
        seed = seed * 1664525U + 1013904223U;
        return (seed >> 8U) % limit;
    };
    while (text.size() < kSize) {
        if (next(4) == 0) {
            text += std::u16string_view(u"terminal session ").substr(0, 9 + next(9));
        } else {
            for (auto count = 2 + next(7); count > 0; --count) {
                // A language uses a few of its letters most of the time.
                const auto limit = next(4) == 0 ? letters.size() : 1 + letters.size() / 8;
                text.push_back(letters[next(limit)]);
            }
        }
        text.push_back(u' ');
    }
    return text;
}

// What the works of one page share, made when the first of them runs: the first use of a page is
// measured before.
struct Sample {
    std::u16string text;
    std::string bytes;
    std::u16string wide_room;
    std::string room;

    void make(UINT page, std::u16string mixed) {
        text = std::move(mixed);
        room.resize(text.size() * 4);
        bytes = room.substr(0, static_cast<std::size_t>(narrow(page, text, room)));
        wide_room.resize(text.size() + 64);
    }
};
using Make = std::function<void(Sample&)>;

// Runs `work` over and over; a result of 0 or less is a failure.
template <class Work>
void add_work(const std::string& name, const std::shared_ptr<Sample>& sample, const Make& make,
              const Work& work) {
    const auto run = [sample, make, work](benchmark::State& state) {
        if (sample->text.empty()) make(*sample);
        for (auto _ : state) {
            if (work(*sample) <= 0) state.SkipWithError("conversion failed");
            benchmark::ClobberMemory();
        }
        const auto size = static_cast<std::int64_t>(sample->bytes.size());
        state.SetBytesProcessed(state.iterations() * size);
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

void add_page(const Page& page) {
    const auto sample = std::make_shared<Sample>();
    const Make make = [page](Sample& s) { s.make(page.number, mixed_text(letters_of(page))); };
    const auto from = "from " + std::to_string(page.number) + "|";
    const auto to = "to " + std::to_string(page.number) + "|";
    const auto icu = page.icu == nullptr ? nullptr : std::make_shared<Icu>(page.icu);
    add_work(from + "ours", sample, make,
             [page](Sample& s) { return widen(page.number, s.bytes, s.wide_room); });
    if (icu) {
        add_work(from + "ICU", sample, make,
                 [icu](Sample& s) { return icu->widen(s.bytes, s.wide_room); });
    }
    if (page.host != nullptr) {
        const auto host = std::make_shared<Host>("UTF-16LE", page.host);
        add_work(from + "iconv", sample, make,
                 [host](Sample& s) { return host->convert(s.bytes, s.wide_room) ? 1 : 0; });
    }
    add_work(to + "ours", sample, make,
             [page](Sample& s) { return narrow(page.number, s.text, s.room); });
    if (icu) {
        add_work(to + "ICU", sample, make,
                 [icu](Sample& s) { return icu->narrow(s.text, s.room); });
    }
    if (page.host != nullptr) {
        const auto host = std::make_shared<Host>(page.host, "UTF-16LE");
        add_work(to + "iconv", sample, make,
                 [host](Sample& s) { return host->convert(s.text, s.room) ? 1 : 0; });
    }
}

// ---- UTF-8 ----

std::u16string repeated(std::u16string_view part) {
    std::u16string text;
    while (text.size() < kSize) text += part;
    return text;
}

int narrow_in_two(const std::u16string& text, std::string& out) {
    const int size = static_cast<int>(text.size());
    const int needed =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    return WideCharToMultiByte(CP_UTF8, 0, text.data(), size, out.data(), needed, nullptr, nullptr);
}

int widen_in_two(const std::string& bytes, std::u16string& out) {
    const int size = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    return MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, out.data(), needed);
}

std::int32_t narrow_by_icu(const std::u16string& text, std::string& out) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t count = 0;
    u_strToUTF8(out.data(), static_cast<std::int32_t>(out.size()), &count, text.data(),
                static_cast<std::int32_t>(text.size()), &status);
    return count;
}

std::int32_t widen_by_icu(const std::string& bytes, std::u16string& out) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t count = 0;
    u_strFromUTF8(out.data(), static_cast<std::int32_t>(out.size()), &count, bytes.data(),
                  static_cast<std::int32_t>(bytes.size()), &status);
    return count;
}

void add_utf8(const std::string& kind, const std::function<std::u16string()>& text) {
    const auto sample = std::make_shared<Sample>();
    const Make make = [text](Sample& s) { s.make(CP_UTF8, text()); };
    const auto from = "from UTF-8, in two calls: " + kind + "|";
    const auto to = "to UTF-8, in two calls: " + kind + "|";
    add_work(from + "ours", sample, make,
             [](Sample& s) { return widen_in_two(s.bytes, s.wide_room); });
    add_work(from + "ICU, in one", sample, make,
             [](Sample& s) { return widen_by_icu(s.bytes, s.wide_room); });
    add_work(to + "ours", sample, make, [](Sample& s) { return narrow_in_two(s.text, s.room); });
    add_work(to + "ICU, in one", sample, make,
             [](Sample& s) { return narrow_by_icu(s.text, s.room); });
}

void add_utf8_texts() {
    add_utf8("ASCII", [] { return repeated(u"The quick brown fox jumps over the lazy dog. "); });
    add_utf8("Latin", [] {
        return repeated(
            u"Zw\u00F6lf Boxk\u00E4mpfer jagen Viktor quer \u00FCber den gro\u00DFen Deich. ");
    });
    add_utf8("Cyrillic", [] {
        return repeated(
            u"\u0421\u044A\u0435\u0448\u044C \u0436\u0435 \u0435\u0449\u0451 "
            u"\u044D\u0442\u0438\u0445 "
            u"\u043C\u044F\u0433\u043A\u0438\u0445 \u0431\u0443\u043B\u043E\u043A, \u0434\u0430 "
            u"\u0432\u044B\u043F\u0435\u0439 \u0447\u0430\u044E. ");
    });
    add_utf8("CJK", [] {
        return repeated(
            u"\u5929\u5730\u7384\u9EC4\u5B87\u5B99\u6D2A\u8352\u65E5\u6708\u76C8\u6603\u8FB0"
            u"\u5BBF\u5217\u5F20\u3002");
    });
    add_utf8("emoji", [] { return repeated(u"\U0001F600\U0001F680\U0001F4BB\U0001F30D"); });
    add_utf8("mixed", [] {
        std::u16string letters = u"\u00E9\u00FC\u0436\u0448\u03B1\u05D0\u0627\u0E01";
        for (char16_t unit = 0x4E00; unit < 0x4E20; ++unit) letters += unit;
        auto text = mixed_text(letters);
        for (std::size_t i = 50; i + 1 < text.size(); i += 97) {
            text[i] = u'\xD83D';
            text[i + 1] = u'\xDE00';
        }
        return text;
    });
}

// ---- First use ----

// Seconds that `work` takes in a process that has done nothing of the kind yet.
template <class Work>
double timed_in_child(const Work& work) {
    int ends[2];
    if (pipe(ends) != 0) return 0;
    const pid_t child = fork();
    if (child == 0) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        const double seconds = taken.count();
        const auto written = write(ends[1], &seconds, sizeof seconds);
        _exit(written == sizeof seconds ? 0 : 1);
    }
    close(ends[1]);
    double seconds = 0;
    if (read(ends[0], &seconds, sizeof seconds) != sizeof seconds) seconds = 0;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return seconds;
}

template <class Work>
void add_first_use(const std::string& name, const Work& work) {
    const auto run = [work](benchmark::State& state) {
        for (auto _ : state) state.SetIterationTime(timed_in_child(work));
    };
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->UseManualTime()
        ->Iterations(20)
        ->Unit(benchmark::kMicrosecond);
}

void add_first_uses(const Page& page) {
    const auto name = "first use of " + std::to_string(page.number) + "|";
    const std::string bytes = "plain\xE0\xE1";
    add_first_use(name + "ours", [=] {
        std::u16string out(16, u'\0');
        widen(page.number, bytes, out);
    });
    if (page.icu == nullptr) return;
    add_first_use(name + "ICU", [=] {
        std::u16string out(16, u'\0');
        const Icu icu(page.icu);
        icu.widen(bytes, out);
    });
}

// Registered in front of main, first uses first: what follows makes the pages ready.
const bool kIsRegistered = [] {
    for (const auto& page : kPages) add_first_uses(page);
    for (const auto& page : kPages) add_page(page);
    add_utf8_texts();
    return true;
}();

}  // namespace
