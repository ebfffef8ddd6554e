// Every byte, every pair and every unit of the pages against the host's own converter, whose tables
// are others.
#include "tvutil2/platform/codepage/codepage.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace {

std::optional<char16_t> unit_of(UINT page, const std::string& bytes) {
    char16_t out[4];
    const int count = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(),
                                          static_cast<int>(bytes.size()), out, 4);
    return count == 1 ? std::optional(out[0]) : std::nullopt;
}

// Empty for a unit that the page doesn't hold.
std::string bytes_of(UINT page, char16_t unit) {
    char out[8];
    BOOL used = FALSE;
    const int count = WideCharToMultiByte(page, 0, &unit, 1, out, 8, nullptr, &used);
    return used != FALSE ? std::string() : std::string(out, static_cast<std::size_t>(count));
}

class Host {
  public:
    explicit Host(const char* name)
        : m_to_units(iconv_open("UTF-16LE", name)), m_to_bytes(iconv_open(name, "UTF-16LE")) {}
    ~Host() {
        iconv_close(m_to_units);
        iconv_close(m_to_bytes);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    [[nodiscard]] bool is_there() const { return m_to_units != reinterpret_cast<iconv_t>(-1); }
    [[nodiscard]] std::optional<char16_t> unit_of(std::string bytes) const {
        char16_t out[8];
        const auto size = convert(m_to_units, bytes.data(), bytes.size(),
                                  reinterpret_cast<char*>(out), sizeof out);
        return size == sizeof(char16_t) ? std::optional(out[0]) : std::nullopt;
    }
    [[nodiscard]] std::string bytes_of(char16_t unit) const {
        char out[8];
        const auto size =
            convert(m_to_bytes, reinterpret_cast<char*>(&unit), sizeof unit, out, sizeof out);
        return {out, size};
    }

  private:
    static std::size_t convert(iconv_t converter, char* from, std::size_t left, char* to,
                               std::size_t room) {
        const std::size_t whole = room;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter, &from, &left, &to, &room) != 0 || left != 0) return 0;
        iconv(converter, nullptr, nullptr, &to, &room);
        return whole - room;
    }

    iconv_t m_to_units;
    iconv_t m_to_bytes;
};

struct Page {
    UINT number;
    const char* host;
    /// Sequences whose unit is another one here than at the host, or none.
    std::map<std::string, std::optional<char16_t>> others = {};
    /// Units that lead to other bytes here than at the host.
    std::map<char16_t, std::string> ways = {};
};

void PrintTo(const Page& page, std::ostream* out) {
    *out << page.number;
}

// Where a standard is silent the platform has control characters and private ones.
bool is_control_or_private(char16_t unit) {
    return (unit >= 0x80 && unit < 0xA0) || (unit >= 0xE000 && unit < 0xF900);
}

class PageTables : public testing::TestWithParam<Page> {
  protected:
    void compare(const std::string& bytes) {
        const auto& page = GetParam();
        const auto unit = unit_of(page.number, bytes);
        const auto host_unit = m_host.unit_of(bytes);
        const auto other = page.others.find(bytes);
        if (other != page.others.end()) {
            ASSERT_EQ(unit, other->second) << testing::PrintToString(bytes);
        } else if (host_unit) {
            ASSERT_EQ(unit, host_unit) << testing::PrintToString(bytes);
        } else if (unit) {
            ASSERT_TRUE(is_control_or_private(*unit)) << testing::PrintToString(bytes);
        }
        if (!unit) return;
        m_units.insert(*unit);
        // Where several sequences mean one character, its own one means it, too.
        ASSERT_EQ(unit_of(page.number, bytes_of(page.number, *unit)), unit)
            << testing::PrintToString(bytes);
    }

    Host m_host{GetParam().host};
    std::set<char16_t> m_units;
};

