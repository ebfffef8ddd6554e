#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

using Strings = std::map<unsigned int, std::u16string>;

// All strings that the library has in exactly this language.
Strings strings_in(LANGID language) {
    const auto module = tvutil2::library_instance();
    Strings strings;
    for (unsigned int block = 1; block <= 0x1000; ++block) {
        const auto found = FindResourceExW(module, RT_STRING,
                                           MAKEINTRESOURCEW(static_cast<WORD>(block)), language);
        if (found == nullptr) continue;
        const auto* bytes =
            static_cast<const std::byte*>(LockResource(LoadResource(module, found)));
        for (unsigned int index = 0; index < 16; ++index) {
            const auto text =
                tvutil2::string_in_block({bytes, SizeofResource(module, found)}, index);
            if (!text.empty()) strings.emplace((block - 1) * 16 + index, text);
        }
    }
    return strings;
}

// "%s" and the like, in their order.
std::vector<std::u16string> specifiers(const std::u16string& text) {
    std::vector<std::u16string> found;
    for (std::size_t i = text.find(u'%'); i != text.npos; i = text.find(u'%', i + 2)) {
        found.push_back(text.substr(i, 2));
    }
    return found;
}

TEST(Translations, HaveEveryStringWithTheSameSpecifiersInEveryLanguage) {
    const auto english = strings_in(0x0409);
    EXPECT_EQ(english.size(), 35U);
    // The same in every language: two addresses.
    const std::vector<unsigned int> addresses{14106, 14108};
    for (const auto& language : tvutil2::kLanguages) {
        const auto strings = strings_in(language.id);
        ASSERT_EQ(strings.size(), english.size()) << language.id;
        std::map<std::u16string, unsigned int> seen;
        for (const auto& [id, text] : english) {
            ASSERT_TRUE(strings.contains(id)) << language.id << ' ' << id;
            const auto& translated = strings.at(id);
            EXPECT_EQ(specifiers(translated), specifiers(text)) << language.id << ' ' << id;
            EXPECT_LE(translated.size(), 255U) << language.id << ' ' << id;
            EXPECT_EQ(std::count(translated.begin(), translated.end(), u'\n'),
                      std::count(text.begin(), text.end(), u'\n'))
                << language.id << ' ' << id;
            EXPECT_EQ(translated.find(u'\uFFFD'), translated.npos) << language.id << ' ' << id;
            const bool is_address = id == addresses[0] || id == addresses[1];
            EXPECT_EQ(translated == text, is_address || language.id == 0x0409)
                << language.id << ' ' << id;
            EXPECT_TRUE(seen.emplace(translated, id).second) << language.id << ' ' << id;
        }
    }
}

// What a script has to escape arrives as it is meant, and letters survive the script's code page.
TEST(Translations, ReadAsWritten) {
    const struct {
        LANGID language;
        unsigned int id;
        std::u16string text;
    } cases[] = {
        {0x0409, 14134, u"A name cannot contain any of following characters:\n\\ / : * ? \" < > |"},
        {0x0409, 14135,
         u"Your current user data folder is:\n[%s]\n\n This program will terminate to change the "
         u"folder. Continue changing?"},
        {0x0409, 14101,
         u"The session folder path has been changed.\n\n\nDo you wish to move your existing %s "
         u"session files to the new folder?"},
        {0x0407, 14130, u"W\u00E4hlen Sie einen Ordner aus:"},
        {0x0804, 14130, u"\u8BF7\u9009\u62E9\u6587\u4EF6\u5939\uFF1A"},
        {0x0404, 14130, u"\u8ACB\u9078\u53D6\u8CC7\u6599\u593E\uFF1A"},
        {0x040C, 14130, u"S\u00E9lectionnez un dossier\u00A0:"},
    };
    for (const auto& c : cases) EXPECT_EQ(strings_in(c.language).at(c.id), c.text) << c.id;
}

}  // namespace
