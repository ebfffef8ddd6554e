// Every kernel of Base64 against a reader of the plainest kind.
#include "tvutil2/frame/base64.h"
#include "tvutil2/frame/base64_reader.h"
#include "tvutil2/platform/base/wide_text.h"

#include <string>

#include "fuzz/fuzz_input.h"

namespace {

struct Reading {
    int result;
    std::string bytes;
};

// One character at a time, with the padding looked at afterwards.
Reading read_plainly(std::u16string_view text) {
    std::u16string letters;
    for (const char16_t c : text) {
        if (!tvutil2::is_space(c)) letters.push_back(c);
    }
    std::string bytes;
    const std::string_view alphabet(tvutil2::kBase64Alphabet);
    for (std::size_t i = 0; i < letters.size(); i += 4) {
        std::size_t values[4] = {};
        std::size_t seen = 0;
        for (; seen < 4 && i + seen < letters.size(); ++seen) {
            const char16_t c = letters[i + seen];
            if (c == u'=') break;
            values[seen] = c < 0x80 ? alphabet.find(static_cast<char>(c)) : std::string::npos;
            if (values[seen] == std::string::npos) return {0, bytes};
        }
        const std::string group = {static_cast<char>(values[0] << 2 | values[1] >> 4),
                                   static_cast<char>(values[1] << 4 | values[2] >> 2),
                                   static_cast<char>(values[2] << 6 | values[3])};
        if (seen == 4) {
            bytes += group;
            continue;
        }
        const auto padding = std::u16string_view(letters).substr(i + seen);
        const bool is_whole = (seen == 2 && padding == u"==") || (seen == 3 && padding == u"=");
        if (!is_whole) return {0, bytes};
        if (group[seen - 1] != 0) return {-1, bytes};
        return {1, bytes + group.substr(0, seen - 1)};
    }
    return {1, bytes};
}

void check_reading(const std::u16string& text) {
    const auto expected = read_plainly(text);
    for (const auto& kernel : tvutil2::base64_kernels()) {
        CBuffer out;
        fuzz::require(tvutil2::decode_base64(kernel, text, out) == expected.result);
        fuzz::require(out.Len() == expected.bytes.size());
        fuzz::require(out.Len() == 0 ||
                      std::memcmp(out.Ptr(), expected.bytes.data(), out.Len()) == 0);
    }
}

void check_writing(const std::uint8_t* data, std::size_t size) {
    CString text;
    CBase64::Encode(data, static_cast<unsigned int>(size), text);
    const auto back = read_plainly(text.View());
    fuzz::require(back.result == 1 && back.bytes.size() == size);
    fuzz::require(size == 0 || std::memcmp(back.bytes.data(), data, size) == 0);
    for (const auto& kernel : tvutil2::base64_kernels()) {
        std::u16string other(text.View().size(), u'\0');
        tvutil2::encode_base64(kernel, data, size, other.data());
        fuzz::require(other == text.View());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check_reading(fuzz::widened({reinterpret_cast<const char*>(data), size}));
    check_reading(fuzz::wide_text(data, size));
    check_writing(data, size);
    return 0;
}
