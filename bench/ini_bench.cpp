// INI documents beside the readers and writers that a program would otherwise take.
//
// Reading begins with a closed file and ends with all entries in memory and one of them looked up;
// writing begins with a loaded document and ends with the file closed. All get the same file, in
// UTF-8 with text that isn't ASCII; UTF-16, which only ours reads, holds the same entries. Qt takes
// a section apart when it is first used, so it is asked for a key of each. The large file is read
// in a process of its own each time: some keep for the next document what the last one took, and
// others give it back. What a loaded document takes is what the process grows by, as a multiple of
// the UTF-8 file.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/profile/profile.h"
#include "tvutil2/settings/ini_file.h"

#define SI_CONVERT_ICU  // as the package was built
#include <INIReader.h>
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <glib.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSettings>
#include <chrono>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include "bench/support/profile.h"

namespace {

constexpr int kFew = 20;
constexpr int k1Mb = 25'000;
constexpr int k50Mb = 1'250'000;
constexpr int kInSection = 50;

struct File {
    explicit File(const std::string& name)
        : host(bench::profile_folder() + '/' + name), path(*tvutil2::platform_path(host)) {}
    std::string host;
    std::u16string path;
};

template <int keys>
const File& utf8_file() {
    static const File file = [] {
        const File made(std::to_string(keys) + ".utf8");
        std::ofstream out(made.host, std::ios::binary);
        for (int i = 0; i < keys; ++i) {
            if (i % kInSection == 0) out << "[section" << i / kInSection << "]\n";
            out << "setting" << i << "=a value \xC3\xA4 of some length " << i << '\n';
        }
        return made;
    }();
    return file;
}

template <int keys>
const File& utf16_file() {
    static const File file = [] {
        File made(std::to_string(keys) + ".utf16");
        CIniFile document(utf8_file<keys>().path.c_str());
        document.Write(made.path.c_str(), 1, 0);
        return made;
    }();
    return file;
}

// Each document can be loaded, asked for the length of the first value, and written.
class Ours {
  public:
    bool load(const File& file, int /*keys*/) { return m_document.Read(file.path.c_str()) != 0; }
    std::size_t look_up() {
        return m_document.GetValue(u"section0", u"setting7", u"").View().size();
    }
    void write(const File& file) { m_document.Write(file.path.c_str(), 1, 0); }
    void write_utf8(const File& file) { m_document.Write(file.path.c_str(), 0, 0); }

  private:
    CIniFile m_document;
};

class SimpleIni {
  public:
    bool load(const File& file, int /*keys*/) {
        m_document.SetUnicode(true);
        return m_document.LoadFile(file.host.c_str()) == SI_OK;
    }
    std::size_t look_up() { return std::strlen(m_document.GetValue("section0", "setting7", "")); }
    void write(const File& file) { m_document.SaveFile(file.host.c_str(), false); }

  private:
    CSimpleIniCaseA m_document;
};

class Inih {
  public:
    bool load(const File& file, int /*keys*/) {
        m_document = std::make_unique<INIReader>(file.host);
        return m_document->ParseError() == 0;
    }
    std::size_t look_up() { return m_document->Get("section0", "setting7", "").size(); }

  private:
    std::unique_ptr<INIReader> m_document;
};

class Glib {
  public:
    Glib() = default;
    ~Glib() { g_key_file_free(m_document); }
    Glib(const Glib&) = delete;
    Glib& operator=(const Glib&) = delete;
    bool load(const File& file, int /*keys*/) {
        return g_key_file_load_from_file(m_document, file.host.c_str(), G_KEY_FILE_NONE, nullptr);
    }
    std::size_t look_up() {
        gchar* const value = g_key_file_get_value(m_document, "section0", "setting7", nullptr);
        const std::size_t size = value == nullptr ? 0 : std::strlen(value);
        g_free(value);
        return size;
    }
    void write(const File& file) {
        gsize size = 0;
        gchar* const text = g_key_file_to_data(m_document, &size, nullptr);
        std::ofstream(file.host, std::ios::binary).write(text, static_cast<std::streamsize>(size));
        g_free(text);
    }

  private:
    GKeyFile* m_document = g_key_file_new();
};

class Qt {
  public:
    bool load(const File& file, int keys) {
        // It hands out again what it read before, as long as the file's time is the same.
        utimensat(AT_FDCWD, file.host.c_str(), nullptr, 0);
        m_document =
            std::make_unique<QSettings>(QString::fromStdString(file.host), QSettings::IniFormat);
        m_document->setIniCodec("UTF-8");
        for (int i = 0; i < keys; i += kInSection) {
            const auto section = QString::number(i / kInSection);
            if (!m_document->contains("section" + section + "/setting" + QString::number(i))) {
                return false;
            }
        }
        return m_document->status() == QSettings::NoError;
    }
    std::size_t look_up() {
        return static_cast<std::size_t>(m_document->value("section0/setting7").toString().size());
    }
    // It writes nothing unless something changed, and then everything.
    void write(const File& /*file*/) {
        m_document->setValue("section0/setting7", ++m_change);
        m_document->sync();
    }

