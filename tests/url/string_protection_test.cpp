#include "tvutil2/url/string_protection.h"

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/frame/base64.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/account.h"
#include "tvutil2/url/url_info.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

#include "tests/support/ansi_page.h"
#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

constexpr auto kNone = CUrlInfo::MAC_NONE;
constexpr auto kMd5 = CUrlInfo::MAC_MD5;

CString protect(const char* key, const char16_t* text, CUrlInfo::MAC mac) {
    CString out(text);
    EXPECT_EQ(CUrlInfo::EncryptString(key, out, mac, CUrlInfo::ENC_RC4), 1);
    return out;
}

int reveal(const char* key, CString& text, CUrlInfo::MAC mac) {
    return CUrlInfo::DecryptString(key, text, mac, CUrlInfo::ENC_RC4);
}

// What the openssl program says of some input; empty when the machine hasn't got it.
std::string openssl(const std::string& arguments, const std::string& input) {
    const auto file = tests::new_folder() + "/input";
    tests::write_file(file, input);
    auto* const pipe = popen(("openssl " + arguments + " <" + file + " 2>/dev/null").c_str(), "r");
    std::string output;
    char block[4096];
    while (const auto size = std::fread(block, 1, sizeof block, pipe)) output.append(block, size);
    return pclose(pipe) == 0 ? output : "";
}

