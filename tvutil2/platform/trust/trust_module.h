// What the module of the signatures does, which is built on OpenSSL.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/trust/embedded_signature.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvutil2 {

/// A certificate (RFC 5280). Text is UTF-8.
struct CertificateFacts {
    std::string display_name;
    std::string subject, issuer;                   ///< RFC 2253
    std::string serial;                            ///< hexadecimal digits
    std::string fingerprint;                       ///< SHA-256, hexadecimal digits
    std::int64_t valid_from = 0, valid_until = 0;  ///< seconds since 1970
};

enum class Integrity : std::uint8_t {
    intact,
    changed,    ///< the file or the message isn't what was signed
    malformed,  ///< the message can't be understood
};

enum class ChainState : std::uint8_t {
    trusted,       ///< ends in a certificate of the machine's trust folder
    known,         ///< ends in one that the host trusts
    unknown_root,  ///< ends in a root that nobody knows
    incomplete,    ///< an issuer's certificate can't be found
    expired,       ///< one of it is out of date, or not valid yet
    wrong_usage,   ///< the signer's isn't for signing programs
};

struct SignatureFacts {
    Integrity integrity = Integrity::malformed;
    ChainState chain_state = ChainState::incomplete;
    std::string digest_name;  ///< "sha256"
    std::string digest;       ///< of the signed bytes, hexadecimal digits
    // Of an intact signature:
    std::int64_t signing_time = 0;        ///< what the signer says; 0 when he doesn't
    std::vector<CertificateFacts> chain;  ///< the signer's first
};

struct TrustSettings {
    std::vector<std::string> trusted;  ///< files of certificates, PEM or DER
    std::int64_t now = 0;              ///< seconds since 1970
};

/// Certificates and a private key, PEM. The signer's certificate is the first one, and the rest of
/// its chain follows.
struct SigningIdentity {
    std::string certificates;
    std::string key;
    std::string password;  ///< of the key, UTF-8
};

class TrustModule {
  public:
    TrustModule() = default;
    virtual ~TrustModule() = default;
    TrustModule(const TrustModule&) = delete;
    TrustModule& operator=(const TrustModule&) = delete;

    /// Reads the signed ranges once, in blocks. False when the file can't be read.
    virtual bool check(const FileBytes& file, const EmbeddedSignature& signature,
                       const TrustSettings& settings, SignatureFacts& facts) const = 0;
    /// The simple display name of a certificate, UTF-8; false when it is none.
    virtual bool display_name(DerBytes certificate, std::string& name) const = 0;
    /// Signs the first `size` bytes; empty for success, else what is wrong.
    virtual std::string sign(const FileBytes& file, std::uint64_t size,
                             const SigningIdentity& identity, std::string& message) const = 0;
};

/// The module's one function. What it gives lives as long as the process.
using OpenTrustModule = const TrustModule*();
inline constexpr auto kOpenTrustModule = "tvutil2_trust";

/// Loads the module; null with the last error when it isn't there. Safe from any thread.
[[nodiscard]] TVUTIL_API const TrustModule* trust_module();

}  // namespace tvutil2
