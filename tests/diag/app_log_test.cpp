#include "tvutil2/diag/app_log.h"

#include "tvutil2/data/user_data.h"
#include "tvutil2/diag/local_trace.h"
#include "tvutil2/diag/log_file.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/window/messages.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"
#include "tests/support/threads.h"

namespace {

namespace fs = std::filesystem;

std::u16string units_of(const std::string& bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * 2);
    return units;
}

std::string bytes_of(std::u16string_view units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

// The lines of a log, in UTF-8, without mark and line ends; a piece at the end counts as a line
// with
// "..." behind it.
std::vector<std::string> lines_of(const std::string& file) {
    auto text = units_of(tests::read_file(file));
    if (text.starts_with(u'\xFEFF')) text.erase(0, 1);
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = text.find(u"\r\n");
        lines.push_back(tvutil2::to_utf8_lossy(text.substr(0, end)));
        if (end == std::u16string::npos) lines.back() += "...";
        text.erase(0, end == std::u16string::npos ? end : end + 2);
    }
    return lines;
}

// Stops the clock at 14:03:27.418 on 12 May 2026, in a zone without summer time.
void stop_clock(int milliseconds = 418) {
    setenv("TZ", "UTC0", 1);
    tzset();
    const auto time = tvutil2::file_time_of(1778594607, milliseconds * 1000000LL);
    tvutil2::set_clock(&time);
}

std::string host_of(const CString& path) {
    auto text = tvutil2::to_utf8_lossy(path.View()).substr(2);
    for (auto& c : text) {
        if (c == '\\') c = '/';
    }
    return text;
}

std::string log_file() {
    return host_of(tvutil2::log_path());
}

std::string message_line(const std::string& message) {
    return "[14:03:27.418] " + message;
}

// A log that was just started in a folder of its own, at the stopped time.
std::string start_log(int mode) {
    stop_clock();
    const auto folder = tests::new_folder();
    _InitApplicationLog(tests::platform_path(folder).c_str(), u"Pelrin", mode, 0);
    return folder;
}

constexpr std::size_t kHeaderLines = 7;

std::vector<std::string> messages() {
    auto lines = lines_of(log_file());
    lines.erase(lines.begin(),
                lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), kHeaderLines)));
    return lines;
}

TEST(AppLog, IsOffUntilItIsStarted) {
    EXPECT_EQ(_WriteApplicationLog(u"x", 1), 0);
    _InitApplicationLog(tests::platform_path(tests::new_folder()).c_str(), u"P", 0, 1);
    _SetWriteAppLog(-1, u"C:\\none", u"P");
    EXPECT_EQ(tvutil2::log_mode(), -1);
    EXPECT_TRUE(tvutil2::log_path().IsEmpty());
    __WriteInfoAppLog(0, u"armed");
    EXPECT_EQ(_WriteApplicationLog(u"x", 1), 0);
    const auto folder = tests::new_folder();
    _SetWriteAppLog(1, tests::platform_path(folder).c_str(), u"P");
    EXPECT_EQ(fs::path(log_file()).parent_path(), folder + "/applog");
}

TEST(AppLog, BeginsWithItsHeader) {
    const auto folder = start_log(2);
    const auto file = folder + "/applog/Pelrin_26_05_12_14_03_27_418.log";
    EXPECT_EQ(log_file(), file);
    EXPECT_EQ(tests::read_file(file).substr(0, 2), "\xFF\xFE");
    const auto lines = lines_of(file);
    ASSERT_EQ(lines.size(), kHeaderLines);
    EXPECT_EQ(lines[0], tvutil2::to_utf8_lossy(tvutil2::log_path().View()));
    EXPECT_EQ(lines[1], "[14:03:27 Tuesday, May 12, 2026] Log started(mode: 2)(Type: 1)...");
    EXPECT_TRUE(lines[2].starts_with(message_line("Module Path: C:\\"))) << lines[2];
    EXPECT_EQ(lines[3], message_line("Module Version: "));
    EXPECT_TRUE(lines[4].starts_with(message_line("Module Built: "))) << lines[4];
    EXPECT_TRUE(lines[5].starts_with(message_line("OS Information: "))) << lines[5];
    EXPECT_EQ(lines[6], message_line("Package Type: 1"));
    EXPECT_EQ(GetDateString(), u"20260512");
}

