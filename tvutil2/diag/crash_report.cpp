#include "tvutil2/diag/crash_report.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/platform/crash/crash_rpt.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"

#include <iterator>

namespace {

using namespace tvutil2;

constexpr const char16_t* kUploadUrl =
    u"http://crash.tolvarine.example/crashfix/index.php/crashReport/uploadExternal";
constexpr UINT kByHttp = 1;
constexpr UINT kNever = static_cast<UINT>(-1);
constexpr DWORD kAllHandlers = 0x1FFF;
constexpr DWORD kFurtherFlag = 0x200000;
constexpr DWORD kDumpType = 0x1040;

template <class Function>
Function* operation(WORD ordinal) {
    const auto module = LoadLibraryW(u"CrashRpt.dll");
    return as_function<Function>(GetProcAddress(module, ordinal_name(ordinal)));
}

void show_last_error() {
    char16_t text[256] = {};
    if (auto* const last_error = operation<int(char16_t*, UINT)>(crash_ordinal::last_error)) {
        last_error(text, static_cast<UINT>(std::size(text)));
    }
    MessageBoxW(nullptr, text, u"Program Initialize Error", MB_OK);
}

}  // namespace

int TvCrashReportInstall(TvCrashCallback callback) {
    CrashInstallRecord record;
    record.application = u"TVC8";
    record.version = u"8";
    record.url = kUploadUrl;
    record.callback = callback;
    record.priorities[0] = kByHttp;
    record.priorities[1] = record.priorities[2] = kNever;
    record.flags = kAllHandlers | kFurtherFlag;
    record.dump_type = kDumpType;
    auto* const install = operation<int(const CrashInstallRecord*)>(crash_ordinal::install);
    if (install == nullptr || install(&record) != 0) {
        show_last_error();
        return 1;
    }
    auto* const add_file = operation<int(const char16_t*, const char16_t*, const char16_t*, DWORD)>(
        crash_ordinal::add_file);
    if (add_file != nullptr && !log_path().IsEmpty() && log_mode() != 0) {
        add_file(log_path(), nullptr, u"Application Log", 3);
    }
    if (auto* const add_screenshot = operation<int(DWORD, int)>(crash_ordinal::add_screenshot)) {
        add_screenshot(9, 95);
    }
    return 0;
}

int TvCrashReportUninstall() {
    auto* const uninstall = operation<int()>(crash_ordinal::uninstall);
    return uninstall != nullptr ? uninstall() : 1;
}
