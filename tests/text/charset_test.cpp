#include "tvutil2/text/charset.h"

#include "tvutil2/frame/buffer.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/text/code_page.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ansi_page.h"

namespace {

using namespace std::string_literals;

constexpr unsigned int kPages[] = {708,   720,   862,   866,   874,   932,   936,   949,   950,
                                   1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,
                                   20866, 20936, 21866, 28591, 28592, 28594, 28595, 28596, 28597,
                                   28598, 28599, 38598, 51932, 51949, 54936, 65001};

struct Decoded {
    std::u32string text;
    std::string raw;
    std::string rest;
};

template <class Code>
Decoded decode(unsigned int page, std::string_view bytes) {
    CCharSetDecoder decoder(page);
    Decoded result;
    for (const char byte : bytes) {
        Code code = 0;
        unsigned char raw[6];
        unsigned int size = 99;
        const int done = decoder.Decode(static_cast<unsigned char>(byte), code, raw, &size);
        if (done == 0) {
            EXPECT_EQ(size, 99U) << "an incomplete character leaves the results alone";
            continue;
        }
        result.text += static_cast<char32_t>(code);
        result.raw.append(reinterpret_cast<const char*>(raw), size);
    }
    unsigned char rest[6];
    result.rest.assign(reinterpret_cast<const char*>(rest), decoder.GetDecodeBuf(rest));
    return result;
}

std::string encode(unsigned int page, const std::u16string& text, bool is_base = false) {
    CBuffer out;
    if (is_base) {
        CCharSetBaseEncoder(page).Encode(text.c_str(), out);
    } else {
        CCharSetEncoder(page).Encode(text.c_str(), out);
    }
    return {reinterpret_cast<const char*>(out.Ptr()), out.Len()};
}

struct Stream {
    const char* what;
    unsigned int page;
    std::string bytes;
    std::u32string wide;
    std::u32string narrow;
    std::string rest;
};

const Stream kStreams[] = {
    {"three bytes", 65001, "\xE2\x82\xAC", U"\u20AC", U"\u20AC", ""},
    {"no test of what continues", 65001, "\xC3\x41", U"\x81", U"\x81", ""},
    {"stray bytes", 65001, "\x80\xBF\xFE\xFF", U"\x80\xBF\xFE\xFF", U"\x80\xBF\xFE\xFF", ""},
    {"four bytes", 65001, "\xF0\x9F\x98\x80", U"\U0001F600", U"\xF600", ""},
    {"five bytes, overlong", 65001, "\xF8\x80\x80\x81\x81", U"A", U"A", ""},
    {"six bytes, modulo 2^32", 65001, "\xFC\x80\x80\x80\x81\x81", U"A", U"A", ""},
    {"the beginning of a character", 65001, "a\xF0\x9F\x98", U"a", U"a", "\xF0\x9F\x98"},
    {"half-width", 932, "\xB1", U"\uFF71", U"\uFF71", ""},
    {"two bytes", 932, "\x82\xA0", U"\u3042", U"\u3042", ""},
    {"above the leads that count", 932, "\xF0\x41", U".A", U".A", ""},
    {"a bad trail is taken along", 932, "\x81\nA", U".A", U".A", ""},
    {"rewritten", 51932, "\xA4\xA2\x8E\xB1\x7F\x80", U"\u3042\uFF71..", U"\u3042\uFF71..", ""},
    {"not a lead byte", 949, "\x81\x41\xB0\xA1", U".A\uAC00", U".A\uAC00", ""},
    {"two bytes of no character", 20936, "\x81\x40\xB0\xA1", U".\u554A", U".\u554A", ""},
    {"one, two and four bytes", 54936, "A\x81\x40\x81\x30\x81\x30"s, U"A\u4E02\x80", U"A\u4E02\x80",
     ""},
    {"beyond 16 bits", 54936, "\x90\x30\x81\x30z", U"\U00010000z", U".z", ""},
    {"a bad pair", 54936, "\x81\x20z", U".z", U".z", ""},
    {"a bad pair whose second byte begins", 54936, "\x80\x81\x40\xFF\x81\x40z", U".\u4E02.\u4E02z",
     U".\u4E02.\u4E02z", ""},
    {"bad leads", 54936, "\xFF\xFF\x80\x80z", U"..z", U"..z", ""},
    {"four bytes, badly ended", 54936, "\x81\x30zzA", U".A", U".A", ""},
    {"four bytes beyond Unicode", 54936, "\xFE\x39\xFE\x39", U".", U".", ""},
    {"a page that isn't known", 12345, "a\xE9", U"a.", U"a.", ""},
    {"the ANSI page", 0, "a\xC3\xA9", U"a\xE9", U"a\xE9", ""},
};

TEST(CharSetDecoder, TakesAStreamByteByByte) {
    for (const auto& stream : kStreams) {
        SCOPED_TRACE(stream.what);
        const auto wide = decode<unsigned int>(stream.page, stream.bytes);
        EXPECT_EQ(wide.text, stream.wide);
        EXPECT_EQ(wide.rest, stream.rest);
        const auto narrow = decode<char16_t>(stream.page, stream.bytes);
        EXPECT_EQ(narrow.text, stream.narrow);
        if (stream.page == 51932) continue;
        EXPECT_EQ(wide.raw + wide.rest, stream.bytes);
    }
    EXPECT_EQ(decode<unsigned int>(51932, "\xA4\xA2\x8E\xB1").raw, "\x82\xA0\xB1");
}

// Not even to learn what the page is.
TEST(CharSetDecoder, AsciiAsksNobody) {
    for (const unsigned int page : {0U, 874U, 932U, 1252U, 12345U, 51932U, 54936U, 65001U}) {
        std::string all(127, '\0');
        std::iota(all.begin(), all.end(), '\0');
        EXPECT_EQ(decode<char16_t>(page, all).text, std::u32string(all.begin(), all.end()));
        EXPECT_EQ(decode<char16_t>(page, "\x7F").text, page == 51932 ? U"." : U"\x7F");
    }
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        EXPECT_EQ(line.find("libicu"), std::string::npos);
    }
}