TEST(AppLog, WritesWhatTheModeAsksFor) {
    start_log(1);
    __WriteInfoAppLog(0, u"100% of %s");
    __WriteInfoAppLog(1, u"%s is %d", u"text", 7);
    __WriteDebugAppLog(0, u"lost");
    EXPECT_EQ(_WriteApplicationLog(u"direct", 2), 1);
    EXPECT_EQ(_WriteApplicationLog(u"odd type", -7), 1);
    _SetWriteAppLog(2, u"", u"");
    __WriteDebugAppLog(1, u"%d", 42);
    _SetWriteAppLog(0, u"", u"");
    __WriteInfoAppLog(0, u"lost");
    EXPECT_EQ(_WriteApplicationLog(u"lost", 1), 0);
    _SetWriteAppLog(-3, u"", u"");
    __WriteInfoAppLog(0, nullptr);
    __WriteDebugAppLog(0, u"lost");
    const auto bytes = bytes_of(u"bytes\r\n");
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
    EXPECT_EQ(_WriteApplicationLog(data, static_cast<unsigned int>(bytes.size())), 1);
    EXPECT_EQ(_WriteApplicationLog(static_cast<const unsigned char*>(nullptr), 2), 0);
    EXPECT_EQ(messages(),
              (std::vector<std::string>{message_line("100% of %s"), message_line("text is 7"),
                                        message_line("[DEB] direct"), message_line("odd type"),
                                        message_line("[DEB] 42"), message_line(""), "bytes"}));
}

TEST(AppLog, CutsFormattedMessagesAlone) {
    start_log(1);
    const std::size_t lengths[] = {0, 4095, 4096, 10'000'000};
    for (const auto length : lengths) {
        const std::u16string text(length, u'x');
        __WriteInfoAppLog(0, text.c_str());
        __WriteInfoAppLog(1, u"%s", text);
    }
    __WriteInfoAppLog(0, u"\xD800 half");
    const auto lines = messages();
    ASSERT_EQ(lines.size(), 9U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(lines[2 * i].size(), 15 + lengths[i]);
        EXPECT_EQ(lines[2 * i + 1].size(), 15 + std::min<std::size_t>(lengths[i], 4095));
    }
    EXPECT_NE(tests::read_file(log_file()).find(bytes_of(u"\xD800 half\r\n")), std::string::npos);
}

TEST(AppLog, TakesTheNextNumberWhereANameIsTaken) {
    stop_clock(999);
    const auto folder = tests::new_folder();
    const auto start = [&folder] {
        _InitApplicationLog(tests::platform_path(folder).c_str(), u"P", 1, 0);
        return fs::path(log_file()).filename().string();
    };
    EXPECT_EQ(start(), "P_26_05_12_14_03_27_999.log");
    EXPECT_EQ(start(), "P_26_05_12_14_03_27_1000.log");
    tests::write_file(folder + "/applog/P_26_05_12_14_03_27_1001.log", "another's");
    EXPECT_EQ(start(), "P_26_05_12_14_03_27_1002.log");
    EXPECT_EQ(messages().size(), 0U);
}

TEST(AppLog, StartsOfManyThreadsShareNoFile) {
    stop_clock();
    const auto folder = tests::new_folder();
    tests::on_threads(8, [&folder](int /*index*/) {
        for (int i = 0; i < 10; ++i) {
            _InitApplicationLog(tests::platform_path(folder).c_str(), u"P", 1, 0);
        }
    });
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder + "/applog")) {
        ++files;
        const auto lines = lines_of(entry.path().string());
        ASSERT_EQ(lines.size(), kHeaderLines);
        EXPECT_TRUE(lines[0].ends_with(entry.path().filename().string())) << lines[0];
    }
    EXPECT_EQ(files, 80U);
}

