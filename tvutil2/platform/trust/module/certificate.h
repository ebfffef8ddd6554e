// Certificates as OpenSSL reads them.
#pragma once

#include "tvutil2/platform/trust/module/openssl_owner.h"
#include "tvutil2/platform/trust/trust_module.h"

namespace tvutil2 {

/// Nothing but this one certificate; null for all else.
[[nodiscard]] Certificate read_certificate(DerBytes bytes);
/// All certificates of a file, PEM or DER.
[[nodiscard]] Certificates read_certificates(const std::string& bytes);

/// Common name, else unit, organisation or address of the subject, the first of its kind; else the
/// address in the alternative name. Empty when there is none of these.
[[nodiscard]] std::string display_name_of(X509* certificate);
[[nodiscard]] CertificateFacts facts_of(X509* certificate);

[[nodiscard]] std::string hex(const unsigned char* bytes, std::size_t size);
[[nodiscard]] std::int64_t seconds_of(const ASN1_TIME* time);

}  // namespace tvutil2
