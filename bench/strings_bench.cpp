// The framework's strings and maps beside the standard library's, Qt's and the C library's.
#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/framework/collections.h"

#include <benchmark/benchmark.h>

#include <QHash>
#include <QString>
#include <algorithm>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

const char16_t kWord[] = u"session";
constexpr int kWordLength = 7;

QString qt(const char16_t* text) {
    return QString::fromUtf16(text);
}

// ---- building text

void append_units_ours(benchmark::State& state) {
    for (auto _ : state) {
        CString text;
        for (int i = 0; i < 10000; ++i) text += u'x';
        benchmark::DoNotOptimize(text.GetString());
    }
}
void append_units_std(benchmark::State& state) {
    for (auto _ : state) {
        std::u16string text;
        for (int i = 0; i < 10000; ++i) text += u'x';
        benchmark::DoNotOptimize(text.data());
    }
}
void append_units_qt(benchmark::State& state) {
    for (auto _ : state) {
        QString text;
        for (int i = 0; i < 10000; ++i) text += QChar(u'x');
        benchmark::DoNotOptimize(text.constData());
    }
}

// As much a character for a text ten times as long.
template <int count>
void append_characters_ours(benchmark::State& state) {
    for (auto _ : state) {
        CAnsiString text;
        for (int i = 0; i < count; ++i) text += 'x';
        benchmark::DoNotOptimize(static_cast<const char*>(text));
    }
}
template <int count>
void append_characters_std(benchmark::State& state) {
    for (auto _ : state) {
        std::string text;
        for (int i = 0; i < count; ++i) text += 'x';
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(append_characters_ours<10000>)->Name("append 10,000 narrow characters|ours");
BENCHMARK(append_characters_std<10000>)->Name("append 10,000 narrow characters|std::string");
BENCHMARK(append_characters_ours<100000>)->Name("append 100,000 narrow characters|ours");
BENCHMARK(append_characters_std<100000>)->Name("append 100,000 narrow characters|std::string");

void append_words_ours(benchmark::State& state) {
    for (auto _ : state) {
        CString text;
        for (int i = 0; i < 2000; ++i) text += kWord;
        benchmark::DoNotOptimize(text.GetString());
    }
}
void append_words_std(benchmark::State& state) {
    for (auto _ : state) {
        std::u16string text;
        for (int i = 0; i < 2000; ++i) text += kWord;
        benchmark::DoNotOptimize(text.data());
    }
}
void append_words_qt(benchmark::State& state) {
    for (auto _ : state) {
        QString text;
        for (int i = 0; i < 2000; ++i) {
            text.append(reinterpret_cast<const QChar*>(kWord), kWordLength);
        }
        benchmark::DoNotOptimize(text.constData());
    }
}

// ---- looking for text

std::u16string haystack() {
    std::u16string text;
    for (int i = 0; i < 2500; ++i) text += u"the host and ";
    return text + u"session";
}

void find_text_ours(benchmark::State& state) {
    const CString text(haystack());
    for (auto _ : state) benchmark::DoNotOptimize(text.Find(kWord));
}
void find_text_std(benchmark::State& state) {
    const auto text = haystack();
    for (auto _ : state) benchmark::DoNotOptimize(text.find(kWord));
}
void find_text_qt(benchmark::State& state) {
    const QString text = QString::fromStdU16String(haystack());
    const QString word = qt(kWord);
    for (auto _ : state) benchmark::DoNotOptimize(text.indexOf(word));
}

void find_unit_ours(benchmark::State& state) {
    const CString text(haystack());
    for (auto _ : state) benchmark::DoNotOptimize(text.Find(u'i'));
}
void find_unit_std(benchmark::State& state) {
    const auto text = haystack();
    for (auto _ : state) benchmark::DoNotOptimize(text.find(u'i'));
}
void find_unit_qt(benchmark::State& state) {
    const QString text = QString::fromStdU16String(haystack());
    for (auto _ : state) benchmark::DoNotOptimize(text.indexOf(QChar(u'i')));
}

void compare_ours(benchmark::State& state) {
    const CString a(haystack());
    const CString b(haystack());
    for (auto _ : state) benchmark::DoNotOptimize(a.Compare(b));
}
void compare_std(benchmark::State& state) {
    const auto a = haystack();
    const auto b = haystack();
    for (auto _ : state) benchmark::DoNotOptimize(a.compare(b.c_str()));
}
void compare_qt(benchmark::State& state) {
    const QString a = QString::fromStdU16String(haystack());
    const QString b = QString::fromStdU16String(haystack());
    for (auto _ : state) benchmark::DoNotOptimize(QString::compare(a, b));
}

void replace_ours(benchmark::State& state) {
    const CString text(haystack());
    for (auto _ : state) {
        CString copy(text);
        benchmark::DoNotOptimize(copy.Replace(u"host", u"machine"));
    }
}
void replace_std(benchmark::State& state) {
    const auto text = haystack();
    const std::u16string with(u"machine");
    for (auto _ : state) {
        // What is usually written; it moves the tail at every hit.
        auto copy = text;
        for (std::size_t at = 0; (at = copy.find(u"host", at)) != std::u16string::npos;) {
            copy.replace(at, 4, with);
            at += with.size();
        }
        benchmark::DoNotOptimize(copy.data());
    }
}
void replace_qt(benchmark::State& state) {
    const QString text = QString::fromStdU16String(haystack());
    const QString what = qt(u"host");
    const QString with = qt(u"machine");
    for (auto _ : state) {
        QString copy(text);
        copy.replace(what, with);
        benchmark::DoNotOptimize(copy.constData());
    }
}

void copy_short_ours(benchmark::State& state) {
    const CString text(u"Pelrin");
    for (auto _ : state) {
        CString copy(text);
        benchmark::DoNotOptimize(copy.GetString());
    }
}
void copy_short_std(benchmark::State& state) {
    const std::u16string text(u"Pelrin");
    for (auto _ : state) {
        std::u16string copy(text);
        benchmark::DoNotOptimize(copy.data());
    }
}
void copy_short_qt(benchmark::State& state) {
    const QString text = qt(u"Pelrin");
    for (auto _ : state) {
        QString copy(text);
        benchmark::DoNotOptimize(copy.constData());
    }
}

// ---- formatting: a line of the log, and numbers

void format_line_ours(benchmark::State& state) {
    const CString message(u"connection to host closed");
    CString line;
    for (auto _ : state) {
        line.Format(u"[%02d:%02d:%02d.%03d] %s\r\n", 12, 34, 56, 789, message);
        benchmark::DoNotOptimize(line.GetString());
    }
}
void format_line_snprintf(benchmark::State& state) {
    char line[256];
    const char* message = "connection to host closed";
    for (auto _ : state) {
        std::snprintf(line, sizeof line, "[%02d:%02d:%02d.%03d] %s\r\n", 12, 34, 56, 789, message);
        benchmark::DoNotOptimize(line);
    }
}
void format_line_swprintf(benchmark::State& state) {
    wchar_t line[256];
    const wchar_t* message = L"connection to host closed";
    for (auto _ : state) {
        std::swprintf(line, 256, L"[%02d:%02d:%02d.%03d] %ls\r\n", 12, 34, 56, 789, message);
        benchmark::DoNotOptimize(line);
    }
}
void format_line_qt(benchmark::State& state) {
    const QString message = qt(u"connection to host closed");
    for (auto _ : state) {
        const auto line = QString::asprintf("[%02d:%02d:%02d.%03d] %ls\r\n", 12, 34, 56, 789,
                                            reinterpret_cast<const wchar_t*>(message.utf16()));
        benchmark::DoNotOptimize(line.constData());
    }
}

void format_real_ours(benchmark::State& state) {
    CString text;
    for (auto _ : state) {
        text.Format(u"%.2f %g %8.3e", 12345.678, 0.1, 6.02e23);
        benchmark::DoNotOptimize(text.GetString());
    }
}
void format_real_snprintf(benchmark::State& state) {
    char text[128];
    for (auto _ : state) {
        std::snprintf(text, sizeof text, "%.2f %g %8.3e", 12345.678, 0.1, 6.02e23);
        benchmark::DoNotOptimize(text);
    }
}

// ---- maps

constexpr unsigned kKeys = 10000;

std::vector<CString> keys(const char16_t* format) {
    std::vector<CString> out(kKeys);
    for (unsigned i = 0; i < kKeys; ++i) out[i].Format(format, i * 2654435761U, i);
    return out;
}

// Our key type and theirs, look-ups by plain pointer as settings do them.
void map_hit_ours(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    CMapStringToPtr map(10);
    for (const auto& key : all) map.SetAt(key, nullptr);
    std::size_t i = 0;
    void* value = nullptr;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.Lookup(all[i], value));
        i = (i + 7919) % kKeys;
    }
}
void map_hit_std(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    std::unordered_map<std::u16string, void*> map;
    for (const auto& key : all) map.emplace(key.GetString(), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(all[i].GetString()));
        i = (i + 7919) % kKeys;
    }
}
// The standard map with the same freedom: no string is built for a look-up.
struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const {
        return std::hash<std::u16string_view>()(text);
    }
};
using ViewMap = std::unordered_map<std::u16string, void*, ViewHash, std::equal_to<>>;

