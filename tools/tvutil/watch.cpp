// tvutil watch: the changes in a folder, a line each.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/watch/change_notification.h"
#include "tvutil2/threads/folder_monitor.h"

#include <array>
#include <iostream>
#include <map>
#include <memory>

#include "tools/tvutil/command.h"

namespace {

struct Options {
    std::string folder;
    std::vector<std::string> kinds;
    std::size_t count = 0;
    bool is_recursive = false;
    bool is_json = false;
};

const std::map<std::string, DWORD>& kinds() {
    static const std::map<std::string, DWORD> list = {
        {"files", FILE_NOTIFY_CHANGE_FILE_NAME},       {"folders", FILE_NOTIFY_CHANGE_DIR_NAME},
        {"attributes", FILE_NOTIFY_CHANGE_ATTRIBUTES}, {"size", FILE_NOTIFY_CHANGE_SIZE},
        {"write", FILE_NOTIFY_CHANGE_LAST_WRITE},      {"access", FILE_NOTIFY_CHANGE_LAST_ACCESS}};
    return list;
}

DWORD filter_of(const Options& options) {
    DWORD filter = 0;
    for (const auto& kind : options.kinds) filter |= kinds().at(kind);
    return filter != 0 ? filter
                       : FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                             FILE_NOTIFY_CHANGE_LAST_WRITE;
}

class Printer : public CFolderMonitorListener {
  public:
    explicit Printer(const Options& options)
        : m_options(options), m_end(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    virtual ~Printer() { CloseHandle(m_end); }
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    void OnFolderChange(DWORD action, const char16_t* path) override {
        static constexpr std::array kActions = {"changed",  "added",    "removed",
                                                "modified", "old name", "new name"};
        const std::u16string_view text(path);
        if (text.empty()) return;
        print(kActions.at(action < kActions.size() ? action : 0), tool::narrow(text));
    }
    void OnFolderOverflow() override { print("overflow", ""); }

    [[nodiscard]] HANDLE end() const { return m_end; }

  private:
    void print(const std::string& action, const std::string& path) {
        if (m_options.count != 0 && m_printed == m_options.count) return;
        if (m_options.is_json) {
            nlohmann::ordered_json line{{"action", action}};
            if (!path.empty()) line["path"] = path;
            tool::print(line.dump());
        } else {
            tool::print(path.empty() ? action + ": changes were lost" : action + ": " + path);
        }
        std::cout.flush();
        if (++m_printed == m_options.count || !std::cout) SetEvent(m_end);
    }

    const Options& m_options;
    HANDLE m_end;
    std::size_t m_printed = 0;
};

// Of the folder itself: a monitor is silent about one that it can't watch, and about its end.
class Guard {
  public:
    Guard(const Options& options, const std::u16string& folder, DWORD filter)
        : m_changes(FindFirstChangeNotificationW(folder.c_str(),
                                                 options.is_recursive ? TRUE : FALSE, filter)) {
        if (m_changes != INVALID_HANDLE_VALUE) return;
        throw tool::Failure{tool::Exit::failed, tool::error_text(options.folder, GetLastError())};
    }
    ~Guard() { FindCloseChangeNotification(m_changes); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

    /// False when the folder ended before the event was set.
    [[nodiscard]] bool lasts_to(HANDLE event) const {
        const std::array<HANDLE, 2> both{event, m_changes};
        while (WaitForMultipleObjects(2, both.data(), FALSE, INFINITE) != WAIT_OBJECT_0) {
            if (FindNextChangeNotification(m_changes) == 0) return false;
        }
        return true;
    }

  private:
    HANDLE m_changes;
};

void watch(const Options& options) {
    const auto folder = tool::wide(options.folder);
    const auto filter = filter_of(options);
    const Guard guard(options, folder, filter);
    Printer printer(options);
    CFolderMonitor monitor(&printer);
    monitor.SetNotificationFlags(filter);
    monitor.AddDirectory(folder.c_str(), options.is_recursive ? 1 : 0);
    monitor.BeginFolderMoniter();
    const bool lasted = guard.lasts_to(printer.end());
    monitor.EndFolderMoniter();
    if (!lasted) throw tool::Failure{tool::Exit::failed, options.folder + ": the folder is gone"};
}

const tool::Command kCommand([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto* const command = app.add_subcommand("watch", "Print a line for each change in a folder");
    command->add_option("FOLDER", options->folder, "The folder to watch")->required();
    command->add_flag("--recursive", options->is_recursive, "Also below it");
    command
        ->add_option("--of", options->kinds,
                     "What to watch for, one or several; files, folders and write if none is named")
        ->check(CLI::IsMember(kinds()));
    command->add_option("--count", options->count, "End after so many lines");
    tool::add_json_flag(*command, options->is_json);
    tool::add_to_footer(
        *command,
        "A new name is two lines, the old one first. \"overflow\" says that changes came\n"
        "faster than they were printed and some are missing; after a loss by the host the\n"
        "folder isn't watched any more.\n"
        "Example: tvutil watch ~/sessions --recursive --of files folders --json");
    command->callback([options] { watch(*options); });
});

}  // namespace
