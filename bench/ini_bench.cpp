// INI documents beside the readers and writers that a program would otherwise take.
//
// Reading ends with all entries in memory; writing ends with the file closed. Each peer gets the
// same file, in UTF-8 with text that isn't ASCII. UTF-16 is read by none of them.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/settings/ini_file.h"

#include <INIReader.h>
#include <benchmark/benchmark.h>
#include <glib.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace {

// Keys, in sections of 50.
constexpr int kFew = 20;
constexpr int k1Mb = 25'000;
constexpr int k50Mb = 1'250'000;

struct File {
    std::string host;
    std::u16string path;
};

File file_named(const std::string& name) {
    const auto host = "/tmp/ini_bench." + std::to_string(getpid()) + '.' + name;
    return {host, *tvutil2::platform_path(host)};
}

template <int keys>
const File& utf8_file() {
    static const File file = [] {
        auto made = file_named(std::to_string(keys) + ".utf8");
        std::ofstream out(made.host, std::ios::binary);
        for (int i = 0; i < keys; ++i) {
            if (i % 50 == 0) out << "[section" << i / 50 << "]\n";
            out << "setting" << i << "=a value \xC3\xA4 of some length " << i << '\n';
        }
        return made;
    }();
    return file;
}

template <int keys>
const File& utf16_file() {
    static const File file = [] {
        auto made = file_named(std::to_string(keys) + ".utf16");
        CIniFile document(utf8_file<keys>().path.c_str());
        document.Write(made.path.c_str(), 1, 0);
        return made;
    }();
    return file;
}

void read_document(benchmark::State& state, const File& file) {
    for (auto _ : state) {
        CIniFile document;
        if (document.Read(file.path.c_str()) == 0) state.SkipWithError("can't be read");
        benchmark::DoNotOptimize(document.sections.GetCount());
    }
}

template <int keys>
void read_ours(benchmark::State& state) {
    read_document(state, utf8_file<keys>());
}

template <int keys>
void read_ours_utf16(benchmark::State& state) {
    read_document(state, utf16_file<keys>());
}

template <int keys>
void read_inih(benchmark::State& state) {
    const auto& file = utf8_file<keys>();
    for (auto _ : state) {
        const INIReader reader(file.host);
        if (reader.ParseError() != 0) state.SkipWithError("can't be read");
    }
}

template <int keys>
void read_glib(benchmark::State& state) {
    const auto& file = utf8_file<keys>();
    for (auto _ : state) {
        GKeyFile* const document = g_key_file_new();
        if (!g_key_file_load_from_file(document, file.host.c_str(), G_KEY_FILE_NONE, nullptr)) {
            state.SkipWithError("can't be read");
        }
        g_key_file_free(document);
    }
}

template <int keys>
void write_ours(benchmark::State& state) {
    CIniFile document(utf8_file<keys>().path.c_str());
    const auto file = file_named("out");
    for (auto _ : state) document.Write(file.path.c_str(), 1, 0);
    unlink(file.host.c_str());
}

template <int keys>
void write_ours_utf8(benchmark::State& state) {
    CIniFile document(utf8_file<keys>().path.c_str());
    const auto file = file_named("out");
    for (auto _ : state) document.Write(file.path.c_str(), 0, 0);
    unlink(file.host.c_str());
}

template <int keys>
void write_glib(benchmark::State& state) {
    const auto file = file_named("out");
    GKeyFile* const document = g_key_file_new();
    g_key_file_load_from_file(document, utf8_file<keys>().host.c_str(), G_KEY_FILE_NONE, nullptr);
    for (auto _ : state) {
        gsize size = 0;
        gchar* const text = g_key_file_to_data(document, &size, nullptr);
        std::ofstream(file.host, std::ios::binary).write(text, static_cast<std::streamsize>(size));
        g_free(text);
    }
    g_key_file_free(document);
    unlink(file.host.c_str());
}

BENCHMARK(read_ours<kFew>)->Name("ini read 20 keys|ours");
BENCHMARK(read_ours_utf16<kFew>)->Name("ini read 20 keys|ours, UTF-16");
BENCHMARK(read_inih<kFew>)->Name("ini read 20 keys|inih");
BENCHMARK(read_glib<kFew>)->Name("ini read 20 keys|GLib");
BENCHMARK(read_ours<k1Mb>)->Name("ini read 1 MB|ours");
BENCHMARK(read_ours_utf16<k1Mb>)->Name("ini read 1 MB|ours, UTF-16");
BENCHMARK(read_inih<k1Mb>)->Name("ini read 1 MB|inih");
BENCHMARK(read_glib<k1Mb>)->Name("ini read 1 MB|GLib");
BENCHMARK(read_ours<k50Mb>)->Name("ini read 50 MB|ours")->Iterations(2);
BENCHMARK(read_ours_utf16<k50Mb>)->Name("ini read 50 MB|ours, UTF-16")->Iterations(2);
BENCHMARK(read_inih<k50Mb>)->Name("ini read 50 MB|inih")->Iterations(2);
BENCHMARK(read_glib<k50Mb>)->Name("ini read 50 MB|GLib")->Iterations(2);
BENCHMARK(write_ours<kFew>)->Name("ini write 20 keys|ours");
BENCHMARK(write_ours_utf8<kFew>)->Name("ini write 20 keys|ours, UTF-8");
BENCHMARK(write_glib<kFew>)->Name("ini write 20 keys|GLib");
BENCHMARK(write_ours<k1Mb>)->Name("ini write 1 MB|ours");
BENCHMARK(write_ours_utf8<k1Mb>)->Name("ini write 1 MB|ours, UTF-8");
BENCHMARK(write_glib<k1Mb>)->Name("ini write 1 MB|GLib");
BENCHMARK(write_ours<k50Mb>)->Name("ini write 50 MB|ours")->Iterations(2);
BENCHMARK(write_ours_utf8<k50Mb>)->Name("ini write 50 MB|ours, UTF-8")->Iterations(2);
BENCHMARK(write_glib<k50Mb>)->Name("ini write 50 MB|GLib")->Iterations(2);

}  // namespace
