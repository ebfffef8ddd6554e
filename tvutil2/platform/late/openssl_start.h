// How OpenSSL is started, by whoever in this process needs it first.
#pragma once

#include <openssl/crypto.h>

#include <cstdint>

namespace tvutil2 {

/// For OPENSSL_init_crypto before any other call. OpenSSL would tidy up when the program ends,
/// which other threads don't wait for: one that is inside it loses what it uses, and one on its way
/// out leaves its share behind. The process gives everything back anyway.
inline constexpr std::uint64_t kOpensslStart = OPENSSL_INIT_NO_ATEXIT;

}  // namespace tvutil2
