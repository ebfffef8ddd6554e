// tvutil sessions: where the sessions of each product lie, and moving them.
#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/data/session_folders.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/shell_operations.h"
#include "tvutil2/settings/ini_file.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "tools/tvutil/command.h"

namespace {

namespace fs = std::filesystem;

constexpr const char16_t* kKinds[] = {u"Pelrin", u"Dovr", u"Ombrelia", u"Lumsey", u"VNC"};
constexpr auto kSuiteKey = u"OmbreliaSessions";

struct Options {
    std::string kind;
    std::string folder;
    bool yes = false;
    bool leave_files = false;
    bool dry_run = false;
    bool json = false;
    bool host = false;
};

CString folder_of(const std::u16string& kind) {
    return kind == kSuiteKey ? AfxGetOmbrSessionPath() : AfxGetSessionPath(kind.c_str());
}

CString chosen_folder(const std::u16string& kind) {
    CString file(GetUserDataFolderPath(0));
    AppendPath(file, u"SessionPath.ini");
    return CIniFile(file).GetValue(u"SessionPath", kind.c_str(), u"");
}

void list(const Options& options) {
    nlohmann::ordered_json all;
    for (const auto* kind : kKinds) {
        const auto folder = AfxGetSessionPath(kind);
        const bool is_default = folder == AfxGetDefaultSessionPath(kind);
        CString extension;
        GetSessionFilesExt(kind, extension);
        if (!options.json) {
            auto line = tool::narrow(kind);
            line.resize(10, ' ');
            tool::print(line + tool::shown_path(folder.View(), options.host) +
                        (is_default ? "" : "  (chosen)"));
            continue;
        }
        all[tool::narrow(kind)] = {{"folder", tool::shown_path(folder.View(), options.host)},
                                   {"extension", tool::narrow(extension.View())},
                                   {"chosen", !is_default}};
    }
    if (options.json) tool::print(all);
}

void where(const Options& options) {
    const auto folder = tool::shown_path(folder_of(tool::wide(options.kind)).View(), options.host);
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"folder", folder}});
    } else {
        tool::print(folder);
    }
}

void find(const Options& options) {
    const bool is_found = ExistSessionFile(tool::wide(options.folder).c_str()) != 0;
    if (options.json) tool::print(nlohmann::ordered_json{{"found", is_found}});
    if (!is_found) tool::exit_with(tool::Exit::no);
}

// The host's names, below `folder`, of what a move takes. Links to folders are not entered.
std::vector<std::string> files_to_move(const CString& folder, const CString& extension) {
    std::vector<std::string> files;
    const auto root = tvutil2::host_path(folder.View());
    if (!root) return files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(
             *root, fs::directory_options::skip_permission_denied, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) continue;
        const auto name = tvutil2::platform_path(entry->path().string());
        if (!name) continue;
        const CString path{std::u16string_view(*name)};
        if (path.Right(extension.GetLength()).CompareNoCase(extension) == 0) {
            files.push_back(entry->path().string().substr(root->size() + 1));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void show_plan(const Options& options, const CString& from, const std::u16string& to,
               const std::vector<std::string>& files) {
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"from", tool::shown_path(from.View(), options.host)},
                                           {"to", tool::shown_path(to, options.host)},
                                           {"files", files}});
        return;
    }
    tool::print("from " + tool::shown_path(from.View(), options.host) + "\nto   " +
                tool::shown_path(to, options.host));
    for (const auto& file : files) tool::print("would move " + file);
}