TEST(CharSetDecoder, ForgetsTheBeginningOfACharacter) {
    CCharSetDecoder decoder(65001);
    unsigned int code = 0;
    const auto begin = [&] { EXPECT_EQ(decoder.Decode(0xE2, code, nullptr, nullptr), 0); };
    const auto is_fresh = [&] { return decoder.Decode('a', code, nullptr, nullptr) == 1; };
    begin();
    CCharSetDecoder copy(decoder);
    decoder.Reset();
    EXPECT_TRUE(is_fresh());
    EXPECT_EQ(decoder.GetCodePage(), 65001U);
    begin();
    EXPECT_EQ(decoder.SetCodepage(0xFFFFFFFF), 1);
    EXPECT_EQ(decoder.GetCodePage(), CCodePage::GetDefault());
    EXPECT_TRUE(is_fresh());
    unsigned char held[6];
    EXPECT_EQ(copy.GetDecodeBuf(held), 1U) << "a copy takes it along";
}

// Every sequence of one and two bytes: the platform's conversion of the whole, or "." for all of
// it.
TEST(CharSetDecoder, AgreesWithTheConversionOfWholeTexts) {
    for (const auto page : kPages) {
        if (page == 65001 || page == 54936 || page == 51932) continue;
        SCOPED_TRACE(page);
        for (unsigned int pair = 0; pair < 0x10000; ++pair) {
            const char bytes[] = {static_cast<char>(pair >> 8U), static_cast<char>(pair)};
            const auto decoded = decode<unsigned int>(page, {bytes, 2});
            // A decoder that has read before knows no other lengths than a new one.
            const auto later =
                decode<unsigned int>(page, std::string{'\xFF', 'a', bytes[0], bytes[1]});
            ASSERT_TRUE(later.text.ends_with(decoded.text)) << std::hex << pair;
            ASSERT_EQ(later.rest, decoded.rest) << std::hex << pair;
            const int size = decoded.text.size() == 1 && decoded.rest.empty() ? 2 : 1;
            char16_t unit = 0;
            const int count =
                MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes, size, &unit, 1);
            const char32_t expected = count == 1 ? unit : U'.';
            if (decoded.text.empty()) continue;
            ASSERT_EQ(decoded.text[0], expected) << std::hex << pair;
        }
    }
}

// Each unit that a page holds comes back, through either encoder, unless the decoder's own rule for
// the length of a sequence cuts it.
TEST(CharSet, EveryCharacterComesBack) {
    for (const auto page : kPages) {
        SCOPED_TRACE(page);
        const CCharSetEncoder encoder(page);
        unsigned int held = 0;
        for (unsigned int unit = 1; unit < 0x10000; ++unit) {
            if (unit >= 0xD800 && unit < 0xE000) continue;
            unsigned char bytes[6];
            const int size = encoder.Encode(static_cast<char16_t>(unit), bytes);
            ASSERT_GT(size, 0);
            const std::string text(reinterpret_cast<const char*>(bytes),
                                   static_cast<std::size_t>(size));
            ASSERT_EQ(encode(page, std::u16string(1, static_cast<char16_t>(unit))), text);
            const bool is_substitute = size == 1 && (bytes[0] == '?' || bytes[0] == '.');
            if (is_substitute && unit != bytes[0]) continue;
            const bool is_lead_alone = (page == 950 || page == 20936) && size == 1 && unit >= 0x80;
            const bool is_cut = is_lead_alone || (page == 932 && bytes[0] >= 0xF0) ||
                                (page == 949 && bytes[0] >= 0x81 && bytes[0] <= 0xA0) ||
                                (page == 51932 && unit == 0x7F);
            const auto decoded = decode<unsigned int>(page, text);
            if (is_cut) continue;
            ASSERT_EQ(decoded.text, std::u32string(1, static_cast<char32_t>(unit)));
            ++held;
        }
        EXPECT_GT(held, 127U);
    }
}