TEST_P(PageTables, AgreeWithTheHost) {
    const auto& page = GetParam();
    ASSERT_TRUE(m_host.is_there()) << page.host;
    for (int first = 0; first < 256; ++first) {
        const auto byte = static_cast<char>(first);
        if (IsDBCSLeadByteEx(page.number, static_cast<BYTE>(first)) == FALSE) {
            compare(std::string(1, byte));
            continue;
        }
        ASSERT_EQ(unit_of(page.number, std::string(1, byte)), std::nullopt) << first;
        for (int second = 1; second < 256; ++second) {
            compare({byte, static_cast<char>(second)});
        }
    }
    for (unsigned int i = 1; i < 0x10000; ++i) {
        const auto unit = static_cast<char16_t>(i);
        if (i >= 0xD800 && i < 0xE000) continue;
        const auto bytes = bytes_of(page.number, unit);
        // No look-alikes: only what comes back goes out.
        ASSERT_EQ(bytes.empty(), m_units.count(unit) == 0) << i;
        const auto host_bytes = m_host.bytes_of(unit);
        const auto way = page.ways.find(unit);
        if (way != page.ways.end()) {
            ASSERT_EQ(bytes, way->second) << i;
        } else if (!bytes.empty() && !host_bytes.empty() && page.others.count(bytes) == 0) {
            ASSERT_EQ(bytes, host_bytes) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PageTables,
    testing::Values(
        Page{437, "CP437"}, Page{737, "CP737"}, Page{775, "CP775"}, Page{850, "CP850"},
        Page{852, "CP852"}, Page{855, "CP855"}, Page{857, "CP857"}, Page{858, "CP858"},
        Page{860, "CP860"}, Page{861, "CP861"}, Page{862, "CP862"}, Page{863, "CP863"},
        Page{864, "CP864", {{"%", u'%'}}}, Page{865, "CP865"}, Page{866, "CP866"},
        Page{869, "CP869"}, Page{874, "CP874"}, Page{932, "CP932"}, Page{936, "CP936"},
        Page{949, "UHC"},
        Page{950,
             "BIG5",
             {},
             {{0x2550, "\xF9\xF9"},
              {0x255E, "\xF9\xE9"},
              {0x2561, "\xF9\xEB"},
              {0x256A, "\xF9\xEA"}}},
        Page{1250, "CP1250"}, Page{1251, "CP1251"}, Page{1252, "CP1252"}, Page{1253, "CP1253"},
        Page{1254, "CP1254"}, Page{1255, "CP1255", {{"\xCA", 0x05BA}}}, Page{1256, "CP1256"},
        Page{1257, "CP1257"}, Page{1258, "CP1258"}, Page{20866, "KOI8-R"}, Page{20936, "EUC-CN"},
        Page{21866, "KOI8-U", {{"\xAE", 0x045E}, {"\xBE", 0x040E}}}, Page{28591, "ISO-8859-1"},
        Page{28592, "ISO-8859-2"}, Page{28593, "ISO-8859-3"}, Page{28594, "ISO-8859-4"},
        Page{28595, "ISO-8859-5"}, Page{28596, "ISO-8859-6"},
        Page{28597,
             "ISO-8859-7",
             {{"\xA1", 0x02BD},
              {"\xA2", 0x02BC},
              {"\xA4", 0xF7C2},
              {"\xA5", 0xF7C3},
              {"\xAA", 0xF7C4}}},
        Page{28598, "ISO-8859-8", {{"\xAF", 0x203E}, {"\xFD", 0xF7BF}, {"\xFE", 0xF7C0}}},
        Page{28599, "ISO-8859-9"}, Page{28600, "ISO-8859-10"}, Page{28603, "ISO-8859-13"},
        Page{28604, "ISO-8859-14"}, Page{28605, "ISO-8859-15"},
        Page{38598, "ISO-8859-8", {{"\xAF", 0x203E}, {"\xFD", 0xF7BF}, {"\xFE", 0xF7C0}}},
        Page{51949, "EUC-KR", {{"\xA2\xE8", std::nullopt}}}),
    testing::PrintToStringParamName());

// Each pair of EUC-JP by the arithmetic of Shift-JIS, and beside the host as far as both follow the
// standard.
TEST(PageTable, EucJpIsPage932InOtherPlaces) {
    const Host host("EUC-JP-MS");
    for (unsigned int lead = 0xA1; lead <= 0xFE; ++lead) {
        for (unsigned int trail = 0xA1; trail <= 0xFE; ++trail) {
            const std::string euc{static_cast<char>(lead), static_cast<char>(trail)};
            const unsigned int first = (lead - 0x9F) / 2 + (lead > 0xDE ? 0xC0 : 0x80);
            const unsigned int second =
                lead % 2 == 0 ? trail - 2 : trail + (trail > 0xDF ? 0xA0 : 0x9F) - 0x100;
            const auto unit = unit_of(51932, euc);
            ASSERT_EQ(unit, unit_of(932, {static_cast<char>(first), static_cast<char>(second)}))
                << lead << ' ' << trail;
            if (!unit) continue;
            ASSERT_EQ(unit_of(51932, bytes_of(51932, *unit)), unit) << lead << ' ' << trail;
            if (lead <= 0xF4) {
                ASSERT_EQ(unit, host.unit_of(euc)) << lead << ' ' << trail;
            }
        }
    }
    for (unsigned int byte = 0xA1; byte <= 0xDF; ++byte) {
        const std::string kana{'\x8E', static_cast<char>(byte)};
        ASSERT_EQ(unit_of(51932, kana), static_cast<char16_t>(0xFF61 + byte - 0xA1));
        ASSERT_EQ(bytes_of(51932, static_cast<char16_t>(0xFF61 + byte - 0xA1)), kana);
    }
}

// A run of single bytes without a word in any standard, or of user-defined pairs: the units that
// the platform has for them follow one another.
TEST(PageTable, FreeBytesAreThePlatforms) {
    const struct {
        UINT page;
        std::string first;
        unsigned int last;
        char16_t unit;
    } rows[] = {
        {708, "\xF3", 0xF8, 0xF8C2},     {720, "\x8D", 0x90, 0x8D},
        {874, "\x86", 0x90, 0x86},       {874, "\xDB", 0xDE, 0xF8C1},
        {874, "\xFC", 0xFF, 0xF8C5},     {932, "\x80", 0x80, 0x80},
        {932, "\xA0", 0xA0, 0xF8F0},     {932, "\xFD", 0xFF, 0xF8F1},
        {932, "\xF0\x40", 0x7E, 0xE000}, {932, "\xF0\x80", 0xFC, 0xE03F},
        {932, "\xF9\x80", 0xFC, 0xE6DB}, {936, "\x80", 0x80, 0x20AC},
        {936, "\xFF", 0xFF, 0xF8F5},     {936, "\xAA\xA1", 0xFE, 0xE000},
        {936, "\xF8\xA1", 0xFE, 0xE234}, {936, "\xA1\x40", 0x7E, 0xE4C6},
        {949, "\x80", 0x80, 0x80},       {949, "\xFF", 0xFF, 0xF8F7},
        {949, "\xC9\xA1", 0xFE, 0xE000}, {949, "\xFE\xA1", 0xFE, 0xE05E},
        {950, "\x80", 0x80, 0x80},       {950, "\xFF", 0xFF, 0xF8F8},
        {950, "\xFA\x40", 0x7E, 0xE000}, {950, "\x8E\x40", 0x7E, 0xE311},
        {950, "\x81\x40", 0x7E, 0xEEB8}, {950, "\xC6\xA1", 0xFE, 0xF6B1},
        {1252, "\x8F", 0x90, 0x8F},      {1253, "\xAA", 0xAA, 0xF8F9},
        {1253, "\xD2", 0xD2, 0xF8FA},    {1253, "\xFF", 0xFF, 0xF8FB},
        {1255, "\xD9", 0xDF, 0xF88D},    {1255, "\xFB", 0xFC, 0xF894},
        {1255, "\xFF", 0xFF, 0xF896},    {1257, "\xA1", 0xA1, 0xF8FC},
        {1257, "\xA5", 0xA5, 0xF8FD},    {20936, "\x81", 0xA0, 0xF8D8},
        {20936, "\xF8", 0xFF, 0xF8F8},   {28591, "\x80", 0xFF, 0x80},
        {28596, "\xA1", 0xA3, 0xF7C8},   {28596, "\xA5", 0xAB, 0xF7CB},
        {28596, "\xAE", 0xBA, 0xF7D2},   {28596, "\xBC", 0xBE, 0xF7DF},
        {28596, "\xC0", 0xC0, 0xF7E2},   {28596, "\xDB", 0xDF, 0xF7E3},
        {28596, "\xF3", 0xFF, 0xF7E8},   {28597, "\xAE", 0xAE, 0xF7C5},
        {28597, "\xD2", 0xD2, 0xF7C6},   {28597, "\xFF", 0xFF, 0xF7C7},
        {28598, "\xA1", 0xA1, 0xF79C},   {28598, "\xBF", 0xDE, 0xF79D},
        {28598, "\xFB", 0xFF, 0xF7BD},   {38598, "\xA1", 0xA1, 0xF79C},
        {38598, "\xBF", 0xDE, 0xF79D},   {38598, "\xFB", 0xFF, 0xF7BD},
        {51932, "\xFF", 0xFF, 0xF8F3},   {51949, "\x80", 0x9F, 0x80},
        {51949, "\xAD", 0xAF, 0xF8E7},   {51949, "\xFE", 0xFF, 0xF8EA},
    };
    for (const auto& row : rows) {
        auto bytes = row.first;
        auto unit = row.unit;
        for (unsigned int byte = static_cast<BYTE>(bytes.back()); byte <= row.last; ++byte) {
            bytes.back() = static_cast<char>(byte);
            EXPECT_EQ(unit_of(row.page, bytes), unit) << row.page << ' ' << byte;
            EXPECT_EQ(bytes_of(row.page, unit), bytes) << row.page << ' ' << byte;
            ++unit;
        }
    }
}

// No converter here knows the page: its letters are those of 28596, its line drawing that of 437.
TEST(PageTable, Asmo708IsMadeOfLettersAndLineDrawing) {
    int drawn = 0;
    for (unsigned int byte = 0x80; byte < 0x100; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        const auto unit = unit_of(708, bytes);
        ASSERT_TRUE(unit) << byte;
        EXPECT_EQ(bytes_of(708, *unit), bytes) << byte;
        if (*unit >= 0x0600 && *unit < 0x0700) {
            EXPECT_EQ(unit, unit_of(28596, bytes)) << byte;
        }
        if (*unit >= 0x2500 && *unit < 0x25A0) {
            ++drawn;
            EXPECT_FALSE(bytes_of(437, *unit).empty()) << byte;
        }
    }
    EXPECT_EQ(drawn, 0xE0 - 0xB0);
}

// All of Unicode: what has no shorter sequence stands in one row without a gap.
TEST(PageTable, Gb18030HoldsEverything) {
    const Host host("GB18030");
    std::string text;
    std::u16string units;
    for (unsigned int i = 1; i < 0x10000; ++i) {
        const auto unit = static_cast<char16_t>(i);
        if (i >= 0xD800 && i < 0xE000) continue;
        const auto bytes = bytes_of(54936, unit);
        ASSERT_EQ(unit_of(54936, bytes), unit) << i;
        const auto host_bytes = host.bytes_of(unit);
        // The host has the characters that Unicode gained for what was private.
        const bool is_moved = (i >= 0xFE10 && i <= 0xFE19) || (i >= 0x9FB4 && i <= 0x9FBB) ||
                              (i >= 0xE000 && i < 0xF900);
        if (!host_bytes.empty() && !is_moved) {
            ASSERT_EQ(bytes, host_bytes) << i;
        }
        text += bytes;
        units += unit;
    }
    for (char32_t c = 0x10000; c < 0x110000; c += 7) {
        units += static_cast<char16_t>(0xD7C0 + (c >> 10U));
        units += static_cast<char16_t>(0xDC00 + (c & 0x3FFU));
    }
    std::string out(units.size() * 4, '\0');
    const int size = WideCharToMultiByte(54936, WC_ERR_INVALID_CHARS, units.data(),
                                         static_cast<int>(units.size()), out.data(),
                                         static_cast<int>(out.size()), nullptr, nullptr);
    ASSERT_GT(size, 0);
    EXPECT_EQ(out.compare(0, text.size(), text), 0);
    EXPECT_EQ(out.compare(text.size(), 4, "\x90\x30\x81\x30"), 0);
    std::u16string back(units.size(), u'\0');
    ASSERT_EQ(MultiByteToWideChar(54936, MB_ERR_INVALID_CHARS, out.data(), size, back.data(),
                                  static_cast<int>(back.size())),
              static_cast<int>(units.size()));
    EXPECT_EQ(back, units);
}

}  // namespace
