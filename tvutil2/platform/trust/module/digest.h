// Digests of parts of a file, which is read in blocks.
#pragma once

#include "tvutil2/platform/trust/module/openssl_owner.h"
#include "tvutil2/platform/trust/trust_module.h"

#include <functional>
#include <string>

namespace tvutil2 {

[[nodiscard]] const EVP_MD* digest_method(DigestKind kind);

/// Hands the bytes of a range to `take`, block by block; false when the file ends before or `take`
/// says so.
bool read_through(const FileBytes& file, ByteRange range,
                  const std::function<bool(DerBytes)>& take);

/// The digest of the ranges, one behind the other, and with `sum` the sum of all numbers of 32 bits
/// in them. False when they can't be read.
bool digest_ranges(const FileBytes& file, const std::vector<ByteRange>& ranges, DigestKind kind,
                   std::string& digest, std::uint64_t* sum);

/// The sum of numbers of 32 bits, little endian; what is left over counts as filled up with zeros.
[[nodiscard]] std::uint64_t sum_of_numbers(DerBytes bytes);

}  // namespace tvutil2
