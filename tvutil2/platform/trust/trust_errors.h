// What can be wrong with a signature.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr LONG TRUST_E_PROVIDER_UNKNOWN = static_cast<LONG>(0x800B0001);
inline constexpr LONG TRUST_E_SUBJECT_FORM_UNKNOWN = static_cast<LONG>(0x800B0003);
inline constexpr LONG TRUST_E_NOSIGNATURE = static_cast<LONG>(0x800B0100);
inline constexpr LONG TRUST_E_BAD_DIGEST = static_cast<LONG>(0x80096010);
inline constexpr LONG TRUST_E_MALFORMED_SIGNATURE = static_cast<LONG>(0x80096011);
inline constexpr LONG CERT_E_EXPIRED = static_cast<LONG>(0x800B0101);
inline constexpr LONG CERT_E_UNTRUSTEDROOT = static_cast<LONG>(0x800B0109);
inline constexpr LONG CERT_E_CHAINING = static_cast<LONG>(0x800B010A);
inline constexpr LONG CERT_E_WRONG_USAGE = static_cast<LONG>(0x800B0110);
inline constexpr DWORD CRYPT_E_NOT_FOUND = 0x80092004;
inline constexpr DWORD CRYPT_E_NO_MATCH = 0x80092009;
