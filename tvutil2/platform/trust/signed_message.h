// The message that a signature consists of: CMS SignedData (RFC 5652) by one signer.
//
// Two forms are understood, and of them what is written today: a detached message (an ELF file's),
// and the one of a PE file ("Windows Authenticode Portable Executable Signature Format"), whose
// content holds the digest of the file. Whatever a signature doesn't cover must have the one value
// that it can have, so that no byte of a message can be another one: its versions, its list of
// digests, the signer's issuer and the form of each algorithm. Only attributes that the signer
// didn't sign, where a counter-signer puts a time, are anybody's; a detached message has none.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/trust/der.h"

#include <vector>

namespace tvutil2 {

enum class SignedKind : std::uint8_t { pe, elf };

/// By size in bytes. Older ones aren't safe any more and count as no signature.
enum class DigestKind : std::uint8_t { sha256 = 32, sha384 = 48, sha512 = 64 };

/// Views of the message's bytes.
struct SignedMessage {
    DigestKind digest = DigestKind::sha256;
    DerBytes content_type;  ///< object id
    DerBytes content;       ///< of a PE file; the bytes that are digested
    DerBytes file_digest;   ///< of a PE file, in the content
    std::vector<DerBytes> certificates;
    DerBytes issuer;  ///< the signer's certificate's: name and number, whole values
    DerBytes serial;
    bool has_unsigned_attributes = false;
    DerBytes front, behind;  ///< what stands in SignedData in front of the content and behind it
};

/// Nothing for what is no such message, or has anything behind it.
[[nodiscard]] TVUTIL_API std::optional<SignedMessage> read_signed_message(DerBytes bytes,
                                                                          SignedKind kind);

/// The same message with its content taken out.
[[nodiscard]] TVUTIL_API std::vector<std::byte> detached_message(const SignedMessage& message);

}  // namespace tvutil2
