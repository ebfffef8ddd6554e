#include "tvutil2/services/live_update.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/trust/sign_file.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/fifo.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"
#include "tests/support/signer.h"
#include "tests/support/threads.h"

namespace {

constexpr const char16_t* kUpdates = u"Software\\Tolvarine\\Pelrin\\8\\LiveUpdate";
constexpr const char16_t* kProduct = u"Software\\Tolvarine\\Pelrin\\8";
constexpr SYSTEMTIME kNoDate{2024, 13, 0, 1, 0, 0, 0, 0};

template <class... Value>
void store(HKEY root, const char16_t* path, const char16_t* name, Value... value) {
    CRegistry key;
    ASSERT_NE(key.Open(root, path, 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(key.SetValue(name, value...), 0);
}

void store_time(HKEY root, const char16_t* path, const char16_t* name, const SYSTEMTIME& time,
                DWORD size = sizeof(SYSTEMTIME)) {
    unsigned char bytes[32] = {};
    std::copy_n(reinterpret_cast<const unsigned char*>(&time), sizeof time, bytes);
    store(root, path, name, static_cast<const unsigned char*>(bytes), size);
}

std::string text(const char16_t* path, const char16_t* name) {
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, path, 0, KEY_READ);
    return tvutil2::to_utf8_lossy(key.GetValue(name, u"-").View());
}

struct Settings {
    int enable = -1;
    unsigned int interval = 99;
};
bool operator==(const Settings& a, const Settings& b) {
    return a.enable == b.enable && a.interval == b.interval;
}
Settings settings(unsigned int code = 1) {
    Settings found;
    TvGetLiveUpdateInformation(code, 8, found.enable, found.interval);
    return found;
}

// A product in a folder of its own, where the module may lie beside it.
class Product {
  public:
    Product()
        : m_updater(tests::copy_program(TESTS_STARTED "/updater.exe", m_folder, "updater.exe")) {
        setenv("TVUTIL_TEST_REPORT", m_report.path().c_str(), 1);
    }
    void add_module() const {
        tests::copy_program(TESTS_STARTED "/launched.exe", m_folder, "LiveUpdate.exe");
    }
    void sign_module() const {
        const auto signer = tests::make_signer("Tolvarine Computer");
        const auto module = m_folder + "/LiveUpdate.exe";
        const auto wrong = tvutil2::sign_elf_file(
            module, module,
            {tests::read_file(signer.certificates), tests::read_file(signer.key), ""});
        EXPECT_EQ(wrong, "");
    }
    [[nodiscard]] std::string check(const std::string& force, const std::string& checked) const {
        return tests::output_of(m_updater, {"1", force, checked});
    }
    [[nodiscard]] std::string id() const { return tests::output_of(m_updater, {"id"}); }
    /// The switches that the module was started with, waiting for that.
    [[nodiscard]] std::string started() const {
        std::string switches;
        const auto report = m_report.read_all();
        constexpr std::string_view kArgument = "argument=";
        for (auto at = report.find(kArgument); at != report.npos; at = report.find(kArgument, at)) {
            at += kArgument.size();
            switches += ' ' + report.substr(at, report.find('\n', at) - at);
        }
        return switches;
    }

  private:
    std::string m_folder = tests::new_folder();
    std::string m_updater;
    tests::Fifo m_report;
};

TEST(LiveUpdate, FirstCheckStartsTheClockAndALaterOneTheModule) {
    const Product product;
    store(HKEY_LOCAL_MACHINE, kProduct, u"Version", u"8.0.0.61");
    store(HKEY_LOCAL_MACHINE, kProduct, u"Reseller", u"Gräy & Sons");
    EXPECT_EQ(product.check("1", "0"), "no module");
    EXPECT_EQ(product.check("-", "0"), "0");
    EXPECT_FALSE(tvutil2::last_update_check(1, 8));
    EXPECT_EQ(text(kProduct, u"Version"), "-") << "without a module nothing is written";
    product.add_module();
    EXPECT_EQ(product.check("0", "0"), "clock");
    ASSERT_TRUE(tvutil2::last_update_check(1, 8));
    EXPECT_EQ(text(kProduct, u"Version"), "8.0.0.61");
    EXPECT_EQ(text(kProduct, u"Reseller"), "Gräy & Sons");
    const std::string facts =
        "&product=1&major=8&package=1&version=8.0.0.61&reseller=Gr%C3%A4y%20%26%20Sons";
    EXPECT_EQ(text(kUpdates, u"LiveUpdateData"), "kind=1" + facts);
    EXPECT_EQ(text(kUpdates, u"LiveUpdateDataE"), "kind=2" + facts);
    EXPECT_EQ(text(kUpdates, u"LiveUpdateHistoryData"), "kind=8" + facts);
    store_time(HKEY_CURRENT_USER, kUpdates, u"LastUpdateCheck", {2001, 1, 0, 1, 0, 0, 0, 0});
    EXPECT_EQ(product.check("0", "1"), "begun");
    EXPECT_EQ(product.check("-", "0"), "0") << "not signed";
    product.sign_module();
    // What wasn't signed wasn't started: its report would come with this one.
    EXPECT_EQ(product.check("1", "0"), "begun");
    EXPECT_EQ(product.started(), "");
    TvSetLastUpdateCheck(1, 8);
    EXPECT_EQ(product.check("0", "0"), "not due");
    TvSetLiveUpdate(1, 8, 1, 0);
    EXPECT_EQ(product.check("0", "1"), "begun") << "at each start";
    EXPECT_EQ(product.started(), " /silent /checked");
    TvSetLiveUpdate(1, 8, 0, 0);
    EXPECT_EQ(product.check("0", "0"), "not due") << "off";
    EXPECT_EQ(product.check("1", "1"), "begun");
    EXPECT_EQ(product.started(), " /checked");
    store_time(HKEY_CURRENT_USER, kUpdates, u"LastUpdateCheck", kNoDate);
    EXPECT_EQ(product.check("-", "0"), "1");
    EXPECT_EQ(product.started(), " /force");
    EXPECT_EQ(tvutil2::last_update_check(1, 8)->wMonth, 13) << "a forced start is no check";
}

// The lines of the one log below a folder, without their times.
std::string logged(const std::string& folder) {
    std::string text;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder + "/applog", none)) {
        const auto bytes = tests::read_file(entry.path().string());
        for (std::size_t at = 2; at < bytes.size(); at += 2) text.push_back(bytes[at]);
    }
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line, '\r'); stream.get()) {
        constexpr std::size_t kTime = std::string_view("[14:03:27.418] ").size();
        if (line.starts_with('[')) lines += line.substr(kTime) + "|";
    }
    const auto header = lines.find("Package Type: ");  // its last line
    return header == lines.npos ? lines : lines.substr(lines.find('|', header) + 1);
}