  private:
    std::unique_ptr<QSettings> m_document;
    int m_change = 0;
};

long long size_of(const File& file) {
    struct stat info {};
    return stat(file.host.c_str(), &info) == 0 ? info.st_size : 0;
}

// Without the pages of programs and libraries, of which a first load brings in some.
double resident_bytes() {
    long long size = 0;
    long long resident = 0;
    long long of_files = 0;
    std::ifstream("/proc/self/statm") >> size >> resident >> of_files;
    return static_cast<double>((resident - of_files) * sysconf(_SC_PAGESIZE));
}

// What `measure` gives in a process of its own, where nothing fills room that was there before.
template <class Measure>
double in_child(Measure measure) {
    int ends[2];
    if (pipe(ends) != 0) return 0;
    malloc_trim(0);
    const pid_t child = fork();
    if (child == 0) {
        const double result = measure();
        _exit(::write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    close(ends[1]);
    double result = 0;
    if (::read(ends[0], &result, sizeof result) != sizeof result) result = 0;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return result;
}

template <class Document>
bool reads(Document& document, const File& file, int keys) {
    return document.load(file, keys) && document.look_up() != 0;
}

// As in a program that loads one document.
template <class Document, int keys>
double seconds_of_first_read(const File& file) {
    return in_child([&file]() -> double {
        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        Document document;
        if (!reads(document, file, keys)) return 0;
        return std::chrono::duration<double>(Clock::now() - start).count();
    });
}

template <class Document, int keys>
void read_file(benchmark::State& state, const File& file) {
    for (auto _ : state) {
        if constexpr (keys == k50Mb) {
            const auto seconds = seconds_of_first_read<Document, keys>(file);
            if (seconds == 0) state.SkipWithError("can't be read");
            state.SetIterationTime(seconds);
        } else {
            Document document;
            if (!reads(document, file, keys)) state.SkipWithError("can't be read");
        }
    }
}
template <class Document, int keys>
void read(benchmark::State& state) {
    read_file<Document, keys>(state, utf8_file<keys>());
}
template <int keys>
void read_utf16(benchmark::State& state) {
    read_file<Ours, keys>(state, utf16_file<keys>());
}

// Each writes a file of its own: Qt's is also the one that it was loaded from.
template <class Document, int keys, void (Document::*writer)(const File&)>
void write(benchmark::State& state) {
    const File out("out");
    std::ofstream(out.host, std::ios::binary) << std::ifstream(utf8_file<keys>().host).rdbuf();
    Document document;
    document.load(out, keys);
    (document.*writer)(out);
    for (auto _ : state) (document.*writer)(out);
    unlink(out.host.c_str());
}

template <class Document, int keys>
void memory(benchmark::State& state) {
    const auto& file = utf8_file<keys>();
    for (auto _ : state) {
        const auto grown = in_child([&file] {
            const auto before = resident_bytes();
            Document document;
            const bool is_loaded = document.load(file, keys);
            malloc_trim(0);
            return is_loaded ? resident_bytes() - before : 0;
        });
        state.counters["amount"] = grown / static_cast<double>(size_of(file));
    }
}

template <int keys>
void register_reads(const std::string& size, benchmark::IterationCount iterations) {
    const auto add = [&](const char* who, void (*run)(benchmark::State&)) {
        const auto name = "ini read " + size + '|' + who;
        auto* const added = benchmark::RegisterBenchmark(name.c_str(), run);
        if (iterations != 0) added->Iterations(iterations)->UseManualTime();
    };
    add("ours", read<Ours, keys>);
    add("ours, UTF-16", read_utf16<keys>);
    add("SimpleIni", read<SimpleIni, keys>);
    add("inih", read<Inih, keys>);
    add("GLib", read<Glib, keys>);
    add("Qt", read<Qt, keys>);
}

template <int keys>
void register_writes(const std::string& size, benchmark::IterationCount iterations) {
    const auto add = [&](const char* who, void (*run)(benchmark::State&)) {
        const auto name = "ini write " + size + '|' + who;
        auto* const added = benchmark::RegisterBenchmark(name.c_str(), run);
        if (iterations != 0) added->Iterations(iterations);
    };
    add("ours", write<Ours, keys, &Ours::write>);
    add("ours, UTF-8", write<Ours, keys, &Ours::write_utf8>);
    add("SimpleIni", write<SimpleIni, keys, &SimpleIni::write>);
    add("GLib", write<Glib, keys, &Glib::write>);
    add("Qt", write<Qt, keys, &Qt::write>);
}

template <int keys>
void register_memory(const std::string& size) {
    const auto add = [&](const char* who, void (*run)(benchmark::State&)) {
        const auto name = "ini memory " + size + '|' + who;
        benchmark::RegisterBenchmark(name.c_str(), run)->Iterations(1);
    };
    add("ours", memory<Ours, keys>);
    add("SimpleIni", memory<SimpleIni, keys>);
    add("inih", memory<Inih, keys>);
    add("GLib", memory<Glib, keys>);
    add("Qt", memory<Qt, keys>);
}

// A profile file that stays as it was beside a document that is loaded for each value.
void profile_value(benchmark::State& state) {
    const auto& file = utf8_file<k1Mb>();
    char16_t value[100];
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            GetPrivateProfileStringW(u"section0", u"setting7", u"", value, 100, file.path.c_str()));
    }
}
void stat_file(benchmark::State& state) {
    const auto& file = utf8_file<k1Mb>();
    for (auto _ : state) benchmark::DoNotOptimize(size_of(file));
}
const bool registered = [] {
    register_memory<k1Mb>("1 MB, times the file");
    register_memory<k50Mb>("50 MB, times the file");
    register_reads<kFew>("20 keys", 0);
    register_reads<k1Mb>("1 MB", 0);
    register_reads<k50Mb>("50 MB", 3);
    register_writes<kFew>("20 keys", 0);
    register_writes<k1Mb>("1 MB", 0);
    register_writes<k50Mb>("50 MB", 3);
    benchmark::RegisterBenchmark("profile value, 1 MB file|ours", profile_value);
    benchmark::RegisterBenchmark("profile value, 1 MB file|one stat call", stat_file);
    return true;
}();

}  // namespace
