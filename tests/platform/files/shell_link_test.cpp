#include "tvutil2/platform/files/shell_link.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/find.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include "tests/support/profile.h"

namespace {

// A link object with both of its interfaces.
class Link {
  public:
    Link() {
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                   &object),
                  S_OK);
        m_fields = static_cast<IShellLinkW*>(object);
        EXPECT_EQ(m_fields->QueryInterface(IID_IPersistFile, &object), S_OK);
        m_file = static_cast<IPersistFile*>(object);
    }
    ~Link() {
        EXPECT_EQ(m_file->Release(), 1U);
        EXPECT_EQ(m_fields->Release(), 0U);
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    IShellLinkW* operator->() const { return m_fields; }
    [[nodiscard]] IPersistFile& file() const { return *m_file; }

  private:
    IShellLinkW* m_fields = nullptr;
    IPersistFile* m_file = nullptr;
};

TEST(ShellLink, EveryFieldComesBackWhateverItHolds) {
    const std::u16string texts[] = {
        u"",
        u"C:\\Program Files\\x y\\a.exe",
        u" leading and trailing ",
        u"line\nbreak\r\ttab \\n \\u0041 \\\\ = [Desktop Entry]",
        u"\u00E4\u20AC\U0001F600",
        std::u16string(u"lone \xD800 and \xDC00\xD800 swapped"),
        std::u16string(u"control \x01\x1F\x7F"),
        std::u16string(900, u'\\'),
    };
    const auto path = tests::platform_path(tests::new_folder() + "/a.lnk");
    for (const auto& text : texts) {
        const Link saved;
        saved->SetPath(text.c_str());
        saved->SetDescription(text.c_str());
        saved->SetArguments(text.c_str());
        saved->SetIconLocation(text.c_str(), -7);
        saved->SetHotkey(0xFFFF);
        ASSERT_EQ(saved.file().Save(path.c_str(), TRUE), S_OK);

        const Link loaded;
        ASSERT_EQ(loaded.file().Load(path.c_str(), STGM_READ), S_OK);
        char16_t buffer[1024];
        EXPECT_EQ(loaded->GetPath(buffer, 1024, nullptr, SLGP_RAWPATH),
                  text.empty() ? S_FALSE : S_OK);
        EXPECT_EQ(std::u16string(buffer), text);
        loaded->GetDescription(buffer, 1024);
        EXPECT_EQ(std::u16string(buffer), text);
        loaded->GetArguments(buffer, 1024);
        EXPECT_EQ(std::u16string(buffer), text);
        int index = 0;
        loaded->GetIconLocation(buffer, 1024, &index);
        EXPECT_EQ(std::u16string(buffer), text);
        EXPECT_EQ(index, -7);
        WORD key = 0;
        loaded->GetHotkey(&key);
        EXPECT_EQ(key, 0xFFFF);
        loaded->GetPath(buffer, 5, nullptr, 0);
        EXPECT_EQ(std::u16string(buffer), text.substr(0, 4));
    }
}

TEST(ShellLink, IsADesktopEntryThatRunsTheTarget) {
    const auto folder = tests::new_folder();
    const Link link;
    link->SetPath((tests::platform_path(folder) + u"\\50% $x.exe").c_str());
    link->SetArguments(u"-url \"a b\" c");
    link->SetDescription(u"two\nlines");
    link->SetIconLocation(u"C:\\icons\\x.png", 0);
    ASSERT_EQ(link.file().Save(tests::platform_path(folder + "/x.desktop").c_str(), FALSE), S_OK);
    const auto text = tests::read_file(folder + "/x.desktop");
    for (const auto& line :
         {std::string("[Desktop Entry]\nType=Application\n"), std::string("\nName=x\n"),
          std::string("\nComment=two\\nlines\n"), std::string("\nIcon=/icons/x.png\n"),
          "\nExec=\"" + folder + "/50%% \\\\$x.exe\" \"-url\" \"a b\" \"c\"\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "\nin\n" << text;
    }
}

TEST(ShellLink, HostileFilesAreRefusedAndChangeNothing) {
    const auto folder = tests::new_folder();
    const auto bad_format = HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
    const std::string header = "[Desktop Entry]\n";
    const std::string cases[] = {
        "",
        "X-Tvutil-Path=C:\n" + header,
        header + "Exec=/bin/sh\n",
        header + "X-Tvutil-Path=a\\",
        header + "X-Tvutil-Path=a\\q",
        header + "X-Tvutil-Path=a\\u12",
        header + "X-Tvutil-Path=a\\u12-4",
        header + "X-Tvutil-Path=\xFF\xFE",
        header + "X-Tvutil-Path=a\nX-Tvutil-HotKey=65536\n",
        header + "X-Tvutil-Path=a\nX-Tvutil-IconIndex=99999999999\n",
        header + "[Other]\nX-Tvutil-Path=a\n",
        header + "X-Tvutil-Path=a\n" + std::string(2000000, '#'),
        std::string(100, '\0'),
    };
    const Link link;
    link->SetPath(u"C:\\before");
    const auto path = tests::platform_path(folder + "/x.lnk");
    for (const auto& content : cases) {
        tests::write_file(folder + "/x.lnk", content);
        EXPECT_EQ(link.file().Load(path.c_str(), STGM_READ), bad_format) << content.substr(0, 60);
    }
    EXPECT_EQ(link.file().Load(tests::platform_path(folder).c_str(), STGM_READ), bad_format);
    EXPECT_EQ(link.file().Load(u"C:\\no\\such", STGM_READ),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    char16_t buffer[16];
    link->GetPath(buffer, 16, nullptr, 0);
    EXPECT_EQ(std::u16string(buffer), u"C:\\before");
    EXPECT_EQ(link.file().Save(nullptr, TRUE), E_FAIL);
    EXPECT_EQ(link.file().Save(tests::platform_path(folder + "/no/x").c_str(), TRUE),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
}

TEST(ShellLink, ResolveAndFindData) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/target", "12345");
    const Link link;
    link->SetPath(tests::platform_path(folder + "/TARGET").c_str());
    EXPECT_EQ(link->Resolve(nullptr, SLR_UPDATE), S_OK);
    WIN32_FIND_DATAW data{};
    char16_t buffer[260];
    EXPECT_EQ(link->GetPath(buffer, 260, &data, 0), S_OK);
    EXPECT_EQ(data.nFileSizeLow, 5U);
    std::filesystem::remove(folder + "/target");
    EXPECT_EQ(link->Resolve(nullptr, SLR_NO_UI), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(link->GetPath(buffer, 260, &data, 0), S_OK);
    EXPECT_EQ(data.nFileSizeLow, 0U);
}

TEST(Com, CreationRefusesWhatItDoesNotKnow) {
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(IID_IUnknown, nullptr, 1, IID_IUnknown, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, 1, CLSID_ShellLink, &object),
              E_NOINTERFACE);
    EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, 1, IID_IUnknown, nullptr), E_POINTER);
}

}  // namespace