void map_hit_view(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    ViewMap map;
    for (const auto& key : all) map.emplace(key.GetString(), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(std::u16string_view(all[i].GetString())));
        i = (i + 7919) % kKeys;
    }
}
void map_hit_qt(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    QHash<QString, void*> map;
    for (const auto& key : all) map.insert(qt(key), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.constFind(qt(all[i])));
        i = (i + 7919) % kKeys;
    }
}

void map_miss_ours(benchmark::State& state) {
    const auto others = keys(u"Sessions\\%08X-%u");
    CMapStringToPtr map(10);
    for (const auto& key : keys(u"Sessions\\%08x\\%u")) map.SetAt(key, nullptr);
    std::size_t i = 0;
    void* value = nullptr;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.Lookup(others[i], value));
        i = (i + 7919) % kKeys;
    }
}
void map_miss_std(benchmark::State& state) {
    const auto others = keys(u"Sessions\\%08X-%u");
    std::unordered_map<std::u16string, void*> map;
    for (const auto& key : keys(u"Sessions\\%08x\\%u")) map.emplace(key.GetString(), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(others[i].GetString()));
        i = (i + 7919) % kKeys;
    }
}
void map_miss_view(benchmark::State& state) {
    const auto others = keys(u"Sessions\\%08X-%u");
    ViewMap map;
    for (const auto& key : keys(u"Sessions\\%08x\\%u")) map.emplace(key.GetString(), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(std::u16string_view(others[i].GetString())));
        i = (i + 7919) % kKeys;
    }
}
void map_miss_qt(benchmark::State& state) {
    const auto others = keys(u"Sessions\\%08X-%u");
    QHash<QString, void*> map;
    for (const auto& key : keys(u"Sessions\\%08x\\%u")) map.insert(qt(key), nullptr);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.constFind(qt(others[i])));
        i = (i + 7919) % kKeys;
    }
}