TEST(AppLog, SweepsOlderLogsIntoBackups) {
    const auto folder = tests::new_folder() + "/a * b";
    const auto logs = folder + "/applog/";
    fs::create_directories(logs + "folder.log");
    for (const auto* name :
         {"one.log", "TWO.LOG", "old.bak", "catalog", "kept.txt", "og", "taken.log"}) {
        tests::write_file(logs + name, name);
    }
    fs::create_directories(logs + "taken.bak");
    tests::write_file(folder + "/outside.bak", "");
    stop_clock();
    _InitApplicationLog(tests::platform_path(folder).c_str(), u"Pelrin", 1, 1);
    EXPECT_EQ(fs::path(log_file()).filename(), "Pelrin_26_05_12_14_03_27_418.log");
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(logs)) names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{"one.bak", "TWO.bak", "catabak", "kept.txt", "og",
                                            "folder.log", "taken.log", "taken.bak",
                                            "Pelrin_26_05_12_14_03_27_418.log"}));
    EXPECT_TRUE(fs::exists(folder + "/outside.bak"));
    // A log that was swept away while in use begins anew, without a header.
    tvutil2::sweep_logs(tests::platform_path(folder + "/applog").c_str());
    __WriteInfoAppLog(0, u"after");
    EXPECT_EQ(lines_of(log_file()), std::vector<std::string>{message_line("after")});
    fs::remove_all(folder + "/applog");
    EXPECT_EQ(_WriteApplicationLog(u"nowhere", 1), 0);
}

TEST(AppLog, LosesALineWhileTheFileIsInUse) {
    start_log(1);
    const auto& path = tvutil2::log_path();
    const auto reader = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(_WriteApplicationLog(u"beside a reader", 1), 1);
    CloseHandle(reader);
    const auto writer =
        CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    SetLastError(4711);
    EXPECT_EQ(_WriteApplicationLog(u"lost", 1), 0);
    EXPECT_EQ(GetLastError(), 4711U);
    CloseHandle(writer);
    EXPECT_EQ(messages(), std::vector<std::string>{message_line("beside a reader")});
}

TEST(AppLog, TellsTheTimeOfEachCallHoweverTheClockJumps) {
    start_log(1);
    const auto file = log_file();
    // Seconds from the start: forth and back, over midnight, and to the clock's beginning.
    const std::pair<std::int64_t, const char*> jumps[] = {
        {3600, "15:03:27.418"},   {-7200, "12:03:27.418"}, {-50608, "23:59:59.418"},
        {-50607, "00:00:00.418"}, {0, "14:03:27.418"},     {-1778594606, "00:00:01.418"},
    };
    std::vector<std::string> expected;
    for (const auto& [seconds, time] : jumps) {
        const auto now = tvutil2::file_time_of(1778594607 + seconds, 418000000);
        tvutil2::set_clock(&now);
        EXPECT_EQ(_WriteApplicationLog(u"line", 1), 1);
        expected.push_back(std::string("[") + time + "] line");
    }
    EXPECT_EQ(log_file(), file);
    EXPECT_EQ(messages(), expected);
}

// Root may write everywhere, so somebody else tries.
TEST(AppLog, LosesItsLinesWhereItMayNotWrite) {
    constexpr uid_t kNobody = 65534;
    const auto folder = tests::new_folder();
    const auto logs = folder + "/applog";
    fs::create_directory(logs);
    tests::write_file(logs + "/old.log", "old");
    fs::permissions(logs, fs::perms(0555));
    fs::permissions(logs + "/old.log", fs::perms(0444));
    fs::permissions(tests::profile_folder(), fs::perms(0755));
    const auto path = tests::platform_path(folder);
    const int result = tests::in_child([&path] {
        if (geteuid() == 0 && setuid(kNobody) != 0) return 1;
        SetLastError(4711);
        _InitApplicationLog(path.c_str(), u"P", 1, 1);
        if (tvutil2::log_path().IsEmpty()) return 2;
        if (_WriteApplicationLog(u"lost", 1) != 0) return 3;
        __WriteInfoAppLog(1, u"%s", u"lost");
        return GetLastError() == 4711 ? 0 : 4;
    });
    EXPECT_EQ(result, 0);
    fs::permissions(logs, fs::perms(0755));
    EXPECT_EQ(tests::read_file(logs + "/old.log"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(logs), fs::directory_iterator()), 1);
}

