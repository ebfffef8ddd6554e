// A file's signature, checked in one go.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/trust/trust_errors.h"
#include "tvutil2/platform/trust/trust_module.h"

namespace tvutil2 {

struct SignatureReport {
    /// 0; CERT_E_ for a signature that is intact, by a chain that nobody trusts;
    /// TRUST_E_BAD_DIGEST for one that isn't; TRUST_E_NOSIGNATURE for none, or none that could be
    /// read.
    LONG verdict = TRUST_E_NOSIGNATURE;
    DWORD error = 0;  ///< why there is none: a TRUST_E_ code, or the error of a file or a module
    SignedKind kind = SignedKind::elf;  ///< of the file, when there is a signature
    SignatureFacts facts;               ///< what was found out, as far as that came
};

/// Opens the file once, reads it through and tells what its signature is worth. Memory doesn't grow
/// with the file. The verdict is on the bytes that were read: a file that changes meanwhile, as far
/// as its size and times tell, is TRUST_E_BAD_DIGEST. What stands under the path later is another
/// question: who starts a program after this relies on nobody else writing to its folder. Safe
/// from any thread.
[[nodiscard]] TVUTIL_API SignatureReport check_signature(const char16_t* path);

/// Whether a verdict says that the file is what its signer signed, whoever that is.
[[nodiscard]] constexpr bool is_intact(LONG verdict) {
    return verdict != TRUST_E_BAD_DIGEST && verdict != TRUST_E_NOSIGNATURE;
}

}  // namespace tvutil2