TEST(LiveUpdate, AChecksLinesAreInTheLog) {
    const Product product;
    const auto add_module = [&] { product.add_module(); };
    const auto nothing = [] {};
    const auto turn_off = [] { TvSetLiveUpdate(1, 8, 0, 7); };
    const struct {
        std::function<void()> prepare;
        const char *mode, *force;
        std::string lines;
    } cases[] = {
        {nothing, "2", "1", "[DEB] Check Live Update : 1|[DEB] Live Update Module Not Found|"},
        {add_module, "2", "0", "[DEB] Check Live Update : 0|Update check for new version|"},
        {turn_off, "2", "0", "[DEB] Check Live Update : 0|"},
        {nothing, "2", "5",
         "[DEB] Check Live Update : 5|Update check for new version|"
         "Run Update checker with thread|"},
        {nothing, "1", "1", "Update check for new version|Run Update checker with thread|"},
        {nothing, "0", "1", ""},
    };
    for (const auto& [prepare, mode, force, lines] : cases) {
        prepare();
        const auto folder = tests::new_folder();
        std::filesystem::current_path(folder);
        setenv("TESTS_LOG", mode, 1);
        EXPECT_NE(product.check(force, "0"), "");
        EXPECT_EQ(logged(folder), lines);
    }
}

TEST(LiveUpdate, StoredTimesThatAreNoDateAreOfLongAgo) {
    const FILETIME now = tvutil2::file_time_of(1709210096, 0);
    tvutil2::set_clock(&now);
    EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, 7), 1) << "never checked";
    TvSetLastUpdateCheck(1, 8);
    EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, 7), 0);
    EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, 0), 1);
    constexpr unsigned int kForEver = 0xFFFFFFFF;
    constexpr SYSTEMTIME kToday{2024, 2, 0, 29, 12, 0, 0, 0};
    const struct {
        SYSTEMTIME time;
        DWORD size;
        int is_passed, is_passed_for_ever;
    } cases[] = {
        {kToday, 16, 0, 0}, {kNoDate, 16, 1, 0}, {{1899, 1, 0, 1, 0, 0, 0, 0}, 16, 1, 0},
        {kToday, 15, 1, 0}, {kToday, 0, 1, 0},   {kToday, 17, 1, 1},
    };
    for (const auto& [time, size, is_passed, is_passed_for_ever] : cases) {
        store_time(HKEY_CURRENT_USER, kUpdates, u"LastUpdateCheck", time, size);
        EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, 7), is_passed) << time.wYear << ' ' << size;
        EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, kForEver), is_passed_for_ever) << size;
    }
    store(HKEY_CURRENT_USER, kUpdates, u"LastUpdateCheck", u"text");
    EXPECT_EQ(TvIsUpdateIntervalPassed(1, 8, kForEver), 1) << "of another type is missing";
    tvutil2::set_clock(nullptr);
}

