#include "tvutil2/platform/process/account.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/machine_number.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/profile.h"

namespace {

std::u16string user_name() {
    char16_t name[256];
    DWORD size = 256;
    return GetUserNameW(name, &size) ? std::u16string(name, size - 1) : u"";
}

struct Looked {
    BOOL result;
    std::u16string sid;
    std::u16string domain;
    int use = 0;
};

Looked look_up(const std::u16string& account) {
    alignas(SID) unsigned char sid[68];
    char16_t domain[64] = {};
    DWORD sid_size = sizeof sid;
    DWORD domain_size = 64;
    Looked out{};
    out.result = LookupAccountNameW(nullptr, account.c_str(), sid, &sid_size, domain, &domain_size,
                                    &out.use);
    char16_t* text = nullptr;
    if (!out.result || !ConvertSidToStringSidW(sid, &text)) return out;
    out.sid = text;
    out.domain.assign(domain, domain_size);
    EXPECT_EQ(LocalFree(reinterpret_cast<HLOCAL>(text)), nullptr);
    return out;
}

TEST(Account, NamesFollowTheirSizeContracts) {
    const auto name = user_name();
    ASSERT_FALSE(name.empty());
    char16_t buffer[256];
    DWORD size = static_cast<DWORD>(name.size());
    EXPECT_EQ(GetUserNameW(buffer, &size), FALSE) << "no room for the zero";
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(size, name.size() + 1);
    EXPECT_NE(GetUserNameW(buffer, &size), FALSE);

    size = 0;
    EXPECT_EQ(GetComputerNameW(nullptr, &size), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_BUFFER_OVERFLOW);
    const auto needed = size;
    EXPECT_NE(GetComputerNameW(buffer, &size), FALSE);
    EXPECT_EQ(size, needed - 1) << "the zero doesn't count on the way out";
    EXPECT_LE(size, MAX_COMPUTERNAME_LENGTH);
    EXPECT_EQ(std::u16string(buffer).size(), size);
}

TEST(Account, NarrowNamesSayTheSame) {
    char narrow[256];
    char16_t wide[256];
    DWORD size = 256;
    ASSERT_NE(GetUserNameA(narrow, &size), FALSE);
    EXPECT_EQ(size, std::strlen(narrow) + 1);
    EXPECT_EQ(narrow, tvutil2::to_utf8(user_name()));
    size = 256;
    ASSERT_NE(GetComputerNameA(narrow, &size), FALSE);
    EXPECT_EQ(size, std::strlen(narrow));
    size = 256;
    ASSERT_NE(GetComputerNameW(wide, &size), FALSE);
    EXPECT_EQ(narrow, tvutil2::to_utf8(wide));
}

TEST(Account, IdentifierIsTheAccountsAndTheSameAtEveryCall) {
    const auto name = user_name();
    const auto first = look_up(name);
    ASSERT_NE(first.result, FALSE);
    EXPECT_TRUE(first.sid.starts_with(u"S-1-5-21-"));
    EXPECT_TRUE(first.sid.ends_with(
        *tvutil2::to_utf16(std::string("-").append(std::to_string(geteuid())))));
    EXPECT_EQ(first.use, SidTypeUser);
    EXPECT_EQ(look_up(name).sid, first.sid);
    EXPECT_EQ(look_up(first.domain + u"\\" + name).sid, first.sid);
    EXPECT_NE(look_up(u"nobody").sid, first.sid);

    for (const auto* stranger : {u"no-such-account", u"", u"OTHER\\root", u"uid0", u"uid-1"}) {
        SetLastError(0);
        EXPECT_EQ(look_up(stranger).result, FALSE);
        EXPECT_EQ(GetLastError(), ERROR_NONE_MAPPED);
    }
    EXPECT_NE(look_up(u"uid3999999999").result, FALSE) << "an account without an entry";
}

TEST(Account, LookupSaysWhatItNeeds) {
    alignas(SID) unsigned char sid[28];
    char16_t domain[64];
    DWORD sid_size = 27;
    DWORD domain_size = 64;
    int use = 0;
    const auto name = user_name();
    EXPECT_EQ(LookupAccountNameW(nullptr, name.c_str(), sid, &sid_size, domain, &domain_size, &use),
              FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(sid_size, 28U);
    domain_size = 1;
    EXPECT_EQ(LookupAccountNameW(nullptr, name.c_str(), sid, &sid_size, domain, &domain_size, &use),
              FALSE);
    EXPECT_NE(LookupAccountNameW(nullptr, name.c_str(), sid, &sid_size, domain, &domain_size, &use),
              FALSE);
}

TEST(Account, IdentifierTexts) {
    struct {
        std::vector<unsigned char> bytes;
        const char16_t* text;  // null: refused
    } const cases[] = {
        {{1, 0, 0, 0, 0, 0, 0, 5}, u"S-1-5"},
        {{1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}, u"S-1-1-0"},
        {{1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}, u"S-1-5-32-4294967295"},
        {{2, 0, 0, 0, 0, 0, 0, 5}, nullptr},
        {{1, 16, 0, 0, 0, 0, 0, 5}, nullptr},
    };
    for (const auto& [bytes, expected] : cases) {
        char16_t* text = nullptr;
        const auto result = ConvertSidToStringSidW(bytes.data(), &text);
        EXPECT_EQ(result != FALSE, expected != nullptr);
        if (expected == nullptr) {
            EXPECT_EQ(GetLastError(), ERROR_INVALID_SID);
            continue;
        }
        EXPECT_EQ(std::u16string(text), expected);
        LocalFree(reinterpret_cast<HLOCAL>(text));
    }
}

constexpr const char* kId = "0123456789abcdef0123456789abcdef";

TEST(MachineNumber, ComesFromTheFirstIdAndHidesIt) {
    const auto folder = tests::new_folder();
    const auto id = folder + "/id";
    const auto other = folder + "/other";
    tests::write_file(id, std::string(kId) + "\n");
    tests::write_file(other, "ffffffffffffffffffffffffffffffff\n");
    tests::write_file(folder + "/none", "uninitialized\n");
    const auto number = tvutil2::machine_number(
        {{folder + "/missing", folder + "/none", id, other}}, folder + "/own");
    ASSERT_TRUE(number);
    EXPECT_EQ(number, tvutil2::machine_number({{id}}, folder + "/own"));
    EXPECT_NE(number, tvutil2::machine_number({{other}}, folder + "/own"));
    EXPECT_NE((*number)[0], 0x67452301U) << "the id itself mustn't show";
    EXPECT_FALSE(std::filesystem::exists(folder + "/own")) << "nothing is made without need";
    // From another implementation of HMAC-SHA-256. Protected strings hang on these numbers: a
    // change of the hash would make them unreadable.
    EXPECT_EQ(*number, (tvutil2::MachineNumber{2442138519, 3837289751, 1652340938}));
}

TEST(MachineNumber, MachineWithoutAnIdGetsOneThatStays) {
    const auto folder = tests::new_folder();
    const auto own = folder + "/a/b";
    std::vector<std::thread> threads;
    std::vector<std::optional<tvutil2::MachineNumber>> numbers(8);
    for (auto& number : numbers) {
        threads.emplace_back([&] { number = tvutil2::machine_number({}, own); });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(numbers[0]);
    for (const auto& number : numbers) EXPECT_EQ(number, numbers[0]);
    struct stat info {};
    ASSERT_EQ(stat((own + "/machine-id").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(own), {}), 1) << "drafts are left";

    tests::write_file(folder + "/late", std::string(kId));
    EXPECT_EQ(tvutil2::machine_number({{folder + "/late"}}, own), numbers[0]);
    EXPECT_NE(tvutil2::machine_number({}, folder + "/c"), numbers[0]);
}

TEST(MachineNumber, NoMakeshiftWhenItCannotBeKept) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/file", "");
    SetLastError(0);
    EXPECT_FALSE(tvutil2::machine_number({}, folder + "/file/own"));
    EXPECT_NE(GetLastError(), ERROR_SUCCESS);
    std::filesystem::create_directory(folder + "/damaged");
    tests::write_file(folder + "/damaged/machine-id", "rubbish");
    EXPECT_FALSE(tvutil2::machine_number({}, folder + "/damaged"));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
    EXPECT_EQ(tests::read_file(folder + "/damaged/machine-id"), "rubbish");
}

}  // namespace
