// The inner loops against plain ones: what a kernel takes becomes the same as without it, whatever
// stands before and behind, and wherever something is wrong.
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/four_byte_text.h"
#include "tvutil2/platform/codepage/pair_bytes.h"
#include "tvutil2/platform/codepage/single_units.h"
#include "tvutil2/platform/codepage/utf8_kernels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace tvutil2::codepage;

void append_utf8(std::string& bytes, char32_t c) {
    const auto tail = [&](unsigned int shift) {
        bytes += static_cast<char>(0x80 | ((c >> shift) & 0x3F));
    };
    if (c < 0x80) {
        bytes += static_cast<char>(c);
        return;
    }
    const unsigned int tails = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    bytes += static_cast<char>((0xFF00U >> (tails + 1)) | (c >> (6 * tails)));
    for (unsigned int i = tails; i > 0; --i) tail((i - 1) * 6);
}

void append_utf16(std::u16string& units, char32_t c) {
    if (c >= 0x10000) {
        units += static_cast<char16_t>(0xD7C0 + (c >> 10U));
        c = 0xDC00 | (c & 0x3FFU);
    }
    units += static_cast<char16_t>(c);
}

// Texts of every mixture of lengths: each is made of characters of some of the four.
std::u32string mixed_text(std::mt19937& random, unsigned int lengths, std::size_t size) {
    constexpr std::array<std::pair<char32_t, char32_t>, 4> kRanges{
        {{0x20, 0x7F}, {0x80, 0x7FF}, {0x800, 0xFFFF}, {0x10000, 0x10FFFF}}};
    std::u32string text;
    while (text.size() < size) {
        const auto kind = random() % 4;
        if ((lengths >> kind & 1U) == 0) continue;
        // Runs, as languages have them.
        for (auto run = random() % 20 + 1; run > 0 && text.size() < size; --run) {
            const auto [first, last] = kRanges[kind];
            const char32_t c = first + static_cast<char32_t>(random() % (last - first + 1));
            if (c < 0xD800 || c > 0xDFFF) text += c;
        }
    }
    return text;
}

TEST(CodePageKernels, Utf8IsTheSameByAllOfThem) {
    std::mt19937 random(5489);
    for (const auto& kernel : utf8_kernels()) {
        for (unsigned int lengths = 1; lengths < 16; ++lengths) {
            const auto text = mixed_text(random, lengths, 700);
            std::string bytes;
            std::u16string units;
            for (const char32_t c : text) {
                append_utf8(bytes, c);
                append_utf16(units, c);
            }
            std::u16string widened(units.size() + 200, u'\0');
            const auto from =
                kernel.to_units(bytes.data(), bytes.size(), widened.data(), widened.size());
            ASSERT_TRUE(units.compare(0, from.made, widened, 0, from.made) == 0) << lengths;
            const auto counted = kernel.count_units(bytes.data(), bytes.size());
            std::string front = bytes.substr(0, counted.taken);
            ASSERT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, front.data(),
                                          static_cast<int>(front.size()), widened.data(),
                                          static_cast<int>(widened.size())),
                      front.empty() ? 0 : static_cast<int>(counted.made));
            ASSERT_TRUE(units.compare(0, counted.made, widened, 0, counted.made) == 0);

            std::string narrowed(bytes.size() + 200, '\0');
            const auto to =
                kernel.to_bytes(units.data(), units.size(), narrowed.data(), narrowed.size());
            ASSERT_TRUE(bytes.compare(0, to.made, narrowed, 0, to.made) == 0) << lengths;
            const auto sized = kernel.count_bytes(units.data(), units.size());
            std::string whole;
            for (std::size_t i = 0, taken = 0; taken < sized.taken; ++i) {
                append_utf8(whole, text[i]);
                taken += text[i] < 0x10000 ? 1 : 2;
            }
            ASSERT_EQ(sized.made, whole.size());
            if (&kernel == &utf8_kernels().back() && utf8_kernels().size() > 1) {
                EXPECT_GT(from.taken + 200, bytes.size());
                EXPECT_GT(sized.taken + 32, units.size());
            }
        }
    }
}

