#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <utility>
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

// An extended dialog template, taken apart.
struct Item {
    DWORD id;
    std::u16string kind;
    DWORD style;
    std::u16string place;  // four numbers
    std::u16string text;
};

class Template {
  public:
    Template(const void* data, std::size_t size) {
        m_units.resize(size / 2);
        std::memcpy(m_units.data(), data, m_units.size() * 2);
        m_next = 8;  // version, signature, help id, extended style, style
        const auto count = m_units[m_next++];
        items.push_back({0, u"", 0, take(4), (text(), text(), text())});
        m_next += 3;  // size and weight of the font
        text();
        for (int i = 0; i < count; ++i) {
            m_next += m_next % 2;
            Item item{};
            m_next += 4;
            item.style = number();
            item.place = take(4);
            item.id = number();
            item.kind = text();
            item.text = text();
            ++m_next;  // no data of its own
            items.push_back(item);
        }
        EXPECT_EQ(m_next, m_units.size());
    }

    std::vector<Item> items;  // the dialog itself first

  private:
    std::u16string take(std::size_t count) {
        auto units = m_units.substr(m_next, count);
        m_next += count;
        return units;
    }
    DWORD number() {
        const auto units = take(2);
        return units[0] | static_cast<DWORD>(units[1]) << 16;
    }
    // Of a class, 0xFFFF and its number.
    std::u16string text() {
        if (m_units.at(m_next) == 0xFFFF) return take(2);
        auto units = take(m_units.find(u'\0', m_next) - m_next);
        ++m_next;
        return units;
    }

    std::u16string m_units;
    std::size_t m_next = 0;
};

std::vector<Item> dialog(WORD id, LANGID language) {
    const auto module = tvutil2::library_instance();
    const auto found = FindResourceExW(module, RT_DIALOG, MAKEINTRESOURCEW(id), language);
    if (found == nullptr) return {};
    return Template(LockResource(LoadResource(module, found)), SizeofResource(module, found)).items;
}

TEST(Translations, HaveEveryDialogInEveryLanguage) {
    const struct {
        WORD id;
        std::u16string size;
        std::vector<std::pair<DWORD, std::u16string>> texts;  // the dialog's, and those of ids
    } dialogs[] = {
        {14012, {253, 65}, {{0, u"Import Previous Data"}, {1, u"&Yes"}, {7, u"&No"}}},
        {14013,
         {287, 138},
         {{0, u"User Data Folder"},
          {14022,
           u"This seems to be your first time running a Tolvarine Version %d product.\n\nThe "
           u"configurations and sessions of all Tolvarine products will be saved in the following "
           u"User Data Folder."},
          {14015, u""},
          {14017, u"..."},
          {14016, u"Change default path"},
          {1, u"OK"}}},
        {14014,
         {285, 280},
         {{0, u"Experimental Features"},
          {14020, u""},
          {14021, u"Experimental Feature Guide"},
          {1, u"OK"},
          {2, u"Cancel"}}},
        {14029,
         {181, 90},
         {{0, u"Help"},
          {14030, u"Use &Offline Help documentation"},
          {14032, u"&Program to open the Help PDF:"},
          {14031, u""},
          {1, u"OK"},
          {2, u"Cancel"}}},
        {14034,
         {253, 108},
         {{0, u"Package Verify - Error"}, {1, u"Install Anyways"}, {2, u"Do Not Install"}}},
    };
    for (const auto& [id, size, texts] : dialogs) {
        const auto english = dialog(id, 0x0409);
        ASSERT_FALSE(english.empty()) << id;
        EXPECT_EQ(english[0].place.substr(2), size);
        for (const auto& [item, text] : texts) {
            const auto found = std::find_if(english.begin(), english.end(),
                                            [item = item](const Item& i) { return i.id == item; });
            ASSERT_NE(found, english.end()) << item;
            EXPECT_EQ(found->text, text);
        }
        for (const auto& language : tvutil2::kLanguages) {
            const auto items = dialog(id, language.id);
            ASSERT_EQ(items.size(), english.size()) << language.id << ' ' << id;
            for (std::size_t i = 0; i < items.size(); ++i) {
                const auto& [number, kind, style, place, text] = items[i];
                const auto& model = english[i];
                EXPECT_EQ(number, model.id);
                EXPECT_EQ(kind, model.kind);
                EXPECT_EQ(style, model.style);
                EXPECT_EQ(place, model.place);
                EXPECT_EQ(specifiers(text), specifiers(model.text));
                const bool is_common = model.text.size() <= 3;  // "", "OK", "...", "&No"
                EXPECT_TRUE(is_common || (text == model.text) == (language.id == 0x0409))
                    << language.id << ' ' << id << ' ' << i;
            }
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
