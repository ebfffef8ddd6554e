// The link of the support entry: cleaning takes away only what it must, and what passes then is one
// word that a desktop's opener can only take for a web address. The language's own pattern matcher
// is the judge.
#include "tvutil2/services/help_links.h"

#include <algorithm>
#include <regex>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::regex pattern("^(https?://)[^\\s<>\"']+$",
                                    std::regex::ECMAScript | std::regex::icase);
    const std::string bytes(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 512));
    const bool is_ascii =
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0 && c < 0x7F; });
    const auto text = is_ascii ? fuzz::widened(bytes) : fuzz::wide_text(data, size);
    if (is_ascii) fuzz::require(tvutil2::is_web_link(text) == std::regex_match(bytes, pattern));
    const auto cleaned = tvutil2::cleaned_link(CString(std::u16string_view(text)));
    fuzz::require(cleaned.View().find_first_of(u";|&`\"'") == std::u16string_view::npos);
    fuzz::require(tvutil2::cleaned_link(cleaned).GetLength() <= cleaned.GetLength());
    if (tvutil2::is_web_link(cleaned.View()))
        fuzz::require(tvutil2::cleaned_link(cleaned).View() == cleaned.View());
    return 0;
}