// Every two bytes, and every kind of broken sequence, at every place of two blocks.
TEST(CodePageKernels, Utf8StopsBeforeAnythingIllFormed) {
    std::vector<std::string> broken = {
        "\xE0\x80\x80",     "\xE0\x9F\xBF",     "\xED\xA0\x80",
        "\xED\xBF\xBF",     "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE4\xB8",
        "\xF0\x9F\x98",     "\xF0\x9F",         "\x80",
        "\xE4\xB8\xAD\x80", "\xC3\xA9\x80",     "\xF0\x9F\x98\x80\x80"};
    for (int byte = 0x80; byte < 0x100; ++byte) {
        for (const char next : {'a', '\x80', '\xBF', '\xC3', '\xE4', '\xF0'}) {
            if (byte >= 0xC2 && byte < 0xE0 && (next & 0xC0) == 0x80) continue;
            broken.push_back({static_cast<char>(byte), next});
        }
    }
    for (const auto& kernel : utf8_kernels()) {
        for (const auto& sequence : broken) {
            for (std::size_t place = 55; place < 140; ++place) {
                for (const char* const filling : {"a", "\xC3\xA9", "\xE4\xB8\xAD"}) {
                    std::string bytes(place % std::char_traits<char>::length(filling), 'x');
                    while (bytes.size() < place) bytes += filling;
                    // A whole character may begin what is broken.
                    const auto well_formed = bytes.size() + sequence.size() - 1;
                    bytes += sequence + std::string(80, 'z');
                    const auto counted = kernel.count_units(bytes.data(), bytes.size());
                    ASSERT_LE(counted.taken, well_formed) << testing::PrintToString(sequence);
                    std::u16string units(bytes.size() + 100, u'\0');
                    const auto made =
                        kernel.to_units(bytes.data(), bytes.size(), units.data(), units.size());
                    ASSERT_LE(made.taken, well_formed) << testing::PrintToString(sequence);
                }
            }
        }
    }
}

TEST(CodePageKernels, Utf16StopsBeforeALoneSurrogate) {
    for (const auto& kernel : utf8_kernels()) {
        for (const std::u16string lone : {u"\xD83D", u"\xDE00", u"\xDE00\xD83D", u"\xD83Dz"}) {
            for (std::size_t place = 0; place < 70; ++place) {
                std::u16string units(place, u'\u4E2D');
                if (place % 3 == 2) units.replace(place - 2, 2, u"\U0001F600");
                units += lone + std::u16string(40, u'\u00E9');
                ASSERT_LE(kernel.count_bytes(units.data(), units.size()).taken, place);
                std::string bytes(units.size() * 4, '\0');
                ASSERT_LE(
                    kernel.to_bytes(units.data(), units.size(), bytes.data(), bytes.size()).taken,
                    place);
            }
        }
    }
}

TEST(CodePageKernels, SingleUnitsAreTheSameByAllOfThem) {
    std::array<char16_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<char16_t>(i < 0x80 ? i : i * 251 + 7);
    }
    std::string bytes;
    for (int i = 0; i < 300; ++i) bytes += static_cast<char>(i * 37);
    for (const auto& kernel : single_units_kernels()) {
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            std::u16string units(size + 1, u'#');
            kernel.put(table.data(), bytes.data(), size, units.data());
            ASSERT_EQ(units.back(), u'#') << kernel.name;
            for (std::size_t i = 0; i < size; ++i) {
                ASSERT_EQ(units[i], table[static_cast<unsigned char>(bytes[i])]) << kernel.name;
            }
        }
    }
}

// Units of one and two bytes in every mixture, one without any at every place, and room that ends
// early.
TEST(CodePageKernels, PairBytesAreTheSameByAllOfThem) {
    std::vector<std::uint16_t> table(0x10001);
    for (std::uint16_t unit = 1; unit != 0; ++unit) {
        table[unit] = static_cast<std::uint16_t>(unit < 0x100 ? unit : unit | 0x4080);
    }
    constexpr char16_t kNone = 0x4E00;
    table[kNone] = 0;
    std::mt19937 random(1);
    for (std::size_t size = 0; size < 300; ++size) {
        std::u16string units(size, u'a');
        std::string expected;
        const auto stop = random() % 400;
        for (std::size_t i = 0; i < size; ++i) {
            if (random() % 3 != 0) units[i] = static_cast<char16_t>(1 + random() % 0xFFFF);
            if (i == stop) units[i] = kNone;
            const auto bytes = table[units[i]];
            expected += static_cast<char>(bytes);
            if (bytes > 0xFF) expected += static_cast<char>(bytes >> 8U);
        }
        const std::size_t room = random() % 3 == 0 ? random() % 600 : size * 2;
        const auto whole =
            pair_bytes_kernels()[0].put(table.data(), units, std::string(room, '#').data(), room);
        for (const auto& kernel : pair_bytes_kernels()) {
            std::string bytes(room + 1, '#');
            const auto progress = kernel.put(table.data(), units, bytes.data(), room);
            ASSERT_EQ(progress.taken, whole.taken) << kernel.name << " " << size;
            ASSERT_EQ(progress.made, whole.made) << kernel.name << " " << size;
            ASSERT_EQ(bytes.substr(0, progress.made), expected.substr(0, progress.made));
            ASSERT_EQ(bytes[room], '#');
            ASSERT_LE(progress.taken, units.find(kNone));
        }
        if (room == size * 2) {
            ASSERT_GT(whole.taken + 32, std::min(size, units.find(kNone)));
        }
    }
}