TEST(AppLog, TakesBackALineThatTheDiskHasNoRoomFor) {
    start_log(1);
    const auto before = tests::read_file(log_file());
    {
        const tests::FullDisk full(before.size() + 10);
        EXPECT_EQ(_WriteApplicationLog(u"a line", 1), 1);  // the file was opened
    }
    EXPECT_EQ(tests::read_file(log_file()), before);
    EXPECT_EQ(_WriteApplicationLog(u"a line", 1), 1);
    EXPECT_EQ(messages(), std::vector<std::string>{message_line("a line")});
}

// The common log of this process's profile, empty and in its place.
std::string common_log() {
    const auto folder = host_of(CString(GetUserDataFolderPath(0)) + u"\\Common\\Log");
    fs::create_directories(folder);
    fs::remove(folder + "/GlobalLog.txt");
    return folder + "/GlobalLog.txt";
}

TEST(GlobalLog, TakesLinesWithoutAStart) {
    stop_clock(7);
    const auto file = common_log();
    __WriteGlobalAppLog(0, u"100%");
    __WriteGlobalAppLog(1, u"%d", 5);
    TvInstallWriteGlobalAppLog(u"%s installed");
    const std::string time = "[2026-05-12 14:03:27.007] ";
    EXPECT_EQ(lines_of(file),
              (std::vector<std::string>{time + "100%", time + "5", time + "%s installed"}));
    const tests::FullDisk full(static_cast<rlim_t>(fs::file_size(file)) + 5);
    EXPECT_EQ(tvutil2::write_global_log(0, u"no room", {}), 0);
    EXPECT_EQ(lines_of(file).size(), 3U);
}

// What a killed program left is told by where it ends, and by what it begins with.
TEST(GlobalLog, TakesAwayThePieceOfALine) {
    stop_clock();
    const auto file = common_log();
    const std::string line = bytes_of(u"[2026-05-12 14:03:27.418] whole\r\n");
    const std::string x(70000, '\x78');
    const auto padded = [](std::string text) {
        return text + std::string((512 - text.size() % 512) % 512, 'x');
    };
    const auto last = bytes_of(u"[2026-05-12 14:03:27.418] last\r\n");
    const struct {
        std::string before, after;
    } cases[] = {
        {padded(line + bytes_of(u"[2026")), line + last},
        {padded(line + bytes_of(u"[2026") + x), line + last},
        {padded(bytes_of(u"[2026")), last},
        {line + bytes_of(u"[odd place"), line + bytes_of(u"[odd place") + last},
        {padded("somebody's text"), padded("somebody's text") + last},
        {std::string(512 - line.size(), 'x') + line,
         std::string(512 - line.size(), 'x') + line + last},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        tests::write_file(file, cases[i].before);
        EXPECT_EQ(tvutil2::write_global_log(0, u"last", {}), 1);
        EXPECT_EQ(tests::read_file(file), cases[i].after) << "case " << i;
    }
}

