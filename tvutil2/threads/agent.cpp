#include "tvutil2/threads/agent.h"

#include "tvutil2/data/path.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/input_idle.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/services/signature.h"
#include "tvutil2/threads/single_instance.h"

namespace {

constexpr UINT kShowAgent = 1141;

// Empty for an executable whose path is too long to be taken apart: a bare name would be looked for
// in the current folder.
CString agent_program() {
    constexpr DWORD kLongestPath = 32768;
    CString own;
    const auto length = GetModuleFileNameW(nullptr, own.GetBuffer(kLongestPath), kLongestPath);
    own.ReleaseBuffer(static_cast<int>(length < kLongestPath ? length : 0));
    CString program;
    ReplaceFnameOfPath(program, own, u"Halket");
    return program.Find(u'\\') >= 0 ? program : CString();
}

}  // namespace

int TvRunHalket(int show, const char16_t* arguments) {
    const auto title = tvutil2::instance_window_title(u"HALKET");
    if (auto* const window = FindWindowW(tvutil2::kInstanceWindowClass, title)) {
        if (show != 0) PostMessageW(window, kShowAgent, 1, 0);
        return 1;
    }
    const auto program = agent_program();
    if (TvVerifyTolvarineExe(program, show == 0 ? TRUE : FALSE) != 1) return 0;
    SHELLEXECUTEINFOW start{};
    start.cbSize = sizeof start;
    start.fMask = SEE_MASK_NOCLOSEPROCESS;
    start.lpFile = program;
    start.lpParameters = arguments;
    start.nShow = show != 0 ? SW_SHOWNORMAL : SW_HIDE;
    if (!ShellExecuteExW(&start) || start.hProcess == nullptr) return 0;
    WaitForInputIdle(start.hProcess, INFINITE);
    CloseHandle(start.hProcess);
    return 1;
}