// Lead bytes are told by whole blocks: the same text at every place of one, with runs of every
// length, against the same characters one by one.
TEST(CodePageKernels, PairsAreFoundAtEveryPlace) {
    std::mt19937 random(1);
    for (const UINT page : {932U, 936U, 949U, 950U, 20936U, 51932U, 51949U, 54936U}) {
        for (int round = 0; round < 300; ++round) {
            std::string bytes(static_cast<std::size_t>(round % 67), 'a');
            std::u16string expected(bytes.begin(), bytes.end());
            while (bytes.size() < 200) {
                // Bytes at random are broken in all the ways there are.
                const auto first =
                    static_cast<char>(random() % 8 == 0 ? random() % 128 : 128 + random() % 128);
                const auto second = static_cast<char>(random() % 16 == 0 ? 0 : random() % 256);
                const bool is_lead =
                    page == 54936 ? first != '\x80' && first != '\xFF' && first < 0
                                  : IsDBCSLeadByteEx(page, static_cast<BYTE>(first)) != FALSE;
                // Four bytes, and a zero in second place, are each a matter of their own.
                const bool is_digit = second >= '0' && second <= '9';
                if (page == 54936 && is_lead && is_digit) continue;
                std::string sequence(1, first);
                if (is_lead && second == 0) continue;
                if (is_lead) sequence += second;
                char16_t units[4];
                const int count = MultiByteToWideChar(page, 0, sequence.data(),
                                                      static_cast<int>(sequence.size()), units, 4);
                ASSERT_EQ(count, 1);
                bytes += sequence;
                expected += units[0];
            }
            std::u16string text(expected.size(), u'\0');
            const int size = static_cast<int>(bytes.size());
            ASSERT_EQ(MultiByteToWideChar(page, 0, bytes.data(), size, nullptr, 0),
                      static_cast<int>(expected.size()))
                << page;
            ASSERT_EQ(MultiByteToWideChar(page, 0, bytes.data(), size, text.data(),
                                          static_cast<int>(text.size())),
                      static_cast<int>(expected.size()));
            ASSERT_EQ(text, expected) << page;
        }
    }
}

// Sequences of one, two and four bytes, and broken ones, at every place of a block, against the
// same sequences one by one; and back.
TEST(CodePageKernels, FourBytesAreFoundAtEveryPlace) {
    std::mt19937 random(2);
    const auto any = [&random](unsigned int first, unsigned int last) {
        return static_cast<char>(first + random() % (last - first + 1));
    };
    const auto widened = [](const std::string& bytes) {
        std::u16string units(bytes.size() + 1, u'\0');
        units.resize(static_cast<std::size_t>(
            MultiByteToWideChar(54936, 0, bytes.data(), static_cast<int>(bytes.size()),
                                units.data(), static_cast<int>(units.size()))));
        return units;
    };
    std::vector<std::uint32_t> table(0x10000);
    for (char16_t unit = 1; unit != 0; ++unit) {
        if (unit >= 0xD800 && unit < 0xE000) continue;
        char sequence[4] = {};
        WideCharToMultiByte(54936, 0, &unit, 1, sequence, 4, nullptr, nullptr);
        std::memcpy(&table[unit], sequence, sizeof sequence);
    }
    for (int round = 0; round < 2000; ++round) {
        const auto longs = 1 + random() % 8;
        std::string bytes(static_cast<std::size_t>(round % 67), 'a');
        std::u16string expected(bytes.begin(), bytes.end());
        while (bytes.size() < 300) {
            std::string sequence(1, any('A', 'z'));
            if (random() % 8 < longs) {
                // Mostly of the 16-bit area, and some that lead nowhere.
                sequence = {any(0x81, random() % 8 != 0 ? 0x84 : 0xFE), any('0', '9'),
                            any(0x81, 0xFE), any('0', '9')};
            } else if (random() % 2 != 0) {
                sequence = {any(0x81, 0xFE), any(0x40, 0x7E)};
            }
            if (random() % 64 == 0) sequence = {any(0x81, 0xFE), any('0', '9'), 'x'};
            bytes += sequence;
            expected += widened(sequence);
        }
        const auto units = widened(bytes);
        ASSERT_EQ(units, expected) << round;
        ASSERT_EQ(
            MultiByteToWideChar(54936, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0),
            static_cast<int>(units.size()));

        std::string one_by_one;
        char room[4];
        for (std::size_t i = 0; i < units.size(); ++i) {
            const bool is_pair = i + 1 < units.size() && units[i] >= 0xD800 && units[i] < 0xDC00;
            one_by_one.append(
                room, static_cast<std::size_t>(WideCharToMultiByte(
                          54936, 0, &units[i], is_pair ? 2 : 1, room, 4, nullptr, nullptr)));
            i += is_pair ? 1 : 0;
        }
        for (const auto& kernel : four_bytes_kernels()) {
            std::string narrowed(units.size() * 4 + 64, '\0');
            for (std::size_t taken = 0, made = 0; taken + 16 < units.size();) {
                const auto part = kernel.put(table.data(), std::u16string_view(units).substr(taken),
                                             narrowed.data() + made, narrowed.size() - made);
                ASSERT_GT(part.taken, 0U) << kernel.name;
                taken += part.taken;
                made += part.made;
                ASSERT_EQ(one_by_one.compare(0, made, narrowed, 0, made), 0) << kernel.name;
            }
        }
    }
}

}  // namespace
