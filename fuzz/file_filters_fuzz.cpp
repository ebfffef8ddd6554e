// The string of filters: units in host byte order, with the zeros that end it behind them and
// nothing else, so that a sanitizer sees a read behind the end.
#include "tvutil2/platform/window/common_dialogs/file_filters.h"

#include <algorithm>
#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto given = fuzz::wide_text(data, size);
    const auto text = std::make_unique<char16_t[]>(given.size() + 2);
    std::copy(given.begin(), given.end(), text.get());
    const auto filters = tvutil2::filters_in(text.get());

    // All but the string's zeros and semicolons comes back, in its order.
    std::u16string expected;
    std::u16string found;
    const char16_t* at = text.get();
    for (std::size_t part = 0; *at != 0; ++part) {
        const std::u16string_view read(at);
        std::copy_if(read.begin(), read.end(), std::back_inserter(expected),
                     [&](char16_t c) { return part % 2 == 0 || c != u';'; });
        at += read.size() + 1;
    }
    for (const auto& filter : filters) {
        fuzz::require(!filter.name.empty());
        found += filter.name;
        for (const auto& pattern : filter.patterns) {
            fuzz::require(!pattern.empty() && pattern.find(u';') == std::u16string::npos);
            found += pattern;
        }
    }
    fuzz::require(found == expected);
    return 0;
}
