// The platform's functions on zero-terminated 16-bit text, and MulDiv.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>

/// Units before the zero; 0 for null.
TVUTIL_API int lstrlenW(const char16_t* text);

/// Order of two texts as a person's list shows them: the words in the order of the default
/// language's collation, hyphens and apostrophes counted last, lower case before upper where that
/// is all that differs. Negative, 0 or positive. Null sorts below all other text.
TVUTIL_API int lstrcmpW(const char16_t* a, const char16_t* b);
/// The same without regard to case, and to nothing else: half-width, superscript or katakana forms
/// are others than the plain letter, as in lstrcmpW.
TVUTIL_API int lstrcmpiW(const char16_t* a, const char16_t* b);

/// Order by code unit, each unit lowered by simple case mapping. No collation.
TVUTIL_API int _wcsicmp(const char16_t* a, const char16_t* b);

/// The decimal number at the front, behind white space and a sign; 0 when there is none. Values
/// out of range give the nearest int.
TVUTIL_API int _wtoi(const char16_t* text);

/// Splits "d:\folder\name.ext" into its drive ("d:"), folder (with its last separator), base name
/// and extension (with its dot). Each part may be null with a size of 0; sizes count the zero.
/// 0, or the C error EINVAL (22) or ERANGE (34) for a part that doesn't fit: all parts are then
/// empty.
TVUTIL_API int _wsplitpath_s(const char16_t* path, char16_t* drive, std::size_t drive_size,
                             char16_t* folder, std::size_t folder_size, char16_t* name,
                             std::size_t name_size, char16_t* extension,
                             std::size_t extension_size);

/// number * numerator / denominator with a 64-bit product, rounded half away from zero. -1 when
/// the denominator is 0 or the result has no room in 32 bits.
TVUTIL_API int MulDiv(int number, int numerator, int denominator);

namespace tvutil2 {

/// Bytes in the order that a list of names has: that of lstrcmpW, but hyphens and apostrophes are
/// like other marks, and numbers count by their value ("page 9" comes before "page 10").
[[nodiscard]] TVUTIL_API std::string name_order_key(std::u16string_view name);
/// White space as the platform's run-time library sees it in 16-bit text.
[[nodiscard]] TVUTIL_API bool is_space(char16_t c);
/// Simple case mapping of one unit; a unit without a one-unit partner stays.
[[nodiscard]] TVUTIL_API char16_t to_upper(char16_t c);
[[nodiscard]] TVUTIL_API char16_t to_lower(char16_t c);

}  // namespace tvutil2