void map_insert_ours(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    for (auto _ : state) {
        CMapStringToPtr map(10);
        for (const auto& key : all) map[key] = nullptr;
        benchmark::DoNotOptimize(map.GetCount());
    }
}
void map_insert_std(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    for (auto _ : state) {
        std::unordered_map<std::u16string, void*> map;
        for (const auto& key : all) map[key.GetString()] = nullptr;
        benchmark::DoNotOptimize(map.size());
    }
}
void map_insert_qt(benchmark::State& state) {
    const auto all = keys(u"Sessions\\%08x\\%u");
    for (auto _ : state) {
        QHash<QString, void*> map;
        for (const auto& key : all) map[qt(key)] = nullptr;
        benchmark::DoNotOptimize(map.size());
    }
}

BENCHMARK(append_units_ours)->Name("append 10000 units|ours");
BENCHMARK(append_units_std)->Name("append 10000 units|std::u16string");
BENCHMARK(append_units_qt)->Name("append 10000 units|QString");
BENCHMARK(append_words_ours)->Name("append 2000 words|ours");
BENCHMARK(append_words_std)->Name("append 2000 words|std::u16string");
BENCHMARK(append_words_qt)->Name("append 2000 words|QString");
BENCHMARK(find_text_ours)->Name("find text in 32000 units|ours");
BENCHMARK(find_text_std)->Name("find text in 32000 units|std::u16string");
BENCHMARK(find_text_qt)->Name("find text in 32000 units|QString");
BENCHMARK(find_unit_ours)->Name("find unit in 32000 units|ours");
BENCHMARK(find_unit_std)->Name("find unit in 32000 units|std::u16string");
BENCHMARK(find_unit_qt)->Name("find unit in 32000 units|QString");
BENCHMARK(compare_ours)->Name("compare 32000 units|ours");
BENCHMARK(compare_std)->Name("compare 32000 units|std::u16string");
BENCHMARK(compare_qt)->Name("compare 32000 units|QString");
BENCHMARK(replace_ours)->Name("replace 2500 words|ours");
BENCHMARK(replace_std)->Name("replace 2500 words|std::u16string");
BENCHMARK(replace_qt)->Name("replace 2500 words|QString");
BENCHMARK(copy_short_ours)->Name("copy short text|ours");
BENCHMARK(copy_short_std)->Name("copy short text|std::u16string");
BENCHMARK(copy_short_qt)->Name("copy short text|QString");
BENCHMARK(format_line_ours)->Name("format a log line|ours");
BENCHMARK(format_line_snprintf)->Name("format a log line|snprintf");
BENCHMARK(format_line_swprintf)->Name("format a log line|swprintf");
BENCHMARK(format_line_qt)->Name("format a log line|QString::asprintf");
BENCHMARK(format_real_ours)->Name("format three reals|ours");
BENCHMARK(format_real_snprintf)->Name("format three reals|snprintf");
BENCHMARK(map_hit_ours)->Name("map look-up, hit|ours");
BENCHMARK(map_hit_std)->Name("map look-up, hit|std::unordered_map");
BENCHMARK(map_hit_view)->Name("map look-up, hit|std::unordered_map, transparent");
BENCHMARK(map_hit_qt)->Name("map look-up, hit|QHash");
BENCHMARK(map_miss_ours)->Name("map look-up, miss|ours");
BENCHMARK(map_miss_std)->Name("map look-up, miss|std::unordered_map");
BENCHMARK(map_miss_view)->Name("map look-up, miss|std::unordered_map, transparent");
BENCHMARK(map_miss_qt)->Name("map look-up, miss|QHash");
BENCHMARK(map_insert_ours)->Name("map, 10000 inserts|ours");
BENCHMARK(map_insert_std)->Name("map, 10000 inserts|std::unordered_map");
BENCHMARK(map_insert_qt)->Name("map, 10000 inserts|QHash");

}  // namespace
