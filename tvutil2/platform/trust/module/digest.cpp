#include "tvutil2/platform/trust/module/digest.h"

#include <algorithm>
#include <cstring>

namespace tvutil2 {
namespace {

constexpr std::size_t kBlock = std::size_t{256} << 10U;

}  // namespace

const EVP_MD* digest_method(DigestKind kind) {
    switch (kind) {
        case DigestKind::sha384:
            return EVP_sha384();
        case DigestKind::sha512:
            return EVP_sha512();
        default:
            return EVP_sha256();
    }
}

bool read_through(const FileBytes& file, ByteRange range,
                  const std::function<bool(DerBytes)>& take) {
    std::vector<std::byte> block(std::min<std::uint64_t>(kBlock, range.size));
    while (range.size != 0) {
        const auto part = std::span(block).first(std::min<std::uint64_t>(block.size(), range.size));
        if (!file.read(range.offset, part) || !take(part)) return false;
        range.offset += part.size();
        range.size -= part.size();
    }
    return true;
}

std::uint64_t sum_of_numbers(DerBytes bytes) {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    while (bytes.size() >= sizeof(std::uint64_t)) {
        std::uint64_t two = 0;
        std::memcpy(&two, bytes.data(), sizeof two);
        low += two & 0xFFFFFFFF;
        high += two >> 32U;
        bytes = bytes.subspan(sizeof two);
    }
    std::uint64_t rest = 0;
    if (!bytes.empty()) std::memcpy(&rest, bytes.data(), bytes.size());
    return low + high + (rest & 0xFFFFFFFF) + (rest >> 32U);
}

bool digest_ranges(const FileBytes& file, const std::vector<ByteRange>& ranges, DigestKind kind,
                   std::string& digest, std::uint64_t* sum) {
    const DigestContext context(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), digest_method(kind), nullptr) != 1) {
        return false;
    }
    const auto take = [&](DerBytes part) {
        if (sum != nullptr) *sum += sum_of_numbers(part);
        return EVP_DigestUpdate(context.get(), part.data(), part.size()) == 1;
    };
    for (const auto& range : ranges) {
        if (!read_through(file, range, take)) return false;
    }
    unsigned char value[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_DigestFinal_ex(context.get(), value, &size) != 1) return false;
    digest.assign(reinterpret_cast<const char*>(value), size);
    return true;
}

}  // namespace tvutil2