std::string hexadecimal(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

// The format, put together by another program.
std::string protected_by_openssl(const std::string& key, const std::string& bytes, bool with_mac) {
    const auto digest = openssl("dgst -md5 -binary", key);
    auto content = openssl(
        "enc -rc4 -nosalt -provider legacy -provider default -K " + hexadecimal(digest), bytes);
    if (with_mac) content += openssl("dgst -md5 -binary", bytes);
    return openssl("base64 -A", content);
}

TEST(StringProtection, IsWhatAnotherProgramComputes) {
    ASSERT_FALSE(openssl("version", "").empty()) << "the openssl program is needed";
    const std::string keys[] = {"", "alice:LAB-1", std::string(300, 'x')};
    const std::u16string texts[] = {u"p\u00E4ss w\u00F6rd \U0001F511", std::u16string(5000, u'z')};
    for (const auto& key : keys) {
        for (const auto& text : texts) {
            const std::string bytes(CAnsiString(text.c_str()));
            for (const auto mac : {kNone, kMd5}) {
                const CAnsiString ours(protect(key.c_str(), text.c_str(), mac).GetString());
                EXPECT_STREQ(ours, protected_by_openssl(key, bytes, mac == kMd5).c_str());
            }
        }
    }
}

TEST(StringProtection, IsWhatItAlwaysWas) {
    // Computed once with the openssl program, as above.
    EXPECT_TRUE(protect("alice:LAB-1", u"secret", kMd5) == u"iq6JKVZWXr4ilOzQ4PCOq3aQ0qbuaQ==");
    EXPECT_TRUE(protect("alice:LAB-1", u"secret", kNone) == u"iq6JKVZW");
}

TEST(StringProtection, ComesBack) {
    const std::u16string texts[] = {u"", u"x", u"correct horse", u"\u00E4\u4E2D\U0001F600",
                                    std::u16string(100000, u'\u4E2D')};
    for (const auto& text : texts) {
        for (const auto mac : {kNone, kMd5}) {
            auto protected_text = protect("key", text.c_str(), mac);
            const auto bytes = CAnsiString(text.c_str()).GetLength() + (mac == kMd5 ? 16 : 0);
            EXPECT_EQ(protected_text.GetLength(), (bytes + 2) / 3 * 4);
            EXPECT_EQ(reveal("key", protected_text, mac), 1);
            EXPECT_EQ(protected_text.View(), text);
        }
    }
    EXPECT_TRUE(protect("key", u"", kNone).IsEmpty());
    EXPECT_EQ(protect("key", u"", kMd5).GetLength(), 24);
    EXPECT_EQ(protect("key", u"same", kMd5), protect("key", u"same", kMd5));
}

// A page with four bytes for a unit.
TEST(StringProtection, ComesBackInEveryAnsiPage) {
    tests::install_ansi_page(u"54936");
    for (const std::size_t size : {1U, 100U, 50000U}) {
        const std::u16string text(size, u'\u00E3');
        for (const auto mac : {kNone, kMd5}) {
            auto protected_text = protect("key", text.c_str(), mac);
            EXPECT_EQ(reveal("key", protected_text, mac), 1);
            EXPECT_EQ(protected_text.View(), text);
        }
    }
}

TEST(StringProtection, RefusalsLeaveTheTextAlone) {
    const auto good = protect("key", u"secret", kMd5);
    auto damaged = good;
    damaged.SetAt(3, damaged.GetAt(3) == u'A' ? u'B' : u'A');
    auto spare_bits = protect("key", u"secret!", kMd5);  // 23 bytes: two bits to spare
    spare_bits.SetAt(30, static_cast<char16_t>(spare_bits.GetAt(30) + 1));
    const struct {
        const char* key;
        CString text;
        int mac;
    } rows[] = {
        {"other", good, kMd5},
        {"key", damaged, kMd5},
        {"key", spare_bits, kMd5},
        {"key", good.Left(20), kMd5},  // 15 bytes
        {"key", CString(u"n\u00F6"), kMd5},
        {"key", CString(u"YQ"), kNone},
        {"key", CString(u""), kMd5},
        {"key", good, 2},
        {"key", good, -1},
    };
    for (const auto& row : rows) {
        auto text = row.text;
        EXPECT_EQ(reveal(row.key, text, static_cast<CUrlInfo::MAC>(row.mac)), 0);
        EXPECT_EQ(text, row.text);
    }
    CString text(u"plain");
    EXPECT_EQ(
        CUrlInfo::EncryptString("key", text, static_cast<CUrlInfo::MAC>(2), CUrlInfo::ENC_RC4), 0);
    EXPECT_TRUE(text == u"plain");
}

TEST(StringProtection, WithoutADigestMuchPasses) {
    auto text = protect("key", u"secret", kNone);
    EXPECT_EQ(reveal("other", text, kNone), 1);
    EXPECT_FALSE(text == u"secret");
    // Seven bytes end in a group with spare bits: only that group is lost.
    auto spare_bits = protect("key", u"sevenby", kNone);
    spare_bits.SetAt(9, static_cast<char16_t>(spare_bits.GetAt(9) + 1));
    EXPECT_EQ(reveal("key", spare_bits, kNone), 1);
    EXPECT_TRUE(spare_bits == u"sevenb");
    // White space is no damage.
    auto spaced = protect("key", u"secret", kNone);
    spaced.Insert(3, u" \r\n\t");
    EXPECT_EQ(reveal("key", spaced, kNone), 1);
    EXPECT_TRUE(spaced == u"secret");
}

TEST(StringProtection, AZeroByteEndsTheText) {
    // Cipher text that deciphers to "ab", a zero and "c".
    const auto stream = protect("key", u"ab_c", kNone);
    CBuffer bytes;
    ASSERT_EQ(CBase64::Decode(stream, bytes), 1);
    unsigned char changed[4];
    bytes.Get(changed, 4);
    changed[2] ^= '_';
    CString text;
    CBase64::Encode(changed, 4, text);
    EXPECT_EQ(reveal("key", text, kNone), 1);
    EXPECT_TRUE(text == u"ab");
}

CString url_with_secret() {
    CUrlInfo info;
    info.m_strHost = u"host";
    info.m_strUser = u"user";
    info.m_strPassword = std::u16string_view(u"s\u00E9cret");
    CString url;
    EXPECT_EQ(info.MakeURL(url, 0, 1), 1);
    return url;
}

bool is_readable(const CString& url) {
    CUrlInfo info;
    return info.Parse_URL(url, 1) == 1 && info.m_strPassword == u"s\u00E9cret";
}

// Both processes work out the account and its key for themselves.
TEST(StringProtection, WhatOneProcessProtectsAnotherReads) {
    const auto file = tests::new_folder() + "/url";
    EXPECT_EQ(tests::in_child([&] {
                  tests::write_file(file, tvutil2::to_utf8_lossy(url_with_secret().View()));
                  return 0;
              }),
              0);
    EXPECT_TRUE(is_readable(CString(tests::read_file(file).c_str())));
}

// Only the superuser can act for another; for anyone else the account stays what it is.
TEST(StringProtection, ASecretIsTheActingAccountsAtEveryCall) {
    constexpr auto kKeep = static_cast<uid_t>(-1);
    constexpr uid_t kNobody = 65534;
    const auto own = url_with_secret();
    for (const uid_t others : {kKeep, kNobody}) {  // for a while, and for good
        // A thread's ids are its own when the C library isn't asked to set them for all.
        std::thread([&] {
            EXPECT_TRUE(is_readable(own));
            const auto before = geteuid();
            const bool is_other =
                syscall(SYS_setresuid, others, kNobody, others) == 0 && before != kNobody;
            for (int i = 0; i < 2; ++i) {
                // The other can't have this account's secret, nor one of its own in its place.
                EXPECT_EQ(is_readable(own), !is_other);
                CString sid(u"old");
                EXPECT_EQ(GetCurSID(sid, u"5.3") != 0, !is_other);
                EXPECT_EQ(sid.IsEmpty(), is_other);
                CUrlInfo info;
                info.m_strHost = u"host";
                info.m_strUser = u"user";
                info.m_strPassword = u"secret";
                CString url;
                EXPECT_EQ(info.MakeURL(url, 0, 1), is_other ? 0 : 1);
            }
            if (syscall(SYS_setresuid, kKeep, getuid(), kKeep) != 0) ADD_FAILURE();
            EXPECT_EQ(is_readable(own), others == kKeep || !is_other);
        }).join();
        EXPECT_TRUE(is_readable(own));
    }
}

TEST(StringProtection, TheDefaultKeyIsUserAndComputer) {
    char user[256];
    char computer[256];
    DWORD user_size = sizeof user;
    DWORD computer_size = sizeof computer;
    ASSERT_NE(GetUserNameA(user, &user_size), 0);
    ASSERT_NE(GetComputerNameA(computer, &computer_size), 0);
    EXPECT_EQ(std::string(TvGetCipherKey()), std::string(user) + ":" + computer);
    auto text = protect(nullptr, u"secret", kMd5);
    EXPECT_EQ(reveal(TvGetCipherKey(), text, kMd5), 1);
    EXPECT_TRUE(text == u"secret");
}

TEST(StringProtection, ExportedPairKeepsItsResult) {
    const std::u16string protected_text = TvGetEncryptedString(u"cl\u00E9", u"%s secret");
    EXPECT_EQ(protected_text, protect("cl\xC3\xA9", u"%s secret", kMd5).View());
    const char16_t* const first = TvGetDecryptedString(u"cl\u00E9", protected_text.c_str());
    EXPECT_EQ(std::u16string(first), u"%s secret");
    TvGetEncryptedString(u"", u"another");  // the two don't share their string
    EXPECT_EQ(std::u16string(first), u"%s secret");
    EXPECT_EQ(std::u16string(TvGetDecryptedString(u"wrong", protected_text.c_str())),
              protected_text);
}

TEST(StringProtection, AccountKeysByVersion) {
    char16_t name[256];
    DWORD size = 256;
    ASSERT_NE(GetUserNameW(name, &size), 0);
    CString sid;
    ASSERT_NE(GetCurSID(sid, u"5.2"), 0);
    EXPECT_TRUE(sid.View().starts_with(u"S-1-5-21-"));
    CString backwards(sid);
    backwards.MakeReverse();
    const std::pair<const char16_t*, CString> rows[] = {{u"", sid},
                                                        {u"1.0", sid},
                                                        {u"10.0", sid},
                                                        {u"5.3", name + sid},
                                                        {u"7.0", name + sid},
                                                        {u"7.1", backwards + name},
                                                        {u"8", backwards + name}};
    for (const auto& [version, text] : rows) {
        CString out(u"old");
        EXPECT_NE(GetCurSID(out, version), 0);
        EXPECT_EQ(out, text);
    }
}

}  // namespace
