#include "tvutil2/platform/codepage/catalogue.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace tvutil2::codepage {
namespace {

constexpr char16_t kUndefined = 0xFFFF;

// The DOS page of the Arabic standard ASMO 708: its letters are those of ISO 8859-6, between them
// lie French letters and the line drawing of the PC.
constexpr char16_t kAsmo708[] =
    u"\u2502\u2524\u00E9\u00E2\u2561\u00E0\u2562\u00E7"
    u"\u00EA\u00EB\u00E8\u00EF\u00EE\u2556\u2555\u2563"
    u"\u2551\u2557\u255D\u00F4\u255C\u255B\u00FB\u00F9"
    u"\u2510\u2514\u009A\u009B\u009C\u009D\u009E\u009F"
    u"\uF8C1\u2534\u252C\u251C\u00A4\u2500\u253C\u255E"
    u"\u255F\u255A\u2554\u2569\u060C\u2566\u00AB\u00BB"
    u"\u2591\u2592\u2593\u2560\u2550\u256C\u2567\u2568"
    u"\u2564\u2565\u2559\u061B\u2558\u2552\u2553\u061F"
    u"\u256B\u0621\u0622\u0623\u0624\u0625\u0626\u0627"
    u"\u0628\u0629\u062A\u062B\u062C\u062D\u062E\u062F"
    u"\u0630\u0631\u0632\u0633\u0634\u0635\u0636\u0637"
    u"\u0638\u0639\u063A\u2588\u2584\u258C\u2590\u2580"
    u"\u0640\u0641\u0642\u0643\u0644\u0645\u0646\u0647"
    u"\u0648\u0649\u064A\u064B\u064C\u064D\u064E\u064F"
    u"\u0650\u0651\u0652\uF8C2\uF8C3\uF8C4\uF8C5\uF8C6"
    u"\uF8C7\u256A\u2518\u250C\u00B5\u00A3\u25A0\u00A0";
static_assert(std::size(kAsmo708) == 128 + 1);

// By number. The converters are ICU's tables of the platform's own pages where it has them under a
// name with "windows"; the others are the standard's. Every page keeps ASCII as it is.
constexpr CatalogueRow kRows[] = {
    {437, "ibm-437_P100-1995"},
    {708, nullptr, {}, u'?', PageKind::text, kAsmo708},
    {720, "ibm-720_P100-1997"},
    {737, "ibm-737_P100-1997"},
    {775, "ibm-775_P100-1996"},
    {850, "ibm-850_P100-1995"},
    {852, "ibm-852_P100-1995"},
    {855, "ibm-855_P100-1995"},
    {857, "ibm-857_P100-1995"},
    {858, "ibm-858_P100-1997"},
    {860, "ibm-860_P100-1995"},
    {861, "ibm-861_P100-1995"},
    {862, "ibm-862_P100-1995"},
    {863, "ibm-863_P100-1995"},
    {864, "ibm-864_X110-1999"},
    {865, "ibm-865_P100-1995"},
    {866, "ibm-866_P100-1995"},
    {869, "ibm-869_P100-1995"},
    {874, "windows-874-2000"},
    {932, "ibm-943_P15A-2003", {{0x81, 0x9F}, {0xE0, 0xFC}}, u'\u30FB'},
    {936, "windows-936-2000", {{0x81, 0xFE}}},
    {949, "windows-949-2000", {{0x81, 0xFE}}},
    {950, "windows-950-2000", {{0x81, 0xFE}}},
    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"},
    {1252, "ibm-5348_P100-1997"},
    {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"},
    {1255, "ibm-9447_P100-2002"},
    {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"},
    {1258, "ibm-5354_P100-1998"},
    {20127, "US-ASCII"},
    {20866, "ibm-878_P100-1996"},
    {20936, "EUC-CN", {{0xA1, 0xF7}}, u'?', PageKind::standard},
    {21866, "ibm-1168_P100-2002"},
    {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},
    {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},
    {28599, "ISO-8859-9"},
    {28600, "ISO-8859-10"},
    {28603, "ISO-8859-13"},
    {28604, "ISO-8859-14"},
    {28605, "ISO-8859-15"},
    {38598, "ISO-8859-8"},
    {51932, nullptr, {{0x8E, 0x8E}, {0xA1, 0xFE}}, u'\u30FB', PageKind::euc_jp},
    {51949, "windows-949-2000", {{0xA1, 0xAC}, {0xB0, 0xFD}}, u'?', PageKind::standard},
    {54936, "gb18030", {{0x81, 0xFE}}, u'?', PageKind::four_byte},
};

// A byte that a standard leaves free is a control character or a private one on the platform; ICU's
// tables of other makers leave it without a character or follow a later edition.
constexpr Difference kDifferences[] = {
    // The micro sign of the PC's pages is the one of Latin-1, not the Greek letter.
    {437, 0xE6, 0xE6, u'\u00B5'},
    {720, 0x80, 0x81, u'\u0080'},
    {720, 0x84, 0x84, u'\u0084'},
    {720, 0x86, 0x86, u'\u0086'},
    {720, 0x8D, 0x90, u'\u008D'},
    {852, 0xAA, 0xAA, u'\u00AC'},
    {860, 0xE6, 0xE6, u'\u00B5'},
    {861, 0xE6, 0xE6, u'\u00B5'},
    {862, 0xE6, 0xE6, u'\u00B5'},
    {863, 0xE6, 0xE6, u'\u00B5'},
    // Isolated forms where ICU has medial ones, and the mark itself instead of its spacing form.
    {864, 0x9F, 0x9F, kUndefined},
    {864, 0xD7, 0xD7, u'\uFEC1'},
    {864, 0xD8, 0xD8, u'\uFEC5'},
    {864, 0xF1, 0xF1, u'\u0651'},
    {865, 0xE6, 0xE6, u'\u00B5'},
    {869, 0x88, 0x88, u'\u00B7'},
    {869, 0xEF, 0xEF, u'\u0384'},
    // Single bytes outside the standard.
    {932, 0x80, 0x80, u'\u0080'},
    {932, 0xA0, 0xA0, u'\uF8F0'},
    {932, 0xFD, 0xFF, u'\uF8F1'},
    {1253, 0xAA, 0xAA, u'\uF8F9'},
    {1253, 0xD2, 0xD2, u'\uF8FA'},
    {1253, 0xFF, 0xFF, u'\uF8FB'},
    {1255, 0xCA, 0xCA, u'\u05BA'},
    {1255, 0xD9, 0xDF, u'\uF88D'},
    {1255, 0xFB, 0xFC, u'\uF894'},
    {1255, 0xFF, 0xFF, u'\uF896'},
    {1257, 0xA1, 0xA1, u'\uF8FC'},
    {1257, 0xA5, 0xA5, u'\uF8FD'},
    {20936, 0x80, 0x80, u'\u0080'},
    {20936, 0x81, 0xA0, u'\uF8D8'},
    {20936, 0xF8, 0xFF, u'\uF8F8'},
    // The Belarusian letter in two places of the line drawing.
    {21866, 0xAE, 0xAE, u'\u045E'},
    {21866, 0xBE, 0xBE, u'\u040E'},
    {28596, 0xA1, 0xA3, u'\uF7C8'},
    {28596, 0xA5, 0xAB, u'\uF7CB'},
    {28596, 0xAE, 0xBA, u'\uF7D2'},
    {28596, 0xBC, 0xBE, u'\uF7DF'},
    {28596, 0xC0, 0xC0, u'\uF7E2'},
    {28596, 0xDB, 0xDF, u'\uF7E3'},
    {28596, 0xF3, 0xFF, u'\uF7E8'},
    // The first edition of the standard: Greek breathings, and no signs of money yet.
    {28597, 0xA1, 0xA1, u'\u02BD'},
    {28597, 0xA2, 0xA2, u'\u02BC'},
    {28597, 0xA4, 0xA5, u'\uF7C2'},
    {28597, 0xAA, 0xAA, u'\uF7C4'},
    {28597, 0xAE, 0xAE, u'\uF7C5'},
    {28597, 0xD2, 0xD2, u'\uF7C6'},
    {28597, 0xFF, 0xFF, u'\uF7C7'},
    // One table under two numbers, for text in the order of display and of reading.
    {28598, 0xA1, 0xA1, u'\uF79C'},
    {28598, 0xAF, 0xAF, u'\u203E'},
    {28598, 0xBF, 0xDE, u'\uF79D'},
    {28598, 0xFB, 0xFF, u'\uF7BD'},
    {38598, 0xA1, 0xA1, u'\uF79C'},
    {38598, 0xAF, 0xAF, u'\u203E'},
    {38598, 0xBF, 0xDE, u'\uF79D'},
    {38598, 0xFB, 0xFF, u'\uF7BD'},
    {51932, 0x80, 0x80, u'\u0080'},
    {51932, 0xA0, 0xA0, u'\uF8F0'},
    {51932, 0xFF, 0xFF, u'\uF8F3'},
    {51949, 0x80, 0x9F, u'\u0080'},
    {51949, 0xA0, 0xA0, u'\uF8E6'},
    {51949, 0xAD, 0xAF, u'\uF8E7'},
    {51949, 0xFE, 0xFF, u'\uF8EA'},
};

constexpr PairDifference kPairDifferences[] = {
    {20936, 0xA3A7, u'\uFF07'},  // the full-width apostrophe, not an acute accent
};

// No two pages may share a place.
constexpr bool has_places_for_all() {
    std::array<bool, kSlots> taken{};
    for (const auto& row : kRows) {
        if (taken[slot_of(row.number)]) return false;
        taken[slot_of(row.number)] = true;
    }
    return true;
}
static_assert(has_places_for_all());

}  // namespace

std::span<const Difference> differences() {
    return kDifferences;
}

std::span<const PairDifference> pair_differences() {
    return kPairDifferences;
}

std::span<const CatalogueRow> catalogue() {
    return kRows;
}

const CatalogueRow* find_row(UINT number) {
    const auto* const row =
        std::lower_bound(std::begin(kRows), std::end(kRows), number,
                         [](const CatalogueRow& left, UINT n) { return left.number < n; });
    return row != std::end(kRows) && row->number == number ? row : nullptr;
}

}  // namespace tvutil2::codepage
