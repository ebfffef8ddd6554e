// Files of holders that nobody wrote.
//
// Laws: what is read and written again reads the same; no record makes up a process or a
// descriptor.
#include "tvutil2/platform/objects/shared/holders.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto holders = tvutil2::parse_holders({reinterpret_cast<const char*>(data), size});
    for (const auto& holder : holders) fuzz::require(holder.process > 0 && holder.descriptor >= 0);
    const auto bytes = tvutil2::format_holders(holders);
    fuzz::require(bytes.size() <= size);
    fuzz::require(tvutil2::format_holders(tvutil2::parse_holders(bytes)) == bytes);
    return 0;
}
