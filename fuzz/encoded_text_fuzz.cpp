// A file in any encoding, line by line: no byte is lost or read twice, a line ends where the next
// one begins, and what is valid in a page of one mapping each way is written as it was read.
#include <string>

#include "fuzz/fuzz_input.h"
#include "tools/tvutil/encoded_text.h"

namespace {

constexpr const char* kEncodings[] = {"utf-8", "utf-8-bom", "utf-16", "utf-16be", "1252",
                                      "936",   "932",       "54936",  "51932",    "20936"};

void check_line(const tool::TextEncoding& encoding, const tool::EncodedLines& lines) {
    const auto whole = lines.whole();
    const auto content = lines.content();
    fuzz::require(!whole.empty() && whole.starts_with(content));
    const auto text = tool::decoded(encoding, content);
    fuzz::require(text.text.find(u'\n') == std::u16string::npos || !text.is_valid);
    const bool is_unicode = encoding.page == 65001 || encoding.unit() == 2;
    if (text.is_valid && is_unicode) fuzz::require(tool::encoded(encoding, text.text) == content);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    fuzz::require(bytes.starts_with(tool::encoding_of(bytes).mark()));
    const auto encoding = tool::encoding_named(kEncodings[data[0] % std::size(kEncodings)]);
    fuzz::require(tool::encoding_named(encoding.name()) == encoding);
    std::string joined;
    for (tool::EncodedLines lines(encoding, bytes); lines.next();) {
        check_line(encoding, lines);
        joined += lines.whole();
    }
    fuzz::require(joined == bytes);
    return 0;
}
