// The escapes of session URLs: a table of their own, not RFC 3986's.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

#include <string_view>

/// " " as "+", and "%", "&", "+", "/", ":", "=", "?", "@" as "%" and two hexadecimal digits; every
/// other character as it is, except for a zero inside the text, which would end it: "%00".
TVUTIL_API CString EscapeUrlText(const CString& text);

/// The way back. "%" and two ASCII digits or letters give one character: 16 times the first and the
/// second, modulo 256, where a letter of either case counts from 10 (so "%zz" is one, too). A "%"
/// before anything else stays.
///
/// The character is the one with that number, above 127 as well: "%E9" is U+00E9 on every
/// installation, whatever its ANSI code page, and never half of a character.
TVUTIL_API CString UnescapeUrlText(const CString& text);

namespace tvutil2 {

/// EscapeUrlText, at the end of another text.
void append_escaped(std::u16string_view text, CString& out);
/// UnescapeUrlText, of a text in its place.
void unescape(CString& text);

}  // namespace tvutil2
