// A stream through the decoder of every page: no byte is lost or read twice, no more than six are
// held, and how the stream is cut (state copied to another object in between) doesn't matter.
#include "tvutil2/frame/buffer.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/code_page.h"

#include <string>

#include "fuzz/fuzz_input.h"

namespace {

struct Stream {
    std::u32string text;
    std::string bytes;
};

Stream decode(unsigned int page, std::string_view bytes, std::size_t cut) {
    CCharSetDecoder decoder(page);
    Stream stream;
    unsigned char raw[6];
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == cut) decoder = CCharSetDecoder(decoder);
        unsigned int code = 0;
        unsigned int size = 0;
        if (decoder.Decode(static_cast<unsigned char>(bytes[i]), code, raw, &size) != 0) {
            fuzz::require(size >= 1 && size <= 6);
            stream.text += static_cast<char32_t>(code);
            stream.bytes.append(reinterpret_cast<const char*>(raw), size);
        }
    }
    const auto held = decoder.GetDecodeBuf(raw);
    fuzz::require(held < 6);
    stream.bytes.append(reinterpret_cast<const char*>(raw), held);
    return stream;
}

std::u16string in_units(const std::u32string& text) {
    std::u16string result;
    for (const auto code : text) {
        char16_t units[2];
        if (code != 0) result.append(units, _ucs4_to_utf16(code, units));
    }
    return result;
}

std::string encode(unsigned int page, const std::u16string& text) {
    CBuffer out;
    CCharSetEncoder(page).Encode(text.c_str(), out);
    return {reinterpret_cast<const char*>(out.Ptr()), out.Len()};
}

// The decoder takes some bytes of these for another length than they have in the page.
bool has_other_lengths(unsigned int page) {
    return page == 932 || page == 949 || page == 950 || page == 20936 || page == 51932;
}

// What an encoder wrote comes back from its text.
void check_round_trip(unsigned int page, const std::u32string& text) {
    const auto bytes = encode(page, in_units(text));
    const auto again = decode(page, bytes, 0);
    if (has_other_lengths(page)) return;
    fuzz::require(encode(page, in_units(again.text)) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    CCodePageList list;
    const auto page = list.GetCodePage(1 + data[0] % (list.GetCount() - 1));
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
    const auto whole = decode(page, bytes, bytes.size());
    const auto cut = decode(page, bytes, data[1]);
    fuzz::require(whole.text == cut.text && whole.bytes == cut.bytes);
    if (page != 51932) fuzz::require(whole.bytes == bytes);
    check_round_trip(page, whole.text);
    return 0;
}
