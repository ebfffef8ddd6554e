// Protected strings: the one form in which the family keeps a secret text.
//
// A protected string is the Base64 (CBase64) of the text's bytes in the ANSI code page under RC4,
// followed, where a digest is wanted, by the 16 bytes of the MD5 (RFC 1321) of the plain bytes. The
// RC4 key is the MD5 of the key text. There is no salt: the same text under the same key gives the
// same string. This is what the family's programs read from one another and from what they stored
// long ago; it keeps a password from being read by the way, and no more than that.
//
// Working storage is wiped on every path. Functions are safe from any thread but for the two that
// say otherwise.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

/// The key text for what belongs to this machine: the user's name, ":", the computer's name, in the
/// ANSI code page and at most 255 characters. Made once in the life of the process; never null.
TVUTIL_API const char* TvGetCipherKey();

/// `text` protected with a digest under `key`, in a string of this function's own, which its next
/// call replaces: two threads don't call it at the same time.
TVUTIL_API char16_t* TvGetEncryptedString(const char16_t* key, const char16_t* text);

/// The way back, with the same rules; `text` itself when it can't be read under this key.
TVUTIL_API char16_t* TvGetDecryptedString(const char16_t* key, const char16_t* text);

/// The key text of the current account: its name and the text of its security identifier, combined
/// as `version` asks (compared as text, with lstrcmpW): up to "5.2" the identifier alone; up to
/// "7.0" the name followed by the identifier; above it the identifier backwards, followed by the
/// name. 0 when the account can't be had: without a name `out` is left alone, without an identifier
/// it is empty.
TVUTIL_API int GetCurSID(CString& out, const char16_t* version);

namespace tvutil2 {

/// CUrlInfo::EncryptString and CUrlInfo::DecryptString, which see. `mac` is the number of one of
/// CUrlInfo's MAC values, or any other number.
int encrypt_string(const char* key, CString& text, int mac);
int decrypt_string(const char* key, CString& text, int mac);

/// The way of the secrets in session URLs: with a digest, under the key text of the current account
/// for version "5.3". False, with `text` as it was, when the account can't be had. A text that
/// can't be read under this account stays as it is.
bool protect_for_account(CString& text);
bool reveal_for_account(CString& text);

}  // namespace tvutil2
