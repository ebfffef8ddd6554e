// Wildcards against a plain recursive reading of the same rules, and in bounded time.
//
// The input is the pattern up to its first zero byte, and the text.
#include "tvutil2/data/names.h"

#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

// Every way to let each "*" stand for a run, by a table. A "*" that meets a "*" in the text is that
// character and nothing else, unless an earlier "*" comes back to it; so the reference holds for
// texts without one.
bool fits(const std::u16string& pattern, const std::u16string& text) {
    std::vector<bool> row(text.size() + 1);
    row[0] = true;
    for (const auto p : pattern) {
        std::vector<bool> next(text.size() + 1);
        next[0] = p == u'*' && row[0];
        for (std::size_t t = 1; t <= text.size(); ++t) {
            next[t] =
                p == u'*' ? next[t - 1] || row[t] : row[t - 1] && (p == u'?' || p == text[t - 1]);
        }
        row = std::move(next);
    }
    return row.back();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto end = std::min(bytes.find('\0'), bytes.size());
    const auto pattern = fuzz::widened(bytes.substr(0, end));
    auto text = fuzz::widened(bytes.substr(std::min(end + 1, bytes.size())));
    text.resize(std::char_traits<char16_t>::length(text.c_str()));
    const bool result = WildcardMatch(pattern.c_str(), text.c_str()) != 0;
    if (text.find(u'*') == std::u16string::npos) fuzz::require(result == fits(pattern, text));
    return 0;
}
