#include "tvutil2/platform/codepage/catalogue.h"

#include <algorithm>
#include <iterator>

namespace tvutil2::codepage {
namespace {

// By number. The converters are ICU's tables of the platform's own pages where it has them under a
// name with "windows"; the others are the standard's. Every page keeps ASCII as it is.
constexpr CatalogueRow kRows[] = {
    {437, "ibm-437_P100-1995"},
    {708, "ASMO-708"},
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
    {20936, "EUC-CN", {{0xA1, 0xF7}}},
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
    {51949, "EUC-KR", {{0xA1, 0xFE}}},
};

// The micro sign of the PC's pages is the one of Latin-1 on the platform, not the Greek letter.
constexpr Difference kDifferences[] = {
    {437, 0xE6, u'\u00B5'}, {852, 0xAA, u'\u00AC'}, {860, 0xE6, u'\u00B5'},
    {861, 0xE6, u'\u00B5'}, {862, 0xE6, u'\u00B5'}, {863, 0xE6, u'\u00B5'},
    {865, 0xE6, u'\u00B5'}, {869, 0x88, u'\u00B7'}, {869, 0xEF, u'\u0384'},
};

}  // namespace

std::span<const Difference> differences() {
    return kDifferences;
}

const CatalogueRow* find_row(UINT number) {
    const auto* const row =
        std::lower_bound(std::begin(kRows), std::end(kRows), number,
                         [](const CatalogueRow& left, UINT n) { return left.number < n; });
    return row != std::end(kRows) && row->number == number ? row : nullptr;
}

std::size_t row_index(const CatalogueRow& row) {
    return static_cast<std::size_t>(&row - std::begin(kRows));
}

std::size_t catalogue_size() {
    return std::size(kRows);
}

}  // namespace tvutil2::codepage
