// Texts of registry keys: what is read, written and read again is the same.
#include "tvutil2/platform/registry/reg_text.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<tvutil2::RegTextKey> keys;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto error = tvutil2::parse_reg_text(bytes, keys)) {
        fuzz::require(keys.empty() && error->line >= 1 && error->line <= size + 1);
        return 0;
    }
    std::string once;
    std::string twice;
    fuzz::require(tvutil2::write_reg_text(keys, once));
    std::vector<tvutil2::RegTextKey> again;
    fuzz::require(!tvutil2::parse_reg_text(once, again));
    fuzz::require(again.size() == keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        fuzz::require(again[i].values.size() == keys[i].values.size());
        for (std::size_t v = 0; v < keys[i].values.size(); ++v) {
            fuzz::require(again[i].values[v].type == keys[i].values[v].type &&
                          again[i].values[v].data == keys[i].values[v].data);
        }
    }
    fuzz::require(tvutil2::write_reg_text(again, twice) && twice == once);
    return 0;
}
