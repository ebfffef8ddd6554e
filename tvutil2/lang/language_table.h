// The languages that the family speaks.
#pragma once

#include "tvutil2/platform/base/locale.h"

#include <algorithm>
#include <array>

namespace tvutil2 {

struct Language {
    LANGID id;
    const char16_t* name;              ///< as a list shows it, in English
    const char16_t* satellite_suffix;  ///< ends the file name of a product's module for it
};

/// In the order in which lists show them. English has no satellite: it is in the module itself.
inline constexpr std::array<Language, 11> kLanguages{{
    {0x0409, u"English", u""},
    {0x0804, u"Chinese simplified", u"CHS.dll"},
    {0x0404, u"Chinese traditional", u"CHT.dll"},
    {0x040C, u"French", u"FRA.dll"},
    {0x0407, u"German", u"DEU.dll"},
    {0x0411, u"Japanese", u"JPN.dll"},
    {0x0412, u"Korean", u"KOR.dll"},
    {0x0416, u"Portuguese", u"PTB.dll"},
    {0x0419, u"Russian", u"RUS.dll"},
    {0x041B, u"Slovak", u"SKY.dll"},
    {0x0C0A, u"Spanish", u"ESN.dll"},
}};

inline constexpr WORD kEnglish = 0x0409;

/// The row for a language; English for one that isn't spoken. Of Chinese, all but the simplified
/// one read the traditional one.
[[nodiscard]] inline const Language& spoken_language(LANGID language) {
    constexpr WORD kChinese = 0x04;
    constexpr LANGID kSimplified = 0x0804;
    const auto* const row =
        std::ranges::find(kLanguages, PRIMARYLANGID(language),
                          [](const Language& each) { return PRIMARYLANGID(each.id); });
    if (row == kLanguages.end()) return kLanguages.front();
    return PRIMARYLANGID(language) == kChinese && language != kSimplified ? *(row + 1) : *row;
}

}  // namespace tvutil2
