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

// What is decoded from the bytes of a text is that text, as far as the page holds it.
void check_round_trip(unsigned int page, const std::u32string& decoded) {
    std::u16string text;
    for (const auto code : decoded) {
        char16_t units[2];
        if (code != 0 && code < 0x110000) text.append(units, _ucs4_to_utf16(code, units));
    }
    CBuffer once;
    CCharSetEncoder(page).Encode(text.c_str(), once);
    const std::string_view bytes(reinterpret_cast<const char*>(once.Ptr()), once.Len());
    const auto again = decode(page, bytes, 0);
    std::u16string back;
    for (const auto code : again.text) {
        char16_t units[2];
        back.append(units, _ucs4_to_utf16(code, units));
    }
    CBuffer twice;
    CCharSetEncoder(page).Encode(back.c_str(), twice);
    if (page == 65001) fuzz::require(twice == once);
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
