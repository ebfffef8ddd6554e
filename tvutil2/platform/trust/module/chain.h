// Chains of certificates: what of a message holds together, and whom it leads to.
#pragma once

#include "tvutil2/platform/trust/module/openssl_owner.h"
#include "tvutil2/platform/trust/trust_module.h"

namespace tvutil2 {

/// Whether each certificate that came with a signature is what its issuer signed, as far as the
/// issuer's came with it. With `only_chain` none may be there that isn't of the signer's chain.
[[nodiscard]] bool holds_together(STACK_OF(X509) * certificates, X509* signer, bool only_chain);

/// Where the signer's chain leads, and its certificates as far as they can be found.
void follow_chain(STACK_OF(X509) * certificates, X509* signer, const TrustSettings& settings,
                  SignatureFacts& facts);

}  // namespace tvutil2
