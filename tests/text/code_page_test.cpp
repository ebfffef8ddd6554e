#include "tvutil2/text/code_page.h"

#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/text/charset.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string_view>
#include <thread>
#include <vector>

namespace {

TEST(CodePageList, OffersEveryPageButHzInTheOrderOfDisplay) {
    CCodePageList list;
    ASSERT_EQ(list.GetCount(), 35) << "36 pages, and nothing decodes one of them";
    EXPECT_EQ(list.GetCodePage(0), 0xFFFFFFFF);
    EXPECT_EQ(list.GetName(0), std::u16string_view(u"Default Language"));
    EXPECT_EQ(list.GetCodePage(1), 65001U);
    const int japanese = list.FindIndex(932);
    EXPECT_EQ(list.FindIndex(51932), japanese - 1);
    EXPECT_EQ(list.GetName(japanese), std::u16string_view(u"Japanese (Shift-JIS)"));
    EXPECT_EQ(list.GetCharSet(japanese), 0x80);
    EXPECT_EQ(list.GetLangID(japanese), 20U);
    EXPECT_EQ(list.GetCodePage(34), 1252U);
    for (int i = 0; i + 1 < list.GetCount(); ++i) {
        EXPECT_LE(list.GetLangID(i), list.GetLangID(i + 1));
        EXPECT_EQ(list.FindIndex(list.GetCodePage(i)), i);
    }
    for (const unsigned int page : {52936U, 12345U, 0U}) EXPECT_EQ(list.FindIndex(page), -1);
    for (const int index : {-1, 35}) {
        EXPECT_EQ(list.GetCodePage(index), GetACP());
        EXPECT_EQ(list.GetName(index), std::u16string_view());
        EXPECT_EQ(list.GetCharSet(index), 1);
        EXPECT_EQ(list.GetLangID(index), 0U);
    }
}

TEST(CodePageList, ManyThreadsMayBeTheFirst) {
    std::vector<std::thread> threads;
    std::vector<int> counts(4);
    for (auto& count : counts) {
        threads.emplace_back([&count] {
            count = CCodePageList().GetCount() + static_cast<int>(CCodePage(1252).charSet);
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(counts, std::vector<int>(4, 35));
}

TEST(CodePage, MakesAStoredNumberUsable) {
    const CCodePage known(1252);
    EXPECT_EQ(known.codePage, 1252U);
    EXPECT_EQ(known.charSet, 0U);
    for (const unsigned int number : {0xFFFFFFFF, 12345U, 52936U, 0U}) {
        const CCodePage other(number);
        EXPECT_EQ(other.codePage, CCodePage::GetDefault());
        EXPECT_EQ(other.charSet, 1U);
    }
}

struct Language {
    const char* locale;
    unsigned int page;
};

void PrintTo(const Language& language, std::ostream* out) {
    *out << language.locale;
}

class DefaultOfLanguage : public ::testing::TestWithParam<Language> {};

TEST_P(DefaultOfLanguage, IsThePageThatItsHostsUse) {
    for (const auto* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) setenv(name, GetParam().locale, 1);
    unsetenv("LANGUAGE");
    EXPECT_EQ(CCodePage::GetDefault(), GetParam().page);
}

INSTANTIATE_TEST_SUITE_P(Locales, DefaultOfLanguage,
                         ::testing::Values(Language{"zh_TW.UTF-8", 950},
                                           Language{"zh_HK.UTF-8", 950},
                                           Language{"zh_CN.UTF-8", 20936},
                                           Language{"ja_JP.UTF-8", 51932},
                                           Language{"ko_KR.UTF-8", 949},
                                           Language{"de_DE.UTF-8", 65001}, Language{"C", 65001}));

// As the products' code writes it.
TEST(CodePageChoice, NumbersStandForPages) {
    const CCodePage page = 1252;
    const CCharSetDecoder decoder = page.codePage;
    EXPECT_EQ(decoder.GetCodePage(), 1252U);
}

}  // namespace