TEST(LiveUpdate, NewStampOfTheMachineResetsAUsersSettingsOnce) {
    constexpr Settings kDefaults{1, 7};
    EXPECT_EQ(settings(), kDefaults);
    TvSetLiveUpdate(1, 8, 0, 30);
    EXPECT_EQ(settings(), (Settings{0, 30}));
    const struct {
        SYSTEMTIME stamp;
        DWORD size;
        bool resets;
    } cases[] = {
        {kNoDate, 17, false},  // can't be read
        {kNoDate, 16, true},   // the first one, whatever it is
        {kNoDate, 16, false},
        {{2020, 1, 0, 1, 0, 0, 0, 0}, 16, false},
        {{2400, 1, 0, 1, 0, 0, 0, 0}, 16, true},
    };
    for (const auto& [stamp, size, resets] : cases) {
        store_time(HKEY_LOCAL_MACHINE, kProduct, u"MagicTime", stamp, size);
        EXPECT_EQ(settings(), (resets ? kDefaults : Settings{0, 30})) << stamp.wYear << ' ' << size;
        TvSetLiveUpdate(1, 8, 0, 30);
    }
    store_time(HKEY_LOCAL_MACHINE, kProduct, u"MagicTime", {2020, 1, 0, 1, 0, 0, 0, 0});
    store_time(HKEY_CURRENT_USER, kUpdates, u"MagicTime", kNoDate);
    EXPECT_EQ(settings(), kDefaults) << "a stamp of the user's that is none is older than any date";
    store(HKEY_CURRENT_USER, kUpdates, u"LiveUpdateInterval", u"30");
    store(HKEY_CURRENT_USER, kUpdates, u"EnableLiveUpdate", u"0");
    EXPECT_EQ(settings(), kDefaults) << "of another type";
}

TEST(LiveUpdate, CodeWithoutAProductHasNoKey) {
    TvSetLiveUpdate(8, 8, 0, 30);
    TvSetLastUpdateCheck(8, 8);
    TvSetLiveUpdateData(8, 8);
    EXPECT_EQ(settings(8), (Settings{1, 7}));
    EXPECT_EQ(TvIsUpdateIntervalPassed(8, 8, 7), 1);
    CRegistry key;
    EXPECT_EQ(key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine", 0, KEY_READ), 0);
}

TEST(LiveUpdate, IdIsMadeOnceHoweverManyAskAtOnce) {
    const Product product;
    std::mutex lock;
    std::set<std::string> ids;
    tests::on_threads(8, [&](int) {
        const auto id = product.id();
        const std::lock_guard guard(lock);
        ids.insert(id);
    });
    ASSERT_EQ(ids.size(), 1U);
    const auto& id = *ids.begin();
    EXPECT_EQ(id.size(), 36U);
    EXPECT_EQ(id.find_first_not_of("0123456789abcdef_"), id.npos) << id;
    EXPECT_EQ(tvutil2::to_utf8_lossy(TvCommonGUID()), id);
}

TEST(LiveUpdate, IdOfAnEarlierVersionIsCarriedOver) {
    store(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\LiveUpdate", u"UpdateID", u"old");
    EXPECT_EQ(std::u16string(TvCommonGUID()), u"old");
    EXPECT_EQ(text(u"Software\\Tolvarine\\Common\\LiveUpdate", u"UpdateID"), "old");
    store(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\LiveUpdate", u"UpdateID", u"new");
    EXPECT_EQ(std::u16string(TvCommonGUID()), u"old");
}

}  // namespace
