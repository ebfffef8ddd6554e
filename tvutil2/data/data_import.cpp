#include "tvutil2/data/data_import.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/folders.h"
#include "tvutil2/data/import_plan.h"
#include "tvutil2/data/path.h"
#include "tvutil2/data/proxy_import.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_copy.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/process/processes.h"
#include "tvutil2/services/signature.h"
#include "tvutil2/settings/registry.h"

#include <string_view>

namespace {

using tvutil2::ImportAnswer;
using tvutil2::ImportStep;

constexpr auto kImportKey = u"Software\\Tolvarine\\Common\\8\\Import";

void copy_file(const ImportStep& step, tvutil2::CopyObserver* observer) {
    if (DoesFileExist(step.from) == 0) return;
    tvutil2::ensure_private_folder(step.to.Left(step.to.ReverseFind(u'\\')));
    const bool is_copied = CopyFileW(step.from, step.to, TRUE) != FALSE;
    const auto error = GetLastError();
    if (observer == nullptr) return;
    if (is_copied) {
        observer->copied();
    } else if (error != ERROR_FILE_EXISTS) {
        observer->failed(step.from, error);
    }
}

void carry_out(const std::vector<ImportStep>& steps, tvutil2::CopyObserver* observer) {
    for (const auto& step : steps) {
        if (step.kind == ImportStep::Kind::file) {
            copy_file(step, observer);
        } else {
            CopyFolder(step.from, step.to, observer);
        }
    }
}

void copy_version(const tvutil2::ImportPlan& plan, tvutil2::CopyObserver* observer) {
    carry_out(tvutil2::import_steps(plan.from, plan.to), observer);
    carry_out(tvutil2::session_steps(plan.from, plan.to), observer);
    // All sessions lie in the default folders now.
    CString choices = plan.to;
    AppendPath(choices, u"SessionPath.ini");
    DeleteFileW(choices);
    if (plan.version == 6) tvutil2::import_proxies(plan.to, observer);

    CString mark;
    mark.Format(u"Version%u", plan.version);
    SetImportPrevStatus(mark, 1);
    SetImportPrevStatus(u"ImportDone", 1);
    SetImportPrevStatus(u"PelrinOptions", 1);
}

void run_migration_tool(const CString& tool_switch) {
    CString line = u"BIRKENFOLD.EXE -upgrade " + tool_switch;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.GetBuffer(), nullptr, nullptr, TRUE, NORMAL_PRIORITY_CLASS,
                        nullptr, nullptr, &start, &process)) {
        return;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

void take_over_older(const tvutil2::ImportPlan& plan, tvutil2::CopyObserver* observer) {
    if (!plan.tool_switch.IsEmpty()) run_migration_tool(plan.tool_switch);
    tvutil2::import_proxies(plan.to, observer);
    SetImportPrevStatus(plan.status, 1);
    SetImportPrevStatus(u"ImportDone", 1);
}

// The data of a version before 6, as the folder at `path` and the registry tell of it.
bool has_data(bool has_folder, unsigned int version, const char16_t* product) {
    return has_folder && TvExsistPreviousUserData(version, product) != 0;
}

bool has_spool(char16_t* path, unsigned int version) {
    CString folder;
    folder.Format(u"%s\\Zemt\\%u\\Spool", GetPreviousCommonDataFolderPath(), version);
    const auto text = folder.View();
    path[text.size() < MAX_PATH ? text.copy(path, MAX_PATH - 1) : 0] = 0;
    return *path != 0 && DoesFolderExist(path) != 0;
}

}  // namespace

void TvInitDataFolder(unsigned int kind) {
    TvInitDataFolder(kind, nullptr);
}

void TvInitDataFolder(unsigned int kind, tvutil2::CopyObserver* observer) {
    const auto plan = tvutil2::plan_import(kind);
    switch (plan.answer) {
        case ImportAnswer::copy:
            copy_version(plan, observer);
            break;
        case ImportAnswer::tool:
            take_over_older(plan, observer);
            break;
        case ImportAnswer::nothing:
            SetImportPrevStatus(plan.status, 2);
            break;
        case ImportAnswer::done:
        case ImportAnswer::settled:
        case ImportAnswer::not_asked:
        case ImportAnswer::no_folder:
            break;
    }
}

unsigned int TvGetPrevVersion(char16_t* path, const char16_t* product) {
    if (path == nullptr || product == nullptr) return 0;
    *path = 0;
    const std::u16string_view name(product);
    if (name == u"Zemt") {
        if (has_data(has_spool(path, 5), 5, product)) return 5;
        return has_data(has_spool(path, 4), 4, product) ? 4 : 0;
    }
    // The package's data lies in the folders of its products.
    const auto* const folder =
        name.find(u"Enterprise") != std::u16string_view::npos ? nullptr : product;
    if (has_data(TvGetUserDataPathV5(path, folder) != 0, 5, product)) return 5;
    return has_data(TvGetUserDataPathV4(path, folder) != 0, 4, product) ? 4 : 0;
}

void ExecuteBirkenfoldForMove(const char16_t* what) {
    CString tool;
    AfxGetModulePath(tool, u"Birkenfold.exe");
    if (TvVerifyTolvarineExe(tool, TRUE) != 1) return;
    const auto arguments = u"-move -" + CString(what);
    ShellExecuteW(nullptr, nullptr, tool, arguments, nullptr, SW_SHOW);
}

unsigned int GetImportPrevStatus(const char16_t* name) {
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, kImportKey, 0, KEY_READ);
    return key.GetValue(name, DWORD{0});
}

void SetImportPrevStatus(const char16_t* name, unsigned int status) {
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, kImportKey, 1, KEY_ALL_ACCESS);
    key.SetValue(name, DWORD{status});
}