// Whatever the ANSI code page is, what is encoded in page 0 is decoded in it.
class AnsiStreams : public testing::TestWithParam<const char16_t*> {};

TEST_P(AnsiStreams, EveryCharacterComesBack) {
    tests::install_ansi_page(GetParam());
    std::u16string text;
    for (unsigned int unit = 1; unit < 0x10000; ++unit) {
        if (unit >= 0xD800 && unit < 0xE000) continue;
        const auto one = std::u16string(1, static_cast<char16_t>(unit));
        if (unit == u'?' || encode(0, one) != "?") text += one;
    }
    ASSERT_GT(text.size(), 7000U);
    EXPECT_EQ(decode<char16_t>(0, encode(0, text)).text, std::u32string(text.begin(), text.end()));
}

INSTANTIATE_TEST_SUITE_P(Pages, AnsiStreams,
                         testing::Values(u"932", u"949", u"950", u"20936", u"51932", u"54936"));

TEST(CharSetEncoder, RewritesShiftJisToEucJp) {
    const std::pair<const char16_t*, std::string> cases[] = {
        {u"\u4E9C", "\xB0\xA1"}, {u"\u30A2", "\xA5\xA2"},
        {u"\uFF71", "\x8E\xB1"}, {u"a\u3042b", "a\xA4\xA2"s + "b"},
        {u"\u00E9", "?"},        {u"\uE000", "."},
        {u"\x7F", "\x7F"},
    };
    for (const auto& [text, bytes] : cases) {
        EXPECT_EQ(encode(51932, text), bytes);
        EXPECT_EQ(encode(51932, text, true), bytes);
    }
    const std::u16string longer(10000, u'\u3042');
    EXPECT_EQ(encode(51932, longer).size(), 20000U);
}

TEST(CharSetEncoder, KeepsOrJoinsSurrogates) {
    const struct {
        std::u16string text;
        std::string base;
        std::string joined;
    } cases[] = {
        {u"\xD83D\xDE00", "\xED\xA0\xBD\xED\xB8\x80", "\xF0\x9F\x98\x80"},
        {u"a\xD83Dz", "a\xED\xA0\xBDz", "a?z"},
        {u"\xDE00\xD83D\xD83D\xDE00", "\xED\xB8\x80\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80",
         "??\xF0\x9F\x98\x80"},
        {u"\u20AC\xE9x", "\u20AC\u00E9x", "\u20AC\u00E9x"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(encode(65001, one.text, true), one.base);
        EXPECT_EQ(encode(65001, one.text), one.joined);
    }
}

TEST(CharSetEncoder, ResultsTellWhatWasDone) {
    CBuffer out;
    out.Append("xyz", 3);
    EXPECT_EQ(CCharSetEncoder(65001).Encode(u"\u20AC", out), 6) << "the length of the buffer";
    EXPECT_EQ(CCharSetEncoder(65001).Encode(u"", out), 6);
    EXPECT_NE(CCharSetBaseEncoder(65001).Encode(u"a", out), 0);
    EXPECT_EQ(CCharSetBaseEncoder(65001).Encode(u"", out), 0);
    EXPECT_EQ(CCharSetEncoder(1252).Encode(u"", out), 0);
    EXPECT_EQ(CCharSetEncoder(1252).Encode(nullptr, out), 0);
    EXPECT_EQ(CCharSetEncoder(12345).Encode(u"a", out), 0);
    EXPECT_EQ(out.Len(), 7U);
    EXPECT_EQ(encode(1252, u"e\u0301x\u0416"), "\xE9x?") << "composed, and the default character";
}

TEST(CharSetHelpers, ConvertWholeTexts) {
    char16_t units[2] = {};
    EXPECT_EQ(_ucs4_to_utf16(0xFFFF, units), 1U);
    EXPECT_EQ(_ucs4_to_utf16(0x10FFFF, units), 2U);
    EXPECT_EQ(std::u16string_view(units, 2), u"\xDBFF\xDFFF");
    EXPECT_EQ(_ucs4_to_utf16(0x110000, units), 1U);
    EXPECT_EQ(units[0], 0xB7);

    CStringA bytes("old");
    Utf16ToUtf8(u"\u20AC\xD83D\xDE00", bytes);
    EXPECT_STREQ(bytes.GetString(), "\u20AC\U0001F600");
    Utf16ToAnsi(u"a\xE9", bytes);
    EXPECT_STREQ(bytes.GetString(), "a\u00E9");
    CString text(u"old");
    Utf8ToUtf16("\u20AC\xFF", text);
    EXPECT_EQ(text, CString(u"\u20AC\xFFFD"));
    Utf8ToUtf16(nullptr, text);
    Utf16ToUtf8(nullptr, bytes);
    EXPECT_TRUE(text.IsEmpty() && bytes.IsEmpty());
}

}  // namespace
