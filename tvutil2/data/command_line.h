// Splitting a command line.
#pragma once

#include "tvutil2/framework/strings.h"

class CStringList;

/// Appends `first`, if it isn't empty, and the items of `args` to `out`; the count of `out`, with
/// whatever it held before. Blanks part items. Double quotes hold an item together and end it; in
/// it, or outside, a backslash makes the next quote or backslash a plain one. A backslash in front
/// of anything else is dropped, and goes on waiting for the next quote, backslash or unquoted
/// blank.
TVUTIL_API int ArgumentSplit(const CString& args, CStringList& out, const CString& first);
