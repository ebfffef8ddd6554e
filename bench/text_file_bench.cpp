// Text files of 100 MB, line by line, beside the streams that a program would otherwise take.
//
// All read a file to its end into 16-bit lines, and write a file from 16-bit lines of 80 units. The
// text is Latin, a non-ASCII letter in each line. iconv works on a line at a time where lines can
// be told in bytes, else on blocks. std::getline does no more than split UTF-8 text there.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/text/text_file.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unistd.h>

#include <QFile>
#include <QTextStream>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using Base = CTextFileBase;

constexpr std::size_t kFileSize = 100'000'000;
constexpr const char* kNames[] = {"windows-1252", "UTF-16BE", "UTF-16LE", "UTF-8"};

const std::u16string& line_text() {
    static const std::u16string line =
        u"2026-11-24 10:15:30 caf\u00E9: a line of a log as it is, of some eighty units all told";
    return line;
}

std::size_t line_count(int encoding) {
    const bool is_wide = encoding == Base::TE_UTF16_BE || encoding == Base::TE_UTF16_LE;
    return kFileSize / ((line_text().size() + 2) * (is_wide ? 2 : 1));
}

std::string host_path(const std::string& name) {
    return "/tmp/text_file_bench." + std::to_string(getpid()) + '.' + name;
}

void write_file(const std::string& host, int encoding) {
    CTextFileWrite file(tvutil2::platform_path(host)->c_str(),
                        static_cast<Base::TEXTENCODING>(encoding));
    file.SetCodePage(1252);
    for (auto i = line_count(encoding); i != 0; --i) {
        file.Write(line_text());
        file.WriteEndl();
    }
    file.Close();
}

// The file of an encoding, removed at the end.
const std::string& sample(int encoding) {
    struct Sample {
        ~Sample() {
            if (!host.empty()) unlink(host.c_str());
        }
        std::string host;
    };
    static Sample samples[4];
    auto& sample = samples[encoding];
    if (sample.host.empty()) {
        sample.host = host_path("in" + std::to_string(encoding));
        write_file(sample.host, encoding);
    }
    return sample.host;
}

template <int encoding>
void read_ours(benchmark::State& state) {
    const auto path = *tvutil2::platform_path(sample(encoding));
    for (auto _ : state) {
        CTextFileRead file(path.c_str());
        file.SetCodePage(1252);
        std::size_t lines = 0;
        for (std::u16string line; file.ReadLine(line); ++lines) benchmark::DoNotOptimize(line);
        if (lines != line_count(encoding) + 1) state.SkipWithError("lines are missing");
    }
}

template <int encoding>
void read_qt(benchmark::State& state) {
    for (auto _ : state) {
        QFile file(QString::fromStdString(sample(encoding)));
        file.open(QIODevice::ReadOnly);
        QTextStream stream(&file);
        stream.setCodec(kNames[encoding]);
        std::size_t lines = 0;
        for (QString line; stream.readLineInto(&line); ++lines) benchmark::DoNotOptimize(line);
        if (lines != line_count(encoding)) state.SkipWithError("lines are missing");
    }
}

// Converts all of `text` to `out`, which has the room.
std::size_t convert(iconv_t converter, const char* text, std::size_t size, char* out,
                    std::size_t room) {
    auto* from = const_cast<char*>(text);
    const auto whole = room;
    iconv(converter, &from, &size, &out, &room);
    return whole - room;
}

template <int encoding>
void read_getline_and_iconv(benchmark::State& state) {
    const bool is_wide = encoding == Base::TE_UTF16_BE || encoding == Base::TE_UTF16_LE;
    iconv_t const converter = iconv_open(is_wide ? "UTF-8" : "UTF-16LE", kNames[encoding]);
    iconv_t const to_wide = iconv_open("UTF-16LE", "UTF-8");
    for (auto _ : state) {
        std::ifstream file(sample(encoding), std::ios::binary);
        std::istringstream converted;
        if (is_wide) {
            std::string text;
            std::string block(65536, '\0');
            std::string out(block.size() * 2, '\0');
            while (file.read(block.data(), 65536), file.gcount() > 0) {
                text.append(out.data(), convert(converter, block.data(),
                                                static_cast<std::size_t>(file.gcount()), out.data(),
                                                out.size()));
            }
            converted.str(std::move(text));
        }
        std::istream& source = is_wide ? static_cast<std::istream&>(converted) : file;
        std::u16string wide;
        for (std::string line; std::getline(source, line);) {
            wide.resize(line.size());
            wide.resize(convert(is_wide ? to_wide : converter, line.data(), line.size(),
                                reinterpret_cast<char*>(wide.data()), wide.size() * 2) /
                        2);
            benchmark::DoNotOptimize(wide);
        }
    }
    iconv_close(converter);
    iconv_close(to_wide);
}

template <int encoding>
void write_ours(benchmark::State& state) {
    const auto host = host_path("out");
    for (auto _ : state) write_file(host, encoding);
    unlink(host.c_str());
}

template <int encoding>
void write_qt(benchmark::State& state) {
    const auto host = host_path("out");
    const auto line = QString::fromStdU16String(line_text());
    for (auto _ : state) {
        QFile file(QString::fromStdString(host));
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        QTextStream stream(&file);
        stream.setCodec(kNames[encoding]);
        stream.setGenerateByteOrderMark(encoding != Base::TE_ANSI);
        for (auto i = line_count(encoding); i != 0; --i) stream << line << "\r\n";
    }
    unlink(host.c_str());
}

template <int encoding>
void write_stream_and_iconv(benchmark::State& state) {
    const auto host = host_path("out");
    iconv_t const converter = iconv_open(kNames[encoding], "UTF-16LE");
    const auto line = line_text() + u"\r\n";
    for (auto _ : state) {
        std::ofstream file(host, std::ios::binary);
        char out[1024];
        for (auto i = line_count(encoding); i != 0; --i) {
            const auto size = convert(converter, reinterpret_cast<const char*>(line.data()),
                                      line.size() * 2, out, sizeof out);
            file.write(out, static_cast<std::streamsize>(size));
        }
    }
    iconv_close(converter);
    unlink(host.c_str());
}

template <int encoding>
void add(const std::string& name) {
    const auto enter = [](const std::string& full_name, void (*run)(benchmark::State&)) {
        benchmark::RegisterBenchmark(full_name.c_str(), run)
            ->Iterations(2)
            ->Unit(benchmark::kMillisecond);
    };
    const auto read = "text read 100 MB " + name;
    enter(read + "|ours", read_ours<encoding>);
    enter(read + "|QTextStream", read_qt<encoding>);
    enter(read + "|std::getline and iconv", read_getline_and_iconv<encoding>);
    const auto write = "text write 100 MB " + name;
    enter(write + "|ours", write_ours<encoding>);
    enter(write + "|QTextStream", write_qt<encoding>);
    enter(write + "|std::ofstream and iconv", write_stream_and_iconv<encoding>);
}

const bool g_added = [] {
    add<Base::TE_ANSI>("1252");
    add<Base::TE_UTF8>("UTF-8");
    add<Base::TE_UTF16_LE>("UTF-16LE");
    add<Base::TE_UTF16_BE>("UTF-16BE");
    return true;
}();

}  // namespace