// Lines that were said to be written, by process and number, in memory that all share.
class Written {
  public:
    Written(int writers, int lines)
        : m_lines(static_cast<std::size_t>(lines)),
          m_size(static_cast<std::size_t>(writers) * m_lines),
          m_marks(static_cast<bool*>(
              mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    ~Written() { munmap(m_marks, m_size); }
    Written(const Written&) = delete;
    Written& operator=(const Written&) = delete;

    bool& at(int writer, int line) {
        return m_marks[static_cast<std::size_t>(writer) * m_lines + static_cast<std::size_t>(line)];
    }

  private:
    std::size_t m_lines;
    std::size_t m_size;
    bool* m_marks;
};

TEST(GlobalLog, HasEveryLineOfEightProcessesWholeAndOnce) {
    constexpr int kWriters = 8;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int kLines = 1000;  // slowed down many times
#else
    constexpr int kLines = 10000;
#endif
    const auto file = common_log();
    Written written(kWriters, kLines);
    std::vector<pid_t> writers;
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.push_back(fork());
        if (writers.back() != 0) continue;
        for (int line = 0; line < kLines; ++line) {
            const int number = writer * kLines + line;
            const std::u16string tail(static_cast<std::size_t>(number % 150), u'x');
            const tvutil2::FormatArgument arguments[] = {writer, line, tail};
            written.at(writer, line) =
                tvutil2::write_global_log(1, u"writer %d line %d %s.", arguments) != 0;
        }
        _exit(0);
    }
    for (const auto writer : writers) {
        int status = 0;
        waitpid(writer, &status, 0);
        EXPECT_EQ(status, 0);
    }
    std::map<std::pair<int, int>, int> found;
    const auto lines = lines_of(file);
    for (const auto& line : lines) {
        int writer = -1;
        int number = -1;
        ASSERT_EQ(std::sscanf(line.c_str() + 26, "writer %d line %d ", &writer, &number), 2)
            << line;
        const auto tail = static_cast<std::size_t>((writer * kLines + number) % 150);
        ASSERT_TRUE(line.ends_with(' ' + std::string(tail, 'x') + '.')) << line;
        ++found[{writer, number}];
    }
    int missing = 0;
    for (int writer = 0; writer < kWriters; ++writer) {
        for (int line = 0; line < kLines; ++line) {
            const bool is_there = found[{writer, line}] == 1;
            missing += is_there != written.at(writer, line) ? 1 : 0;
        }
    }
    EXPECT_EQ(missing, 0);
    // Each writer gets through, however many there are.
    for (int writer = 0; writer < kWriters; ++writer) {
        int count = 0;
        for (int line = 0; line < kLines; ++line) count += written.at(writer, line) ? 1 : 0;
        EXPECT_GT(count, kLines / 10) << "writer " << writer;
    }
}

TEST(GlobalLog, HasWholeLinesAfterAKillAnywhere) {
    const auto file = common_log();
    const std::u16string text(9000, u'x');  // over several pages
    for (int round = 0; round < 60; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const auto child = fork();
        if (child == 0) {
            for (;;) {
                TvInstallWriteGlobalAppLog(text.c_str());
                if (write(ends[1], "x", 1) != 1) _exit(1);
            }
        }
        close(ends[1]);
        char token = 0;
        for (int line = 0; line <= round % 7; ++line) ASSERT_EQ(read(ends[0], &token, 1), 1);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ends[0]);
        ASSERT_EQ(tvutil2::write_global_log(0, u"next", {}), 1);
    }
    int others = 0;
    for (const auto& line : lines_of(file)) {
        if (line.size() == 26 + 4 && line.ends_with("] next")) continue;
        ++others;
        ASSERT_TRUE(line.size() == 26 + text.size() && line[26] == 'x') << line.substr(0, 100);
    }
    EXPECT_GE(others, 60);
}

TEST(LocalTrace, CopiesItsFields) {
    const CLocalTrace trace(u"name", 5);
    CLocalTrace other(u"", 0);
    other = trace;
    EXPECT_EQ(other.m_strName, u"name");
    EXPECT_EQ(other.m_nValue, 5);
    const auto before = GetTickCount();
    const NLogTrace::CLocalTrace timed(u"name", 6);
    const NLogTrace::CLocalTrace copy(timed);
    EXPECT_EQ(copy.m_dwTick, timed.m_dwTick);
    EXPECT_LT(timed.m_dwTick - before, 60000U);
    EXPECT_EQ(copy.m_nValue, 6);
}

}  // namespace
