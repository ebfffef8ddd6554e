#include "tvutil2/platform/process/account.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/machine_number.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
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

    // Of another account it isn't told, nor guessed.
    SetLastError(0);
    EXPECT_EQ(look_up(geteuid() == 0 ? u"nobody" : u"root").result, FALSE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(look_up(u"uid3999999999").result, FALSE) << "an account without an entry";
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);

    for (const auto* stranger : {u"no-such-account", u"", u"OTHER\\root", u"uid0", u"uid-1"}) {
        SetLastError(0);
        EXPECT_EQ(look_up(stranger).result, FALSE);
        EXPECT_EQ(GetLastError(), ERROR_NONE_MAPPED);
    }
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

std::string folder_with_secret(const std::string& secret) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/account-secret", secret);
    std::filesystem::permissions(folder + "/account-secret", std::filesystem::perms(0600));
    return folder;
}

TEST(MachineNumber, ComesFromTheFirstIdAndTheSecretAndHidesThem) {
    const auto folder = tests::new_folder();
    const auto id = folder + "/id";
    const auto other = folder + "/other";
    tests::write_file(id, std::string(kId) + "\n");
    tests::write_file(other, "ffffffffffffffffffffffffffffffff\n");
    tests::write_file(folder + "/none", "uninitialized\n");
    const auto own = folder_with_secret(std::string(64, '5'));
    const auto number =
        tvutil2::machine_number({{folder + "/missing", folder + "/none", id, other}}, own);
    ASSERT_TRUE(number);
    EXPECT_EQ(number, tvutil2::machine_number({{id}}, own));
    EXPECT_NE(number, tvutil2::machine_number({{other}}, own)) << "another machine";
    EXPECT_NE(number, tvutil2::machine_number({{id}}, folder_with_secret(std::string(64, '6'))));
    // From another implementation of HMAC-SHA-256. Protected strings hang on these numbers: a
    // change of the hash would make them unreadable.
    EXPECT_EQ(*number, (tvutil2::MachineNumber{2188249752, 2360375323, 3271184026}));
}

TEST(MachineNumber, WhatIsMissingIsMadeOnceByAllWhoStartAtOnce) {
    const auto own = tests::new_folder() + "/a/b";
    const auto file = own + "/numbers-";
    constexpr int kProcesses = 4;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(fork());
        if (children.back() != 0) continue;
        umask(0);
        char start = 0;
        close(ends[1]);
        if (read(ends[0], &start, 1) != 0) _exit(2);  // its end: all are there
        const auto number = tvutil2::machine_number({}, own);
        if (!number) _exit(1);
        tests::write_file(file + std::to_string(i), std::to_string((*number)[0]));
        _exit(0);
    }
    close(ends[1]);
    close(ends[0]);
    for (const auto child : children) {
        int status = 1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const auto number = tvutil2::machine_number({}, own);
    ASSERT_TRUE(number);
    for (int i = 0; i < kProcesses; ++i) {
        EXPECT_EQ(tests::read_file(file + std::to_string(i)), std::to_string((*number)[0]));
        std::filesystem::remove(file + std::to_string(i));
    }
    for (const auto* name : {"/machine-id", "/account-secret"}) {
        struct stat info {};
        ASSERT_EQ(stat((own + name).c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, 0600U);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(own), {}), 2) << "drafts are left";

    const auto late = tests::new_folder() + "/late";
    tests::write_file(late, std::string(kId));
    EXPECT_EQ(tvutil2::machine_number({{late}}, own), number);
    EXPECT_NE(tvutil2::machine_number({}, tests::new_folder()), number);
}

TEST(MachineNumber, NoMakeshiftWhenTheSecretIsNotTheAccountsAlone) {
    namespace fs = std::filesystem;
    const auto elsewhere = folder_with_secret(std::string(64, '5')) + "/account-secret";
    const struct {
        const char* what;
        std::function<void(const std::string& folder, const std::string& file)> change;
        DWORD error;
    } cases[] = {
        {"damaged", [](const auto&, const auto& file) { tests::write_file(file, "rubbish"); },
         ERROR_INVALID_DATA},
        {"empty", [](const auto&, const auto& file) { fs::resize_file(file, 0); },
         ERROR_INVALID_DATA},
        {"readable", [](const auto&, const auto& file) { fs::permissions(file, fs::perms(0640)); },
         ERROR_ACCESS_DENIED},
        {"in a folder that others write",
         [](const auto& folder, const auto&) { fs::permissions(folder, fs::perms(0777)); },
         ERROR_ACCESS_DENIED},
        {"a folder",
         [](const auto&, const auto& file) { fs::remove(file), fs::create_directory(file); },
         ERROR_ACCESS_DENIED},
        {"a link",
         [&](const auto&, const auto& file) {
             fs::remove(file);
             fs::create_symlink(elsewhere, file);
         },
         0},
        {"a bad machine id",
         [](const auto& folder, const auto&) { tests::write_file(folder + "/machine-id", "?"); },
         0},
        {"no folder",
         [](const auto& folder, const auto&) {
             fs::remove_all(folder);
             tests::write_file(folder, "");
         },
         0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        const auto folder = folder_with_secret(std::string(64, '5'));
        const auto file = folder + "/account-secret";
        test.change(folder, file);
        const auto before = tests::read_file(file);
        SetLastError(0);
        EXPECT_FALSE(tvutil2::machine_number({{"/etc/machine-id"}}, folder));
        EXPECT_NE(GetLastError(), ERROR_SUCCESS);
        if (test.error != 0) {
            EXPECT_EQ(GetLastError(), test.error);
        }
        EXPECT_EQ(tests::read_file(file), before);
    }
}

}  // namespace
