// What the library adds to the start of a program, and to one that hands a text to the first
// instance: programs started and waited for in turns, so that all meet the same machine, and their
// medians. Then what the library's program has mapped.
#include "tvutil2/threads/single_instance.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "bench/support/profile.h"

namespace {

constexpr int kRuns = 400;
constexpr int kWindowRuns = 50;
constexpr double kMostAddedMilliseconds = 10;
constexpr double kMostForAHandOver = 3;

double start_and_wait(const std::string& program) {
    char* const arguments[] = {const_cast<char*>(program.c_str()), nullptr};
    const auto begin = std::chrono::steady_clock::now();
    pid_t child = -1;
    int status = -1;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
        std::fprintf(stderr, "%s can't be run\n", program.c_str());
        std::exit(1);
    }
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    return time.count();
}

double median(std::vector<double>& times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

struct Mapped {
    long size = 0;      // KiB
    long resident = 0;  // KiB
};

// Reads /proc/PID/smaps: a line for each mapping, and lines of facts below it.
std::map<std::string, Mapped> mapped_files(std::istream& smaps) {
    std::map<std::string, Mapped> files;
    std::string file;
    for (std::string line; std::getline(smaps, line);) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first.find('-') != std::string::npos && first.back() != ':') {
            const auto slash = line.find('/');
            file = slash == std::string::npos ? "(memory)" : line.substr(line.rfind('/') + 1);
        } else {
            long number = 0;
            words >> number;
            if (first == "Size:") files[file].size += number;
            if (first == "Rss:") files[file].resident += number;
        }
    }
    return files;
}

std::string output_of(const std::string& command) {
    std::string text;
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return text;
    char block[65536];
    while (const auto size = std::fread(block, 1, sizeof block, pipe)) text.append(block, size);
    pclose(pipe);
    return text;
}

void print_map(const std::string& program) {
    std::istringstream smaps(output_of("'" + program + "' map"));
    auto files = mapped_files(smaps);
    Mapped sum;
    std::printf("\n%-28s %12s %12s\n", "mapped", "KiB", "resident KiB");
    for (const auto& [file, mapped] : files) {
        std::printf("%-28s %12ld %12ld\n", file.c_str(), mapped.size, mapped.resident);
        sum.size += mapped.size;
        sum.resident += mapped.resident;
    }
    std::printf("%-28s %12ld %12ld\n", "sum", sum.size, sum.resident);
}

// Whether it adds as little as is wanted.
bool print_start(const char* work, double time, double empty_time, double most) {
    std::printf("%-44s %9.3f ms %9.3f ms  %-28s %8.2f\n", work, time, empty_time,
                "an empty program", empty_time / time);
    const auto added = time - empty_time;
    std::printf("added: %.3f ms (at most %.0f ms wanted)\n", added, most);
    return added <= most;
}

}  // namespace

int main() {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    const auto empty = folder + "/start_empty";
    const auto ours = folder + "/start_product_name";
    const auto second = folder + "/start_hand_over";
    const auto window = folder + "/start_window";
    const auto qt_window = folder + "/start_qt_window";
    bench::profile_folder();
    NUtil::CSingleInstance first;
    if (!first.Create(u"StartBench")) return 1;
    std::vector<double> empty_times;
    std::vector<double> our_times;
    std::vector<double> second_times;
    std::vector<double> window_times;
    std::vector<double> qt_window_times;
    for (int run = 0; run < kRuns; ++run) {
        empty_times.push_back(start_and_wait(empty));
        our_times.push_back(start_and_wait(ours));
        second_times.push_back(start_and_wait(second));
    }
    for (int run = 0; run < kWindowRuns; ++run) {
        window_times.push_back(start_and_wait(window));
        qt_window_times.push_back(start_and_wait(qt_window));
    }
    const auto empty_time = median(empty_times);
    const bool is_quick =
        print_start("start, median", median(our_times), empty_time, kMostAddedMilliseconds);
    const bool hands_over_quickly = print_start("start and hand-over, median", median(second_times),
                                                empty_time, kMostForAHandOver);
    const auto window_time = median(window_times);
    const auto qt_window_time = median(qt_window_times);
    std::printf("%-44s %9.3f ms %9.3f ms  %-28s %8.2f\n", "start to a painted window, median",
                window_time, qt_window_time, "Qt Widgets", qt_window_time / window_time);
    print_map(ours);
    return is_quick && hands_over_quickly ? 0 : 1;
}
