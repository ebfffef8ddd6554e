// Code pages beside ICU's converters and the C library's iconv: 1 MB of mixed text both ways, in
// one call each; UTF-8 with the size asked first, as callers do; and the first use of a page.
#include "tvutil2/platform/codepage/codepage.h"

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unicode/ustring.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/page_peers.h"

namespace {

using bench::Host;
using bench::Icu;
using bench::kPages;
using bench::kSize;
using bench::letters_of;
using bench::mixed_text;
using bench::Page;

int widen(UINT page, const std::string& bytes, std::u16string& out) {
    return MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(bytes.size()), out.data(),
                               static_cast<int>(out.size()));
}

int narrow(UINT page, const std::u16string& text, std::string& out) {
    return WideCharToMultiByte(page, 0, text.data(), static_cast<int>(text.size()), out.data(),
                               static_cast<int>(out.size()), nullptr, nullptr);
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

std::u16string repeated(std::u16string_view part) {
    std::u16string text;
    while (text.size() < kSize) text += part;
    return text;
}

void add_page_text(const Page& page, const std::string& kind,
                   const std::function<std::u16string()>& text) {
    const auto sample = std::make_shared<Sample>();
    const Make make = [page, text](Sample& s) { s.make(page.number, text()); };
    const auto from = "from " + std::to_string(page.number) + kind + "|";
    const auto to = "to " + std::to_string(page.number) + kind + "|";
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

void add_page(const Page& page) {
    add_page_text(page, "", [page] { return mixed_text(letters_of(page)); });
}

// Sequences of four bytes, in words and by themselves.
void add_long_sequences(const Page& page) {
    const auto letters = [page] { return letters_of(page, 4); };
    const auto without_blanks = [](std::u16string text) {
        std::erase_if(text, [](char16_t unit) { return unit < 0x80; });
        return text;
    };
    add_page_text(page, ", four bytes, words", [letters] { return mixed_text(letters()); });
    add_page_text(page, ", four bytes", [=] { return without_blanks(mixed_text(letters())); });
    add_page_text(page, ", four bytes and two",
                  [=] { return mixed_text(letters() + letters_of(page)); });
    add_page_text(page, ", emoji", [] { return repeated(u"\U0001F600\U0001F680\U0001F4BB"); });
}

// ---- UTF-8 ----

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
    for (const auto& page : kPages) {
        add_page(page);
        if (page.number == 54936) add_long_sequences(page);
    }
    add_utf8_texts();
    return true;
}();

}  // namespace
