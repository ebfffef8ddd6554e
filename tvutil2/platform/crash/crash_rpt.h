// CrashRpt.dll: the crash reporter's five operations, which are found by their ordinals alone.
//
// A crash makes a folder "<application>_<time>_<process>" below crash_reports_folder(), with
// report.json, a picture of the main window and copies of the files that were added, and an archive
// of it beside it. The archive is sent to the address, now or, where that fails, at the next start
// of a program that installs the reporter. The ten newest are kept. Neither environment nor command
// line goes into a report, and of the memory only the picture.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>

namespace tvutil2 {

/// Called on the crashed thread behind the report; argument and result mean nothing here.
using CrashCallback = int (*)(void*);

struct CrashInstallRecord {
    DWORD size = sizeof(CrashInstallRecord);
    const char16_t* application = nullptr;
    const char16_t* version = nullptr;
    const char16_t* url = nullptr;  ///< where reports are sent (http or https); null: nowhere
    CrashCallback callback = nullptr;
    UINT priorities[3] = {};
    DWORD flags = 0;
    DWORD dump_type = 0;
    DWORD longest_report = 0;  ///< seconds that a crashed process waits for its report; 0: 30
};

namespace crash_ordinal {
inline constexpr WORD install = 7;
inline constexpr WORD uninstall = 9;
inline constexpr WORD add_file = 15;
inline constexpr WORD last_error = 23;
inline constexpr WORD add_screenshot = 27;
}  // namespace crash_ordinal

/// 0 when the handlers are installed. Else their text is crash_last_error's: a record of another
/// size or without a fit name (up to 100 bytes, no "/", no "." in front), handlers that are there
/// already, no helper program. Not safe from two threads at once, like all of these.
int crash_install(const CrashInstallRecord* record);
int crash_uninstall();
/// The file is copied when a report is made, and may be missing then; 0 on success. The copy has
/// the name of the file, `name` and `flags` aren't looked at.
int crash_add_file(const char16_t* path, const char16_t* name, const char16_t* description,
                   DWORD flags);
/// A picture of the main window goes into reports, as JPEG of that quality (1 to 100): of the
/// windows without an owner the largest, as far as it is painted. Where none is shown a report says
/// so. 0 on success; `flags` aren't looked at.
int crash_add_screenshot(DWORD flags, int quality);
/// The text of this module's last failure, cut to `size` units with the zero; its length.
int crash_last_error(char16_t* text, UINT size);

/// Host folder that reports are kept in; it needn't be there.
[[nodiscard]] TVUTIL_API std::string crash_reports_folder();
/// Host path of the helper program; it needn't be there.
[[nodiscard]] TVUTIL_API std::string crash_helper_file();

}  // namespace tvutil2
