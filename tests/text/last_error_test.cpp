// What succeeds leaves the caller's last error alone, the first call that makes tables and reads
// settings included.
#include "tvutil2/platform/base/last_error.h"

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/frame/base64.h"
#include "tvutil2/frame/dll_loader.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/code_page.h"
#include "tvutil2/text/text_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/profile.h"

namespace {

BOOL take_page(char16_t* /*number*/) {
    return TRUE;
}

void read_product() {
    CRegistry key;
    ASSERT_NE(key.Open(HKEY_LOCAL_MACHINE, u"Software\\Tolvarine\\Pelrin\\8", 1, KEY_ALL_ACCESS),
              0);
    ASSERT_NE(key.SetValue(u"Version", u"8.0.0061"), 0);
    key.Close();
    SetLastError(4711);
    EXPECT_EQ(TvGetProductBuildVersion(1, 8), u"0061");
}

void convert_texts() {
    CAnsiString narrow(std::u16string(5000, u'\u00E9').c_str());
    narrow += u"\u4E2D";
    EXPECT_EQ(CString(narrow).GetLength(), 5001);
    CStringA bytes;
    Utf16ToUtf8(u"\u00E9", bytes);
    Utf16ToAnsi(u"\u00E9", bytes);
    CString text;
    Utf8ToUtf16("\xC3\xA9", text);
    std::string long_text;
    CTextFileBase::ConvertWcharToString(std::u16string(5000, u'\u00E9').c_str(), long_text, 54936,
                                        nullptr, 0);
    std::u16string wide;
    CTextFileBase::ConvertCharToWstring(long_text.c_str(), wide, 54936);
    EXPECT_EQ(wide.size(), 5000U);
}

void write_and_read_files() {
    const auto path = tests::platform_path(tests::new_folder() + "/text");
    CTextFileWrite writer(path.c_str(), CTextFileBase::TE_ANSI);
    writer << std::u16string(3000, u'\u00E9');
    writer.Close();
    CTextFileRead reader(path.c_str());
    std::string text;
    EXPECT_TRUE(reader.Read(text, "\n"));
    reader.Close();
    CStdioFile file(path.c_str(), CFile::modeRead | CFile::shareDenyNone);
    CString line;
    EXPECT_TRUE(file.ReadString(line));
    EXPECT_FALSE(file.ReadString(line));
    file.Close();
}

void use_streams() {
    for (const unsigned int page : {0U, 932U, 1252U, 51932U, 54936U, 65001U}) {
        CBuffer out;
        EXPECT_NE(CCharSetEncoder(page).Encode(u"a\u3042", out), 0);
        unsigned int code = 0;
        CCharSetDecoder decoder(page);
        while (out.Len() != 0) decoder.Decode(out.GetByte(), code, nullptr, nullptr);
    }
}

void compare_and_enumerate() {
    EXPECT_NE(lstrcmpiW(u"\u00E4", u"b"), 0);
    EXPECT_NE(EnumSystemCodePagesW(take_page, CP_INSTALLED), 0);
    EXPECT_GT(CCodePageList().GetCount(), 2);
    CCodePage::GetDefault();
    EXPECT_EQ(IsDBCSLeadByteEx(1252, 0x81), 0);
}

void use_values() {
    CBuffer bytes;
    EXPECT_EQ(CBase64::Decode(u"YWJj", bytes), 1);
    CString text;
    CBase64::Encode(bytes, text);
    CMapStringToString map(10);
    map[u"a"] = u"b";
    EXPECT_NE(CDllLoader(u"KERNEL32.DLL", 1).IsLoaded(), 0);
}

TEST(LastError, StaysWithWhatSucceeds) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"conversion", convert_texts},
        {"files", write_and_read_files},
        {"streams", use_streams},
        {"comparison", compare_and_enumerate},
        {"values", use_values},
        {"product", read_product},
        {"start", [] { TvCommonInitialize(2); }},
    };
    for (const auto& [what, run] : cases) {
        SetLastError(4711);
        run();
        EXPECT_EQ(GetLastError(), 4711U) << what;
    }
}

}  // namespace
