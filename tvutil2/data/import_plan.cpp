#include "tvutil2/data/import_plan.h"

#include "tvutil2/data/data_import.h"
#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/settings/ini_file.h"
#include "tvutil2/settings/ini_reader.h"
#include "tvutil2/settings/registry.h"

#include <array>
#include <iterator>
#include <utility>

namespace {

using tvutil2::ImportAnswer;
using tvutil2::ImportPlan;
using tvutil2::ImportStep;

constexpr unsigned int kOnlyCopies = 4;

constexpr struct {
    const char16_t* tool_switch;
    const char16_t* status;
    bool comes_with_enterprise;
} kKinds[] = {
    {u"-enterprise", u"Enterprise", false},
    {u"-ombrelia", u"Ombrelia", false},
    {u"-pelrin", u"Pelrin", true},
    {u"-dovr", u"Dovr", true},
};

constexpr const char16_t* kFolders[] = {
    u"Common",
    u"SECSH",
    u"Ombrelia\\Yarrowe",
    u"\\Ombrelia\\Keyboard",
    u"Ombrelia\\addon",
    u"Pelrin\\Scripts",
    u"Pelrin\\QuickButton Files",
    u"Pelrin\\ColorScheme Files",
    u"Pelrin\\HighlightSet Files",
};

constexpr auto kChoices = u"SessionPath.ini";

constexpr const char16_t* kFiles[] = {
    kChoices,
    u"Ombrelia\\Vantrosa.ini",
    u"Ombrelia\\Lumsey.ini",
    u"Ombrelia\\Hosts.ini",
    u"Ombrelia\\Esound.ini",
    u"Ombrelia\\Commands.ini",
    u"Pelrin\\alias.ini",
    u"Pelrin\\Pelrin.ini",
    u"Pelrin\\trigger.ini",
    u"Pelrin\\CustomKeyMap.ckm",
    u"Dovr\\Dovr.ini",
    u"Dovr\\LocalBookmark.ini",
};

constexpr struct {
    const char16_t* folder;
    const char16_t* key;
} kSessions[] = {
    {u"Ombrelia\\Sessions", u"OmbreliaSessions"},
    {u"Pelrin\\Sessions", u"Pelrin"},
    {u"Dovr\\Sessions", u"Dovr"},
};

CString in(const CString& folder, const char16_t* tail) {
    CString path = folder;
    AppendPath(path, tail);
    return path;
}

// Where version 7 or 6 keeps its data; empty when there is none.
CString data_folder_of(unsigned int version) {
    CString name;
    name.Format(u"Software\\Tolvarine\\Common\\%u\\UserData", version);
    CRegistry key;
    if (key.Open(HKEY_CURRENT_USER, name, 0, KEY_ALL_ACCESS) == 0) return {};
    auto folder = key.GetValue(u"UserDataPath", CString());
    if (folder.IsEmpty() || DoesFileExist(folder) == 0) return {};
    return folder;
}

// The folder in use may be a makeshift for the one that is stored.
ImportPlan with_target(ImportPlan plan) {
    std::array<char16_t, MAX_PATH> stored{};
    const bool is_had = TvGetUserDataPath(stored.data()) != 0;
    plan.to = GetUserDataFolderPath(0);
    if (!is_had || plan.to != CString(stored.data())) plan.answer = ImportAnswer::no_folder;
    return plan;
}

bool is_one_folder(const CString& a, const CString& b) {
    if (a.CompareNoCase(b) == 0) return true;
    const auto id = tvutil2::folder_id(a.GetString());
    return id && id == tvutil2::folder_id(b.GetString());
}

ImportPlan plan_older(unsigned int kind) {
    ImportPlan plan;
    plan.answer = ImportAnswer::not_asked;
    if (kind == kOnlyCopies) return plan;
    plan.answer = ImportAnswer::settled;
    if (kind < std::size(kKinds)) {
        const auto& product = kKinds[kind];
        if (product.comes_with_enterprise && GetImportPrevStatus(u"Enterprise") == 1) return plan;
        plan.status = product.status;
        plan.tool_switch = product.tool_switch;
    }
    if (GetImportPrevStatus(plan.status) != 0) return plan;

    std::array<char16_t, MAX_PATH> path{};
    plan.answer = ImportAnswer::nothing;
    plan.version = TvGetPrevVersion(path.data(), plan.status);
    if (plan.version == 0) return plan;
    plan.from = path.data();
    plan.answer = ImportAnswer::tool;
    plan = with_target(std::move(plan));
    if (plan.answer == ImportAnswer::tool && is_one_folder(plan.from, plan.to)) {
        plan.answer = ImportAnswer::nothing;
    }
    return plan;
}

// Neither the target itself nor the root of the drive that it is on.
bool may_be_copied(const CString& folder, const CString& target) {
    const auto id = tvutil2::folder_id(folder.GetString());
    return id && id != tvutil2::folder_id(target.GetString()) &&
           id != tvutil2::folder_id((target.Left(2) + u'\\').GetString());
}

}  // namespace

ImportPlan tvutil2::plan_import(unsigned int kind) {
    ImportPlan plan;
    if (GetImportPrevStatus(u"ImportDone") != 0) return plan;
    for (const unsigned int version : {7U, 6U}) {
        CString mark;
        mark.Format(u"Version%u", version);
        if (GetImportPrevStatus(mark) != 0) return plan;
        plan.from = data_folder_of(version);
        if (plan.from.IsEmpty()) continue;
        plan.answer = ImportAnswer::copy;
        plan.version = version;
        return with_target(std::move(plan));
    }
    return plan_older(kind);
}

std::vector<ImportStep> tvutil2::import_steps(const CString& from, const CString& to) {
    std::vector<ImportStep> steps;
    for (const auto* folder : kFolders) {
        ImportStep step{ImportStep::Kind::folder, in(from, folder), in(to, folder)};
        if (!step.to.View().starts_with(step.from.View())) steps.push_back(std::move(step));
    }
    for (const auto* file : kFiles) {
        steps.push_back({ImportStep::Kind::file, in(from, file), in(to, file)});
    }
    return steps;
}

// Read as it is: a CIniFile that reads a narrow file writes it anew, and the old one isn't ours.
std::vector<ImportStep> tvutil2::session_steps(const CString& from, const CString& to) {
    auto file = in(to, kChoices);
    if (DoesFileExist(file) == 0) file = in(from, kChoices);
    CIniFile choices;
    read_ini(file, choices);
    std::vector<ImportStep> steps;
    for (const auto& [folder, key] : kSessions) {
        auto source = choices.GetValue(u"SessionPath", key, u"");
        if (source.IsEmpty()) source = in(from, folder);
        ImportStep step{ImportStep::Kind::sessions, std::move(source), in(to, folder)};
        if (may_be_copied(step.from, step.to)) steps.push_back(std::move(step));
    }
    return steps;
}
