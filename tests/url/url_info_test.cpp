#include "tvutil2/url/url_info.h"

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/url/string_protection.h"
#include "tvutil2/url/url_text.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/url_items.h"

namespace {

using tests::Items;
using tests::items_of;

CUrlInfo parsed(const std::u16string& url, int unescape = 1) {
    CUrlInfo info;
    EXPECT_EQ(info.Parse_URL(url.c_str(), unescape), 1) << CAnsiString(url.c_str());
    return info;
}

CString made(const CUrlInfo& info, int dup, int secrets) {
    CString url(u"old");
    EXPECT_EQ(info.MakeURL(url, dup, secrets), 1);
    return url;
}

CString protected_text(const char16_t* text) {
    CString key;
    EXPECT_NE(GetCurSID(key, u"5.3"), 0);
    return TvGetEncryptedString(key, text);
}

// A URL, and what it is read as.
struct Parts {
    const char16_t* url;
    const char16_t* scheme;
    const char16_t* user;
    const char16_t* host;
    int port;
    const char16_t* path;
    Items items;
};

const Parts kParts[] = {
    {u"alice@192.0.2.10:22", u"", u"alice", u"192.0.2.10", 22, u"", {}},
    {u"ssh://alice@192.0.2.10:2222/var%2Flog?Session=lab+1",
     u"ssh",
     u"alice",
     u"192.0.2.10",
     2222,
     u"/var/log",
     {{u"Session", u"lab 1"}}},
    {u"telnet://router-3", u"telnet", u"", u"router-3", 0, u"", {}},
    {u"sftp://a%40b@192.0.2.11:22", u"sftp", u"a@b", u"192.0.2.11", 22, u"", {}},
    {u"[2001%3Adb8%3A%3A1]:22", u"", u"", u"[2001:db8::1]", 22, u"", {}},
    {u"[2001:db8::1]:22", u"", u"", u"[2001:db8::1]", 22, u"", {}},
    {u"[2001:db8::1]", u"", u"", u"[2001:db8::1]", 0, u"", {}},
    {u"2001:db8::1", u"", u"", u"2001:db8::1", 0, u"", {}},
    {u"a@b@host", u"", u"a@b", u"host", 0, u"", {}},
    {u"host?x=a@b", u"", u"host?x=a", u"b", 0, u"", {}},
    {u":x@host", u"", u":x", u"host", 0, u"", {}},
    {u"host?a=1?b=2", u"", u"", u"host?a=1", 0, u"", {{u"b", u"2"}}},
    {u"host?&x=1", u"", u"", u"host", 0, u"", {{u"&x", u"1"}}},
    {u"host?a=1&&b=2", u"", u"", u"host", 0, u"", {{u"a", u"1"}, {u"&b", u"2"}}},
    {u"host?a=1&b&=c&d=", u"", u"", u"host", 0, u"", {{u"a", u"1"}, {u"d", u""}}},
    {u"host?a=1=2", u"", u"", u"host", 0, u"", {{u"a", u"1=2"}}},
    {u"host?", u"", u"", u"host", 0, u"", {}},
    {u"host/", u"", u"", u"host", 0, u"/", {}},
    {u"host/a/b:c", u"", u"", u"host", 0, u"/a/b:c", {}},
    {u"host:70000", u"", u"", u"host", 4464, u"", {}},
    {u"host:", u"", u"", u"host", 0, u"", {}},
    {u"host:ssh", u"", u"", u"host", 0, u"", {}},
    {u"rdp://host", u"rdp", u"", u"host", 3389, u"", {}},
    {u"Rdp://host:3390", u"Rdp", u"", u"host", 3390, u"", {}},
    {u"ssh://host://x", u"ssh", u"", u"host", 0, u"//x", {}},
    {u"host?session=x", u"", u"", u"host", 0, u"", {{u"Session", u"x"}, {u"session", u"x"}}},
    {u"host?PROXY=p", u"", u"", u"host", 0, u"", {{u"Proxy", u"p"}, {u"PROXY", u"p"}}},
    {u"host?agent=0", u"", u"", u"host", 0, u"", {{u"Agent", u"0"}}},
    {u"host?agent=1", u"", u"", u"host", 0, u"", {{u"Agent", u"1"}, {u"AuthMethod", u"11"}}},
    {u"host?UserKey=k&authmethod=2",
     u"",
     u"",
     u"host",
     0,
     u"",
     {{u"UserKey", u"k"}, {u"AuthMethod", u"11"}, {u"authmethod", u"2"}}},
    {u"host?AuthMethod=2&Agent=00",
     u"",
     u"",
     u"host",
     0,
     u"",
     {{u"Agent", u"00"}, {u"AuthMethod", u"11"}}},
};

TEST(UrlInfo, Parts) {
    for (const auto& row : kParts) {
        SCOPED_TRACE(CAnsiString(row.url));
        const auto info = parsed(row.url);
        EXPECT_TRUE(info.m_strScheme == row.scheme);
        EXPECT_TRUE(info.m_strUser == row.user);
        EXPECT_TRUE(info.m_strPassword == u"");
        EXPECT_TRUE(info.m_strHost == row.host);
        EXPECT_EQ(info.m_nPort, row.port);
        EXPECT_TRUE(info.m_strPath == row.path);
        EXPECT_EQ(items_of(info), row.items);
    }
}

TEST(UrlInfo, Refusals) {
    for (const auto* const url :
         {u"", u"://host", u"@host", u"@a@host", u"ssh://@host", u"?a=1", u"ssh://?a=1", u"/path",
          u"ssh://", u"ssh:///path", u":22", u"ssh://:22", u"user@", u"user@:22", u"host/::/?"}) {
        CUrlInfo info;
        const bool is_refused = info.Parse_URL(url, 1) == 0;
        EXPECT_EQ(is_refused, std::u16string_view(url) != u"host/::/?") << CAnsiString(url);
    }
    CUrlInfo info;
    EXPECT_EQ(info.Parse_URL(nullptr, 1), 0);
    // What was read up to the refusal stays.
    EXPECT_EQ(info.Parse_URL(u"ssh://user@/path", 1), 0);
    EXPECT_TRUE(info.m_strScheme == u"ssh");
    EXPECT_TRUE(info.m_strUser == u"user");
}

TEST(UrlInfo, WithoutUnescapingAllStaysAsWritten) {
    const auto info = parsed(u"s%41://u%41+@h%41/p%41?k%41=v%41+", 0);
    EXPECT_TRUE(info.m_strScheme == u"s%41");
    EXPECT_TRUE(info.m_strUser == u"u%41+");
    EXPECT_TRUE(info.m_strHost == u"h%41");
    EXPECT_TRUE(info.m_strPath == u"/p%41");
    EXPECT_EQ(items_of(info), (Items{{u"k%41", u"v%41+"}}));
}

TEST(UrlInfo, Written) {
    for (const auto* const url :
         {u"ssh://alice@192.0.2.10:2222/var%2Flog?Session=lab+1", u"telnet://router-3",
          u"sftp://a%40b@192.0.2.11:22", u"[2001%3Adb8%3A%3A1]:22", u"host/", u"host?a=",
          u"h\u00F6st/\u4E2D%3D"}) {
        EXPECT_TRUE(made(parsed(url), 0, 1) == url) << CAnsiString(url);
    }
    EXPECT_TRUE(made(parsed(u"RDP://192.0.2.20"), 0, 1) == u"rdp://192.0.2.20:3389");
    EXPECT_TRUE(made(CUrlInfo(), 0, 1) == u"");

    CUrlInfo info;
    info.m_strHost = u"host";
    info.m_strPassword = u"secret";  // without a user
    info.m_strPath = u"no/slash";
    EXPECT_TRUE(made(info, 0, 1) == u"host/no%2Fslash");
    EXPECT_TRUE(made(info, 1, 1) == u"host/no%2Fslash?DupSession=1");
    info.m_strUser = u"user";
    EXPECT_TRUE(made(info, 0, 0) == u"user@host/no%2Fslash");
    info.m_mapParams[u"DupSession"] = u"1";
    EXPECT_TRUE(made(info, 1, 0) == u"user@host/no%2Fslash?DupSession=1&DupSession=1");
}

TEST(UrlInfo, PassPhraseIsWrittenProtectedOrNotAtAll) {
    CUrlInfo info;
    info.m_strHost = u"host";
    info.m_mapParams[u"passPhrase"] = u"open sesame";
    EXPECT_TRUE(made(info, 0, 0) == u"host?");
    EXPECT_TRUE(made(info, 1, 0) == u"host?DupSession=1");
    EXPECT_EQ(made(info, 0, 1),
              u"host?passPhrase=" + EscapeUrlText(protected_text(u"open sesame")));
    info.m_mapParams[u"Session"] = u"x";
    EXPECT_TRUE(made(info, 0, 0) == u"host?Session=x");
    EXPECT_EQ(parsed(made(info, 1, 1).GetString()).m_mapParams[u"passPhrase"], u"open sesame");
}

TEST(UrlInfo, PasswordsAreProtected) {
    const std::u16string written =
        (u"u:" + EscapeUrlText(protected_text(u"p+s/s:w@rd \u00E4")) + u"@h").GetString();
    const auto info = parsed(written);
    EXPECT_TRUE(info.m_strPassword == u"p+s/s:w@rd \u00E4");
    EXPECT_EQ(made(info, 0, 1).View(), written);
    // Another account's, or none: stays as it was written, and that is no failure.
    EXPECT_TRUE(parsed(u"u:plain%3A+x@h").m_strPassword == u"plain: x");
    EXPECT_TRUE(parsed(u"u:plain%3A@h", 0).m_strPassword == u"plain%3A");
    EXPECT_TRUE(parsed(u"u:a:b@h").m_strPassword == u"a:b");
}

TEST(UrlInfo, WhatIsWrittenReadsBack) {
    CUrlInfo info;
    info.m_strScheme = u"SSH";
    info.m_strUser = u"do main\\\u00FCser:@/?&=+%";
    info.m_strPassword = std::u16string_view(u"\u4E2D\U0001F511%41+");
    info.m_strHost = u"h%st:1";
    info.m_nPort = 65535;
    info.m_strPath = u"/a//b c?d";
    info.m_mapParams[u"k&=?"] = u"v&=?/@";
    info.m_mapParams[u"Passphrase"] = u"pass phrase";
    info.m_mapParams[u"empty"] = u"";
    const auto back = parsed(made(info, 0, 1).GetString());
    EXPECT_TRUE(back.m_strScheme == u"ssh");
    EXPECT_EQ(back.m_strUser, info.m_strUser);
    EXPECT_EQ(back.m_strPassword, info.m_strPassword);
    EXPECT_EQ(back.m_strHost, info.m_strHost);
    EXPECT_EQ(back.m_nPort, info.m_nPort);
    EXPECT_EQ(back.m_strPath, info.m_strPath);
    EXPECT_EQ(items_of(back), items_of(info));
}

TEST(UrlInfo, ASecondReadingKeepsWhatItDoesNotReplace) {
    auto info = parsed(u"rdp://u:secret@h/p?a=1&b=2");
    EXPECT_EQ(info.Parse_URL(u"other?b=3", 1), 1);
    EXPECT_TRUE(info.m_strScheme == u"");
    EXPECT_TRUE(info.m_strUser == u"");
    EXPECT_TRUE(info.m_strPassword == u"secret");
    EXPECT_EQ(info.m_nPort, 0);
    EXPECT_TRUE(info.m_strPath == u"");
    EXPECT_EQ(items_of(info), (Items{{u"a", u"1"}, {u"b", u"3"}}));
    // From a text that lies in the record itself.
    info.m_strHost = u"ssh://again";
    EXPECT_EQ(info.Parse_URL(info.m_strHost, 1), 1);
    EXPECT_TRUE(info.m_strHost == u"again");
}

TEST(UrlInfo, Ports) {
    const std::pair<const char16_t*, int> rows[] = {
        {u"", 0},         {u"host", 0},        {u"host:22", 1},     {u":", 1},   {u"[::1]", 0},
        {u"[::1]:22", 1}, {u"2001:db8::1", 0}, {u"[::1]:22:23", 0}, {u"a]:1", 1}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(CUrlInfo::IsURLWithPort(text), expected) << CAnsiString(text);
    }
}

TEST(UrlText, EscapesAndBack) {
    const CString all(u" %&+/:=?@-_~\u00E9\u4E2D");
    const CString escaped = EscapeUrlText(all);
    EXPECT_TRUE(escaped == u"+%25%26%2B%2F%3A%3D%3F%40-_~\u00E9\u4E2D");
    EXPECT_EQ(UnescapeUrlText(escaped), all);
    const std::pair<const char16_t*, std::u16string_view> rows[] = {
        {u"a%41b", u"aAb"}, {u"%4a%4A", u"JJ"},  {u"%", u"%"},
        {u"%4", u"%4"},     {u"%4-", u"%4-"},    {u"%%41", u"%A"},
        {u"%zz", u"S"},     {u"%E9", u"\u00E9"}, {u"%g0", std::u16string_view(u"\0", 1)},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(UnescapeUrlText(text).View(), expected) << CAnsiString(text);
    }
}

}  // namespace
