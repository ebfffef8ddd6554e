#include "tvutil2/framework/format.h"

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/utf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>

namespace {

template <class... Arguments>
std::string formatted(const std::string& format, const Arguments&... arguments) {
    CString out;
    out.Format(tvutil2::to_utf16_lossy(format).c_str(), arguments...);
    return tvutil2::to_utf8_lossy(out.View());
}

template <class Value>
std::string printed(const std::string& format, Value value) {
    const int length = std::snprintf(nullptr, 0, format.c_str(), value);
    std::string out(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(out.data(), out.size(), format.c_str(), value);
    out.pop_back();
    return out;
}

// Every combination of flags with some widths and precisions.
template <class Check>
void for_each_field(Check check) {
    for (int flags = 0; flags < 32; ++flags) {
        std::string text = "[%";
        for (int i = 0; i < 5; ++i) {
            if ((flags >> i & 1) != 0) text += "-+ #0"[i];
        }
        for (const auto* width : {"", "1", "12"}) {
            for (const auto* precision : {"", ".", ".0", ".1", ".3", ".11"}) {
                check(text + width + precision);
            }
        }
    }
}

TEST(Format, IntegersAreWhatTheRunTimeLibraryPrints) {
    for_each_field([](const std::string& field) {
        for (const auto value : {0, 1, -1, 8, 255, -32769, 2147483647, -2147483647 - 1}) {
            for (const auto* conversion :
                 {"d]", "i]", "u]", "x]", "X]", "o]", "hd]", "hu]", "hhd]", "hhx]"}) {
                const auto format = field + conversion;
                ASSERT_EQ(formatted(format, value), printed(format, value)) << format;
            }
        }
        for (const auto value : {0LL, -1LL, std::numeric_limits<long long>::max(),
                                 std::numeric_limits<long long>::min()}) {
            for (const auto* conversion : {"d]", "u]", "x]", "o]"}) {
                const auto expected = printed(field + "ll" + conversion, value);
                for (const auto* prefix : {"ll", "I64", "l", ""}) {
                    ASSERT_EQ(formatted(field + prefix + conversion, value), expected)
                        << field << conversion;
                }
            }
        }
    });
}

TEST(Format, RealsAreWhatTheRunTimeLibraryPrints) {
    for_each_field([](const std::string& field) {
        for (const auto value :
             {0.0, -0.0, 1.0, -1.5, 0.1, 2.5, 9.995, 99999.5, 1e5, 1e-5, 0.0001234, 1e100,
              -1.7976931348623157e308, 2.2250738585072014e-308, 123456789.125,
              std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
              std::numeric_limits<double>::quiet_NaN()}) {
            for (const auto* conversion : {"f]", "F]", "e]", "E]", "g]", "G]", "a]", "A]"}) {
                const auto format = field + conversion;
                ASSERT_EQ(formatted(format, value), printed(format, value))
                    << format << " " << value;
            }
        }
    });
    // Where rounding moves the exponent, the host's library forgets the zeros that "#" asks for.
    EXPECT_EQ(formatted("%g %#g", 999999.5, 999999.5), "1e+06 1.00000e+06");
    ASSERT_EQ(formatted("%.400f|%.1074f", 1e300, 5e-324),
              printed("%.400f|", 1e300) + printed("%.1074f", 5e-324));
}

TEST(Format, TextOfEveryKindIsTakenByItsType) {
    const CString wide(u"wide");
    const CStringA narrow("narrow");
    const std::u16string standard(u"standard");
    EXPECT_EQ(
        formatted("%s %S %s %s %ls %hs", wide, narrow, standard, u"literal", "narrow", u"wide"),
        "wide narrow standard literal narrow wide");
    EXPECT_EQ(formatted("[%6s|%-6s|%.2s|%5.1s|%.0s]", u"abc", "abc", u"abc", "abc", u"abc"),
              "[   abc|abc   |ab|    a|]");
    EXPECT_EQ(formatted("%s %S %.3s", static_cast<const char16_t*>(nullptr),
                        static_cast<const char*>(nullptr), nullptr),
              "(null) (null) (nu");
    EXPECT_EQ(formatted("%c%C%c%3c%-3c|", u'a', 'b', 99, u'd', 'e'), "abc  de  |");
}

// Text that isn't terminated is read as far as the precision says.
TEST(Format, PrecisionBoundsWhatIsRead) {
    const std::unique_ptr<char16_t[]> wide(new char16_t[3]{u'a', u'b', u'c'});
    const std::unique_ptr<char[]> narrow(new char[2]{'d', 'e'});
    EXPECT_EQ(formatted("%.3s%.2S", wide.get(), narrow.get()), "abcde");
}

TEST(Format, WidthAndPrecisionMayBeArguments) {
    EXPECT_EQ(formatted("[%*d|%*d|%-*d]", 4, 1, -4, 2, 4, 3), "[   1|2   |3   ]");
    EXPECT_EQ(formatted("[%.*s|%.*s|%*.*f]", 2, u"abc", -1, u"abc", 6, 1, 2.25), "[ab|abc|   2.2]");
    EXPECT_EQ(formatted("[%.*d|%.*f]", -3, 1, -3, 1.5), "[1|1.500000]");
    EXPECT_EQ(formatted("[%*d]", u"no number", 5), "[5]");
}

TEST(Format, WrongFormatsAreHarmless) {
    EXPECT_EQ(formatted("%d %s"), " ");
    EXPECT_EQ(formatted("%d", 1, 2, 3), "1");
    EXPECT_EQ(formatted("%s|%5s|%s|%s", 5, -1, 1.5, true), "5|   -1|1.5|1");
    EXPECT_EQ(formatted("%d|%x|%f", u"text", "text", u"text"), "text|text|text");
    EXPECT_EQ(formatted("%f|%d|%c", 2, 2.5, 2.5), "2.000000|2.5|2.5");
    EXPECT_EQ(formatted("%n%d", 1, 2), "2");
    EXPECT_EQ(formatted("100%"), "100%");
    EXPECT_EQ(formatted("%y %1$d %-", 1), "%y %1$d %-");
    EXPECT_EQ(formatted("%5%|%%", 1), "%|%");
    EXPECT_EQ(formatted(""), "");
    CString null_format(u"x");
    null_format.Format(nullptr, 1);
    EXPECT_TRUE(null_format.IsEmpty());
}

TEST(Format, WidthsAndPrecisionsAreBounded) {
    EXPECT_EQ(formatted("%99999999999999999999d", 1).size(), 65536U);
    EXPECT_EQ(formatted("%.99999999999d", 1).size(), 65536U);
    EXPECT_EQ(formatted("%*d", std::numeric_limits<int>::min(), 1).size(), 65536U);
    EXPECT_EQ(formatted("%.999999999f", 1.0).size(), 65538U);
}

TEST(Format, AddressesShowAllTheirDigits) {
    EXPECT_EQ(formatted("%p", reinterpret_cast<const void*>(0xBEEF)), "000000000000BEEF");
    EXPECT_EQ(formatted("[%-20p]", 0xBEEF), "[000000000000BEEF    ]");
}

}  // namespace
