// Resources of an executable that somebody else made: never more than was asked for, and never
// anything outside the file.
#include "tvutil2/platform/system/pe_file.h"

#include <algorithm>
#include <memory>

#include "fuzz/fuzz_input.h"

namespace {

// Nothing larger than the file is ever asked of it: that would be memory taken on the word of a
// number in it.
class CheckedBytes : public tvutil2::MemoryBytes {
  public:
    explicit CheckedBytes(std::span<const std::byte> bytes)
        : MemoryBytes(bytes), m_size(bytes.size()) {}

    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override {
        // The parsers' own structures may be longer than a tiny file.
        fuzz::require(out.size() <= std::max<std::size_t>(m_size, 4096));
        return MemoryBytes::read(offset, out);
    }

  private:
    std::size_t m_size;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Of exactly its size, so that a sanitizer sees a read outside.
    const auto image = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(image.get(), data, size);
    const CheckedBytes file({image.get(), size});
    for (const std::size_t most : {std::size_t{0}, std::size_t{100}, std::size_t{65535}}) {
        for (const WORD type : {WORD{6}, WORD{16}}) {
            const auto found = tvutil2::pe_resource(file, type, 1, most);
            fuzz::require(!found || found->size() <= std::min(most, size));
        }
    }
    std::size_t total = 0;
    const bool is_whole = tvutil2::visit_pe_resources(file, [&](const tvutil2::PeResource& each) {
        fuzz::require(each.data.size() <= size && each.name.text.size() * 2 <= size);
        total += each.data.size() + 32;
        return total < 1000000;
    });
    fuzz::require(!is_whole || tvutil2::is_pe_file(file));
    return 0;
}
