// What it costs the watching process to be told of 100,000 new files in a tree, in processor time,
// beside a bare inotify loop that builds the same paths. Another process makes the files.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/threads/folder_monitor.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>

#include "bench/support/profile.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 100;
constexpr int kFilesEach = 1000;
constexpr int kFiles = kFolders * kFilesEach;
constexpr int kRounds = 3;

std::string folder_at(const std::string& root, int index) {
    return root + "/" + std::to_string(index);
}

// In memory, where there is a folder for that: on a disk most of the time goes into making the
// files and taking them away, which isn't what is measured.
std::string watched_folder() {
    std::error_code none;
    const fs::path memory("/dev/shm");
    if (!fs::is_directory(memory, none)) return bench::profile_folder() + "/watched";
    return memory / fs::path(bench::profile_folder()).filename();
}

class Tree {
  public:
    Tree() {
        for (int i = 0; i < kFolders; ++i) fs::create_directories(folder_at(m_root, i));
    }
    ~Tree() {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    [[nodiscard]] const std::string& root() const { return m_root; }

  private:
    std::string m_root = watched_folder();
};

void make_file(const std::string& path) {
    close(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}

class FilesBeingMade {
  public:
    explicit FilesBeingMade(const std::string& root) : m_child(fork()) {
        if (m_child != 0) return;
        for (int i = 0; i < kFiles; ++i) {
            const auto path = folder_at(root, i % kFolders) + "/new" + std::to_string(i);
            make_file(path);
            // Slowly enough for a watcher on a busy machine: the host's queue isn't endless.
            if (i % kFolders == 0) usleep(1000);
        }
        _exit(0);
    }
    ~FilesBeingMade() { waitpid(m_child, nullptr, 0); }
    FilesBeingMade(const FilesBeingMade&) = delete;
    FilesBeingMade& operator=(const FilesBeingMade&) = delete;

  private:
    pid_t m_child;
};

double processor_time() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Counter : public CFolderMonitorListener {
  public:
    void OnFolderChange(DWORD /*action*/, const char16_t* path) override {
        benchmark::DoNotOptimize(path);
        if (++m_told == m_wanted) SetEvent(m_done);
    }
    void OnFolderOverflow() override {
        has_overflown = true;
        SetEvent(m_done);
    }
    // Has files made below a folder that nobody else changes, until one is told of: when a watch
    // begins, nobody says. All that comes from then on counts.
    void begin(const std::string& folder) {
        for (int probe = 0; m_told == 0; ++probe) {
            make_file(folder + "/probe" + std::to_string(probe));
            usleep(10'000);
        }
        usleep(50'000);
        m_wanted = m_told + kFiles;
    }
    void wait() const { WaitForSingleObject(m_done, INFINITE); }

    std::atomic<bool> has_overflown = false;

  private:
    std::atomic<int> m_told = 0;
    std::atomic<int> m_wanted = 0;
    HANDLE m_done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

void monitor(benchmark::State& state) {
    for (auto _ : state) {
        const Tree tree;
        const auto& root = tree.root();
        Counter counter;
        CFolderMonitor watch(&counter);
        watch.AddDirectory(tvutil2::platform_path(root)->c_str(), 1);
        watch.BeginFolderMoniter();
        counter.begin(folder_at(root, kFolders - 1));
        const auto before = processor_time();
        const FilesBeingMade files(root);
        counter.wait();
        state.SetIterationTime(processor_time() - before);
        watch.EndFolderMoniter();
        if (counter.has_overflown) state.SkipWithError("overflow");
    }
}

void bare_loop(benchmark::State& state) {
    for (auto _ : state) {
        const Tree tree;
        const auto& root = tree.root();
        const int queue = inotify_init1(IN_CLOEXEC);
        std::map<int, std::u16string> folders;
        for (int i = 0; i < kFolders; ++i) {
            const auto folder = folder_at(root, i);
            folders[inotify_add_watch(queue, folder.c_str(), IN_CREATE | IN_DELETE | IN_MOVE)] =
                *tvutil2::platform_path(folder) + u"\\";
        }
        const auto before = processor_time();
        const FilesBeingMade files(root);
        alignas(inotify_event) std::array<char, 65536> buffer{};
        for (int told = 0; told < kFiles;) {
            const auto size = read(queue, buffer.data(), buffer.size());
            for (ssize_t at = 0; at < size;) {
                inotify_event event{};
                std::memcpy(&event, buffer.data() + at, sizeof event);
                const auto* const name = buffer.data() + at + sizeof event;
                auto path = folders[event.wd] + *tvutil2::to_utf16(name);
                benchmark::DoNotOptimize(path);
                at += static_cast<ssize_t>(sizeof event + event.len);
                ++told;
            }
        }
        state.SetIterationTime(processor_time() - before);
        close(queue);
    }
}

BENCHMARK(monitor)
    ->Name("folder monitor: 100,000 new files (cpu)|ours")
    ->UseManualTime()
    ->Iterations(kRounds);
BENCHMARK(bare_loop)
    ->Name("folder monitor: 100,000 new files (cpu)|inotify loop")
    ->UseManualTime()
    ->Iterations(kRounds);

}  // namespace
