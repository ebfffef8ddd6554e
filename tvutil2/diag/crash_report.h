// Reports of crashes.
//
// A crashed process is looked at by a helper program, which leaves a report folder below the user's
// data, and still ends by its signal. The log is part of reports if it was started before.
#pragma once

#include "tvutil2/platform/base/export.h"

extern "C" {

/// Called on the crashed thread when the report is written, on a small stack, with whatever locks
/// the thread holds. After ten seconds it is given up.
using TvCrashCallback = int (*)(void*);

/// 0 on success. Otherwise 1, and the reason was shown: the handlers are there already, or the
/// helper program isn't. Not safe from two threads at once.
TVUTIL_API int TvCrashReportInstall(TvCrashCallback callback);

/// 0 when the handlers are gone.
TVUTIL_API int TvCrashReportUninstall();
}