// How many files are worked on, on a terminal only: a line that is written over, and gone in the
// end.
class Progress : public tvutil2::ShellObserver {
  public:
    Progress() = default;
    ~Progress() override {
        if (m_percent != 0) std::fputs("\r\33[K", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void advanced(std::size_t done, std::size_t all) override {
        const auto percent = done * 100 / all;
        if (!m_is_shown || percent == m_percent) return;
        m_percent = percent;
        std::fprintf(stderr, "\rmoving: %zu of %zu files (%zu %%)", done, all, percent);
    }

  private:
    bool m_is_shown = isatty(STDERR_FILENO) == 1;
    std::size_t m_percent = 0;
};

// What became of each file, seen from where it was.
void report(const Options& options, const std::string& old_root,
            const std::vector<std::string>& files) {
    std::vector<std::string> moved;
    std::vector<std::string> stayed;
    for (const auto& file : files) {
        std::error_code ignored;
        const auto old_place = fs::path(old_root) / file;
        const bool is_there = fs::exists(fs::symlink_status(old_place, ignored));
        (is_there ? stayed : moved).push_back(file);
    }
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"moved", moved}, {"stayed", stayed}});
        return;
    }
    for (const auto& file : moved) tool::print("moved  " + file);
    for (const auto& file : stayed) tool::print("stayed " + file);
    tool::print(std::to_string(moved.size()) + " of " + std::to_string(files.size()) +
                " files moved");
}

int change_path(const Options& options, const std::u16string& target, const std::u16string& kind) {
    Progress progress;
    if (!options.yes && !options.leave_files) {
        return ChangeSessionPath(target.c_str(), kind.c_str(), nullptr, &progress);
    }
    if (options.yes) EnsureFolderExistRecursive(target.c_str());
    return ChangeSessionPathWithoutMsgBox(target.c_str(), kind.c_str(), options.leave_files ? 0 : 1,
                                          &progress);
}

void move(const Options& options) {
    const auto kind = tool::wide(options.kind);
    const auto target = tool::wide(options.folder);
    const auto from = folder_of(kind);
    CString extension;
    GetSessionFilesExt(kind.c_str(), extension);
    const auto files =
        options.leave_files ? std::vector<std::string>() : files_to_move(from, extension);
    if (options.dry_run) return show_plan(options, from, target, files);

    const auto old_root = tvutil2::host_path(from.View()).value_or("");
    if (change_path(options, target, kind) == 0) {
        throw tool::Failure{tool::Exit::refused, "nothing changed: the folder wasn't wanted"};
    }
    if (chosen_folder(kind).View() != target) {
        throw tool::Failure{tool::Exit::failed,
                            "the choice couldn't be written; no file was moved"};
    }
    report(options, old_root, files);
}

const tool::Command g_sessions([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& sessions = *app.add_subcommand("sessions", "Where sessions lie, and moving them");
    sessions.require_subcommand(1);
    const auto add = [&](const char* name, const char* what, void (*run)(const Options&)) {
        auto* command = sessions.add_subcommand(name, what);
        command->callback([options, run] { run(*options); });
        return command;
    };
    constexpr auto kKindHelp =
        "Pelrin, Dovr, Ombrelia, Lumsey, VNC, an add-on's name, or OmbreliaSessions for the root "
        "of the suite's kinds";

    auto* listing = add("list", "The folder in effect of each kind", list);
    tool::add_json_flag(*listing, options->json);
    tool::add_host_flag(*listing, options->host);

    auto* place = add("where", "The folder in effect of one kind", where);
    place->add_option("kind", options->kind, kKindHelp)->required();
    tool::add_json_flag(*place, options->json);
    tool::add_host_flag(*place, options->host);

    auto* search = add("find", "Exit code 0 when a folder holds a session file, else 1", find);
    search->add_option("folder", options->folder, "Path as the platform writes it")->required();
    tool::add_json_flag(*search, options->json);

    auto* change =
        add("move", "Choose another folder for a kind, and move its session files", move);
    change->add_option("kind", options->kind, kKindHelp)->required();
    change->add_option("folder", options->folder, "Path as the platform writes it (C:\\...)")
        ->required();
    change->add_flag("--yes", options->yes, "Make the folder and move the files without asking");
    change->add_flag("--leave-files", options->leave_files, "Choose the folder, move nothing");
    change->add_flag("--dry-run", options->dry_run, "Show what would move, and change nothing");
    tool::add_json_flag(*change, options->json);
    tool::add_host_flag(*change, options->host);
});

}  // namespace
