// Whether the update module, LiveUpdate.exe beside the executable, is to run now, and its start.
//
// A product's settings and the time of its last check are the user's, in
// Software\Tolvarine\<product>\<major>\LiveUpdate. Times there are 16 bytes of a SYSTEMTIME in
// local time. One that is no date counts as the first second of 1970; one of more than 16 bytes, or
// of another type, as missing. A program code without a product has no key: the defaults stand, and
// nothing is written.
//
// The module is started only when TvCheckFileIsTolvarineSigned finds the maker's signature. Its
// command line is its path as it stands and the switches behind it; who reads it must know that a
// path may have blanks. Nothing waits for it.
//
// No failure is told or shown. Functions may run on any thread, but for TvCommonGUID.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>

/// Stores whether there are automatic checks, and every how many days.
TVUTIL_API void TvSetLiveUpdate(unsigned int code, unsigned int major, int enable,
                                unsigned int interval);

/// What is stored; 1 and 7 days where that is missing or no number. A stamp "MagicTime" of the
/// machine's key of the product that is later than the user's own (or the first one) puts both back
/// to 1 and 7 first, and stamps the user's with the time of that.
TVUTIL_API void TvGetLiveUpdateInformation(unsigned int code, unsigned int major, int& enable,
                                           unsigned int& interval);

/// Checks, if a check is due or `force` is not 0: stores the time and the module's data, and lets a
/// thread of its own test and start the module, which isn't waited for. Switches: " /silent" unless
/// forced, then " /checked" for a `checked` of 1. The first check of a product that isn't forced
/// only starts its clock. 0 always. Without the module's file nothing is written. A program that
/// ends at once may end before the module is started.
TVUTIL_API int TvCheckLiveUpdate(unsigned int code, unsigned int major, int force, int checked);

/// Starts the module with " /force", on the caller's thread. 1 when its file is there and signed,
/// whether or not it starts. The time of the last check stays.
extern "C" TVUTIL_API int TvForceLiveUpdate(unsigned int code, unsigned int major);

/// 1 when the last check lies in another period of `interval` days (see update_schedule.h), when
/// there was none, and for 0 days.
TVUTIL_API int TvIsUpdateIntervalPassed(unsigned int code, unsigned int major,
                                        unsigned int interval);
TVUTIL_API void TvSetLastUpdateCheck(unsigned int code, unsigned int major);

/// Writes what the module reads: "Version" and "Reseller" to the user's key of the product, and
/// three records to the one of its updates ("LiveUpdateData", "LiveUpdateDataE",
/// "LiveUpdateHistoryData"; see update_record).
extern "C" TVUTIL_API void TvSetLiveUpdateData(unsigned int code, unsigned int major);

/// 1 when the module's file is there.
TVUTIL_API int TvIsExistUpdateChecker();

/// The id of the user's installation: a new identifier with "_" for each "-", or what an earlier
/// version left, stored at the first call for good. Of two processes that make it at the same
/// moment both get the same. Empty when its key can't be had. The text is replaced by the next
/// call: one thread at a time.
TVUTIL_API const char16_t* TvCommonGUID();

namespace tvutil2 {

enum class UpdateCheck {
    no_module,      ///< there is no file
    not_due,        ///< too early, or automatic checks are off
    not_stored,     ///< its time could not be written, so nothing else was done
    clock_started,  ///< the first one
    begun,          ///< the module is being tested and started
};

/// TvCheckLiveUpdate, and what became of it. `thread` is the one that tests and starts the module,
/// for the caller to close; null unless `begun`, or when there could be none.
TVUTIL_API UpdateCheck check_live_update(unsigned int code, unsigned int major, int force,
                                         int checked, HANDLE& thread);

/// When the product last checked, as stored, a date or not.
[[nodiscard]] TVUTIL_API std::optional<SYSTEMTIME> last_update_check(unsigned int code,
                                                                     unsigned int major);

/// The module's path; empty when the executable's own has no room in MAX_PATH.
[[nodiscard]] TVUTIL_API CString update_module_path();

/// What the module is told of a product, as a query of a URL (RFC 3986, UTF-8):
/// "kind=1&product=1&major=8&package=7&version=8.0.0.61&reseller=Gray%20%26%20Sons". The kinds 1, 2
/// and 8 go into the three values in their order. Nothing in it is the user's.
[[nodiscard]] TVUTIL_API CString update_record(unsigned int code, unsigned int major,
                                               unsigned int kind);

}  // namespace tvutil2
