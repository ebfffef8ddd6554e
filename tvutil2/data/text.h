// Small helpers for texts, lists of texts and file names. All are safe from any thread, each object
// belonging to one at a time.
#pragma once

#include "tvutil2/framework/strings.h"

class CStringArray;
class CStringList;

namespace tvutil2 {

/// A string of the library's own resources, in the language of the calling thread; "??" when there
/// is none of that id.
[[nodiscard]] TVUTIL_API CString library_string(UINT id);

}  // namespace tvutil2

/// Formats like CString::FormatV.
[[nodiscard]] TVUTIL_API CString csFmt(const char16_t* format, tvutil2::FormatArguments arguments);

/// The same with a format string from the resources: the product's own, as CString::LoadString
/// finds them, else the library's; "??" when there is none.
[[nodiscard]] TVUTIL_API CString csFmt(UINT id, tvutil2::FormatArguments arguments);

/// Both with the arguments one by one.
template <class... Arguments>
[[nodiscard]] CString csFmt(const char16_t* format, const Arguments&... arguments) {
    const tvutil2::FormatArgument list[] = {arguments..., nullptr};
    return csFmt(format, tvutil2::FormatArguments(list, sizeof...(arguments)));
}
template <class... Arguments>
[[nodiscard]] CString csFmt(UINT id, const Arguments&... arguments) {
    const tvutil2::FormatArgument list[] = {arguments..., nullptr};
    return csFmt(id, tvutil2::FormatArguments(list, sizeof...(arguments)));
}

/// Appends the parts of `text` between whole occurrences of `delimiter` to `out` and gives their
/// number. Occurrences in a row, and at the ends, make no empty parts. An empty or null delimiter
/// parts nothing.
TVUTIL_API int StrTok(CStringArray& out, const CString& text, const char16_t* delimiter);

/// Digits with a comma between each three, counted from the right: "1234567" gives "1,234,567". A
/// sign in front stays in front and doesn't count.
TVUTIL_API CString GetNumberFormatByComma(const CString& digits);

/// Empties `to`, then copies every element in order. A list copied to itself stays as it is.
TVUTIL_API void TvCopyStringList(CStringList* from, CStringList* to);

/// 1 when both hold equal texts, compared exactly, in the same order.
TVUTIL_API int TvEqualStringList(CStringList* a, CStringList* b);

/// 1 when `name` holds none of \ / : * ? " < > |. Empty text holds none; null gives 0.
TVUTIL_API int IsValidFileName(const char16_t* name);

/// Replaces each of those nine characters by "_".
TVUTIL_API void TvSmartFileRename(CString& name);
