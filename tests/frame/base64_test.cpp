#include "tvutil2/frame/base64.h"

#include "tvutil2/frame/base64_reader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using tvutil2::Base64Kernel;

std::string bytes_of(const CBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.Ptr()), buffer.Len()};
}

std::u16string encoded(const Base64Kernel& kernel, const std::string& bytes) {
    std::u16string text((bytes.size() + 2) / 3 * 4, u'#');
    tvutil2::encode_base64(kernel, reinterpret_cast<const unsigned char*>(bytes.data()),
                           bytes.size(), text.data());
    return text;
}

std::string random_bytes(std::mt19937& random, std::size_t size) {
    std::string bytes(size, '\0');
    for (auto& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

TEST(Base64, PublishedVectors) {
    const std::pair<std::string, std::u16string> vectors[] = {{"", u""},
                                                              {"f", u"Zg=="},
                                                              {"fo", u"Zm8="},
                                                              {"foo", u"Zm9v"},
                                                              {"foob", u"Zm9vYg=="},
                                                              {"fooba", u"Zm9vYmE="},
                                                              {"foobar", u"Zm9vYmFy"}};
    for (const auto& [bytes, text] : vectors) {
        const CBuffer buffer(reinterpret_cast<const unsigned char*>(bytes.data()),
                             static_cast<unsigned int>(bytes.size()));
        CString out(u"old");
        CBase64::Encode(buffer, out);
        EXPECT_EQ(out.View(), text);
        CBuffer back(reinterpret_cast<const unsigned char*>("old"), 3);
        EXPECT_EQ(CBase64::Decode(out, back), 1);
        EXPECT_EQ(bytes_of(back), bytes);
    }
}

struct Reading {
    std::u16string text;
    int result;
    std::string bytes;
};

const Reading kReadings[] = {
    {u"", 1, ""},
    {u" \t\r\n\u3000", 1, ""},
    {u"YW Jj\r\n", 1, "abc"},
    {u"Y\u00A0W\u2003Jj", 1, "abc"},
    {u"YQ", 0, ""},
    {u"YQ=", 0, ""},
    {u"YQ= \n=", 1, "a"},
    {u"YQ==\r\n", 1, "a"},
    {u"YQ==x", 0, ""},
    {u"YQ===", 0, ""},
    {u"YQ=x", 0, ""},
    {u"YR==", -1, ""},
    {u"YR==x", 0, ""},
    {u"YR= ", 0, ""},
    {u"YWI=", 1, "ab"},
    {u"YWI==", 0, ""},
    {u"YWJ=", -1, ""},
    {u"=", 0, ""},
    {u"Y===", 0, ""},
    {u"YWJj=", 0, "abc"},
    {u"YWJjY", 0, "abc"},
    {u"YWJjYWJj-WJj", 0, "abcabc"},
    {u"YWJj_", 0, "abc"},
    {u"YWJj\u0159WJj", 0, "abc"},  // its low byte is in the alphabet
    {u"YWJj\uFF21WJj", 0, "abc"},
    {u"YWJj\U0001F600", 0, "abc"},
};

// Each reading again behind whole blocks, where the wide kernels work.
TEST(Base64, ReadingsOfEveryKernel) {
    for (const auto& kernel : tvutil2::base64_kernels()) {
        for (const auto& reading : kReadings) {
            for (const std::size_t groups : {0U, 1U, 15U, 16U, 40U}) {
                std::u16string text;
                std::string bytes;
                for (std::size_t i = 0; i < groups; ++i) {
                    text += u"+/09";
                    bytes += "\xFB\xFD\x3D";
                }
                CBuffer out;
                EXPECT_EQ(tvutil2::decode_base64(kernel, text + reading.text, out), reading.result);
                EXPECT_EQ(bytes_of(out), bytes + reading.bytes)
                    << kernel.name << " behind " << groups;
            }
        }
    }
}

TEST(Base64, EveryUnitAloneIsReadAlikeByEveryKernel) {
    for (unsigned int unit = 1; unit < 0x10000; ++unit) {
        std::u16string text(64, u'A');
        text[unit % 64] = static_cast<char16_t>(unit);
        CBuffer expected;
        const int result = tvutil2::decode_base64(tvutil2::base64_kernels()[0], text, expected);
        for (const auto& kernel : tvutil2::base64_kernels().subspan(1)) {
            CBuffer out;
            ASSERT_EQ(tvutil2::decode_base64(kernel, text, out), result) << kernel.name << unit;
            ASSERT_TRUE(out == expected) << kernel.name << " " << unit;
        }
    }
}

TEST(Base64, KernelsAgreeOnEverySizeAndComeBack) {
    std::mt19937 random(64);
    for (std::size_t size = 0; size < 400; ++size) {
        const auto bytes = random_bytes(random, size);
        const auto text = encoded(tvutil2::base64_kernels()[0], bytes);
        for (const auto& kernel : tvutil2::base64_kernels()) {
            ASSERT_EQ(encoded(kernel, bytes), text) << kernel.name << " " << size;
            CBuffer out;
            ASSERT_EQ(tvutil2::decode_base64(kernel, text, out), 1);
            ASSERT_EQ(bytes_of(out), bytes) << kernel.name << " " << size;
        }
    }
}

TEST(Base64, LinesOfTextAreReadWhole) {
    std::mt19937 random(76);
    const auto bytes = random_bytes(random, 10000);
    CString text;
    CBase64::Encode(reinterpret_cast<const unsigned char*>(bytes.data()), 10000, text);
    std::u16string lines;
    for (int i = 0; i < text.GetLength(); i += 76) lines.append(text.Mid(i, 76).View()) += u"\r\n";
    CBuffer out;
    EXPECT_EQ(CBase64::Decode(lines.c_str(), out), 1);
    EXPECT_EQ(bytes_of(out), bytes);
}

}  // namespace
