// Installs the crash reporter and crashes, whatever its arguments are.
#include "tvutil2/diag/crash_report.h"

#include <csignal>

int main() {
    if (TvCrashReportInstall(nullptr) != 0) return 1;
    std::raise(SIGSEGV);
    return 0;
}
