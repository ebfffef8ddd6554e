// Wildcards against the host's fnmatch(3), on friendly and on hostile patterns.
#include "tvutil2/data/names.h"

#include <benchmark/benchmark.h>
#include <fnmatch.h>

#include <string>

namespace {

struct Case {
    const char* name;
    std::string pattern;
    std::string text;
};

const Case kCases[] = {
    {"wildcard: *.txt, a short name", "*.txt", "session-report.txt"},
    {"wildcard: plain name", "session-report.txt", "session-report.txt"},
    {"wildcard: a*a*a*a*b on 1000 a", "a*a*a*a*b", std::string(1000, 'a')},
    {"wildcard: (a*)x30 b on 1000 a",
     [] {
         std::string pattern;
         for (int i = 0; i < 30; ++i) pattern += "a*";
         return pattern + "b";
     }(),
     std::string(1000, 'a')},
    {"wildcard: *ab* on 100000 a", "*ab*", std::string(100000, 'a')},
};

void ours(benchmark::State& state, const Case& c) {
    const std::u16string pattern(c.pattern.begin(), c.pattern.end());
    const std::u16string text(c.text.begin(), c.text.end());
    for (auto _ : state) benchmark::DoNotOptimize(WildcardMatch(pattern.c_str(), text.c_str()));
}

void peer(benchmark::State& state, const Case& c) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(fnmatch(c.pattern.c_str(), c.text.c_str(), 0));
    }
}

const bool kRegistered = [] {
    for (const auto& c : kCases) {
        const std::string name(c.name);
        benchmark::RegisterBenchmark((name + "|ours").c_str(),
                                     [&c](benchmark::State& state) { ours(state, c); });
        benchmark::RegisterBenchmark((name + "|fnmatch").c_str(),
                                     [&c](benchmark::State& state) { peer(state, c); });
    }
    return true;
}();

}  // namespace
