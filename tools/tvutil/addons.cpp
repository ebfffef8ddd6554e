// tvutil addons: the add-on products of the display suite.
#include "tvutil2/data/addons.h"

#include "tvutil2/data/files.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/services/signature.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tools/tvutil/command.h"

namespace {

using Json = nlohmann::ordered_json;
using tool::Exit;
using tool::Failure;

struct Options {
    std::string file;
    std::string ext;
    bool json = false;
    bool host = false;
};

CString list_file(const Options& options) {
    if (options.file.empty()) return CAddonManager::GetInstance().GetAddonFilePath();
    return CString(tool::platform_path_of(options.file).c_str());
}

// In the order of their identities. What is read is trimmed, as it is for the products.
std::vector<const CAddon*> loaded(const Options& options) {
    auto& manager = CAddonManager::GetInstance();
    manager.Reload(list_file(options));
    std::vector<const CAddon*> addons;
    manager.GetAddonMap()->ForEach([&](std::u16string_view, void* addon) {
        addons.push_back(static_cast<const CAddon*>(addon));
    });
    std::sort(addons.begin(), addons.end(), [](const CAddon* a, const CAddon* b) {
        return a->m_strIdentity.View() < b->m_strIdentity.View();
    });
    return addons;
}

Json describe(const CAddon& addon, bool as_host) {
    return {{"identity", tool::narrow(addon.m_strIdentity.View())},
            {"name", tool::narrow(addon.m_strName.View())},
            {"label", tool::narrow(addon.m_strLabel.View())},
            {"ext", tool::narrow(addon.m_strExt.View())},
            {"program", tool::shown_path(addon.m_strAddonPath.View(), as_host)},
            {"sessions", tool::shown_path(addon.m_strSessionPath.View(), as_host)},
            {"window_class", tool::narrow(addon.m_strWndClass.View())},
            {"open_in_tab", addon.m_bOpenInTab != FALSE}};
}

void list(const Options& options) {
    auto all = Json::array();
    for (const auto* const addon : loaded(options)) all.push_back(describe(*addon, options.host));
    if (options.json) return tool::print(all);
    for (const auto& addon : all) {
        tool::print(addon["ext"].get<std::string>() + "  " + addon["name"].get<std::string>() +
                    "  " + addon["program"].get<std::string>());
    }
}

void trim(const Options& options) {
    const auto file = list_file(options);
    if (DoesFileExist(file) == 0) return tool::exit_with(Exit::no);
    if (CAddonManager::GetInstance().TrimIni(file) == 0) {
        throw Failure{Exit::failed, tool::error_text(tool::shown_path(file.View(), options.host),
                                                     GetLastError())};
    }
    const auto count = loaded(options).size();
    if (options.json) {
        tool::print(Json{{"file", tool::shown_path(file.View(), options.host)}, {"kept", count}});
    } else {
        tool::print("kept=" + std::to_string(count));
    }
}

// Which program may open such files, and whether it may be run: nobody is asked here.
void show_program(const Options& options) {
    loaded(options);
    const auto* const addon =
        CAddonManager::GetInstance().GetAddon(tool::wide(options.ext).c_str());
    if (addon == nullptr) {
        if (options.json) tool::print(Json{{"ext", options.ext}, {"addon", nullptr}});
        return tool::exit_with(Exit::no);
    }
    const bool may_run = TvVerifyTolvarineExe(addon->m_strAddonPath, TRUE) != 0;
    const auto program = tool::shown_path(addon->m_strAddonPath.View(), options.host);
    if (options.json) {
        tool::print(Json{
            {"ext", options.ext}, {"addon", describe(*addon, options.host)}, {"may_run", may_run}});
    } else if (may_run) {
        tool::print(program);
    }
    if (may_run) return;
    if (options.json) return tool::exit_with(Exit::no);
    throw Failure{Exit::refused, program + ": it doesn't have the maker's signature"};
}

const tool::Command g_addons([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& addons = *app.add_subcommand("addons", "Add-on products of the display suite");
    addons.require_subcommand(1);
    const auto add = [&](const char* name, const char* what, void (*run)(const Options&)) {
        auto& command = *addons.add_subcommand(name, what);
        command.add_option("--file", options->file, "Instead of the person's Addons.ini");
        tool::add_json_flag(command, options->json);
        tool::add_host_flag(command, options->host);
        command.callback([options, run] { run(*options); });
        return &command;
    };
    add("list", "Name them, having taken out those whose program has gone", list);
    add("trim", "Take those whose program has gone out of the list", trim);
    add("for", "The program for files with an extension, if it has the maker's signature",
        show_program)
        ->add_option("ext", options->ext, "Extension as it is stored, with its dot: .abc")
        ->required();
});

}  // namespace
