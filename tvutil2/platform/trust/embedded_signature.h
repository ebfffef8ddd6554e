// Where a file's signature stands in the file, and what of the file it signs.
//
// A PE file has it in the certificate table ("PE Format", "The Attribute Certificate Table"). An
// ELF file has it behind everything else:
//
//     the file as it was
//     CMS SignedData (RFC 5652), detached, DER: over the file as it was
//     24 bytes: the size of the file as it was (64 bits), the size of the signature (32 bits),
//     the number of this layout, 1 (32 bits), the mark "TvSigned"; numbers little endian
//
// Loaders of either kind pass over it. Whatever stands in the file besides must be signed: nothing
// may follow, and no number may have another value than it can have.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/system/file_bytes.h"
#include "tvutil2/platform/trust/signed_message.h"

#include <vector>

namespace tvutil2 {

struct ByteRange {
    std::uint64_t offset, size;
};

struct EmbeddedSignature {
    EmbeddedSignature() = default;
    EmbeddedSignature(EmbeddedSignature&&) noexcept = default;
    EmbeddedSignature& operator=(EmbeddedSignature&&) noexcept = default;

    SignedKind kind = SignedKind::elf;
    std::vector<std::byte> bytes;  ///< the message; `message` is a view of it
    SignedMessage message;
    std::vector<std::byte> detached;       ///< the message without its content
    std::vector<ByteRange> signed_ranges;  ///< in the order in which they are digested
    /// Of a PE file: a sum over all of it that is wrong in a file that was changed, unless it is 0,
    /// which says nothing; and what it is made of besides the signed ranges.
    std::uint32_t checksum = 0;
    std::vector<ByteRange> unsigned_ranges;
};

/// Reads the parts of a file of `size` bytes that lead to its signature, never more than a few
/// megabytes. Nothing when it has none that is well formed, with the last error:
/// TRUST_E_SUBJECT_FORM_UNKNOWN for a file of another kind, TRUST_E_NOSIGNATURE for one without,
/// TRUST_E_MALFORMED_SIGNATURE for one that can't be understood or may not be trusted in its form.
[[nodiscard]] TVUTIL_API std::optional<EmbeddedSignature> find_signature(const FileBytes& file,
                                                                         std::uint64_t size);

/// What follows the signature of an ELF file.
struct ElfSignatureEnd {
    std::uint64_t file_size;
    std::uint32_t message_size;
    std::uint32_t layout;
    char mark[8];
};
static_assert(sizeof(ElfSignatureEnd) == 24);

[[nodiscard]] TVUTIL_API ElfSignatureEnd elf_signature_end(std::uint64_t file_size,
                                                           std::uint32_t message_size);

/// The size of an ELF file without the signature that it may have, well formed or not.
[[nodiscard]] TVUTIL_API std::uint64_t size_without_signature(const FileBytes& file,
                                                              std::uint64_t size);

}  // namespace tvutil2
