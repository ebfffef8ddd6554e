// Any text may be read as a URL; one that is taken comes back from its written form.
#include "fuzz/url_law.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const auto& text : {fuzz::widened(bytes), fuzz::wide_text(data, size)}) {
        CUrlInfo raw;
        raw.Parse_URL(text.c_str(), 0);
        CUrlInfo info;
        if (info.Parse_URL(text.c_str(), 1) == 1) fuzz::require_round_trip(info);
    }
    return 0;
}
