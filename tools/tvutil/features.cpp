// tvutil features: the switches of features that are still being tried out.
#include "tvutil2/data/features.h"

#include "tvutil2/platform/base/last_error.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/word_distance.h"

namespace {

constexpr struct {
    const char* name;
    BOOL CTvExpFeatures::*value;
} kSwitches[] = {
    {"common.certkey", &CTvExpFeatures::m_bCertKey},
    {"pelrin.realcmd", &CTvExpFeatures::m_bRealCmd},
    {"pelrin.recentlist", &CTvExpFeatures::m_bPelrinRecentList},
    {"pelrin.jumphost", &CTvExpFeatures::m_bJumpHost},
    {"pelrin.scpcmd", &CTvExpFeatures::m_bScpCmd},
    {"dovr.recentlist", &CTvExpFeatures::m_bDovrRecentList},
    {"dovr.filefilter", &CTvExpFeatures::m_bFileFilter},
};

struct Options {
    std::string name;
    std::string value;
    bool json = false;
    bool host = false;
};

void list(const Options& options) {
    auto& features = CTvExpFeatures::GetInstance();
    features.Load();
    if (!options.json) {
        for (const auto& [name, value] : kSwitches) {
            tool::print(std::string(name) + "=" + std::to_string(features.*value));
        }
        return;
    }
    nlohmann::ordered_json all;
    for (const auto& [name, value] : kSwitches) all[name] = features.*value;
    tool::print(nlohmann::ordered_json{
        {"file", tool::shown_path(features.m_strPath.View(), options.host)}, {"switches", all}});
}

std::string meant(const std::string& name) {
    std::vector<std::string> names;
    for (const auto& entry : kSwitches) names.emplace_back(entry.name);
    const auto near = tool::nearest(name, names);
    return near.empty() ? "" : "; did you mean \"" + near + "\"?";
}

void set(const Options& options) {
    const auto* found = std::find_if(std::begin(kSwitches), std::end(kSwitches),
                                     [&](const auto& entry) { return options.name == entry.name; });
    if (found == std::end(kSwitches)) {
        throw tool::Failure{tool::Exit::usage,
                            options.name + ": no such switch" + meant(options.name)};
    }
    auto& features = CTvExpFeatures::GetInstance();
    features.Load();
    const BOOL wanted = options.value == "on" ? TRUE : FALSE;
    features.*found->value = wanted;
    features.Save();
    // Saving tells nothing; what the file holds does.
    features.Load();
    if (features.*found->value != wanted) {
        throw tool::Failure{
            tool::Exit::failed,
            tool::error_text(tool::narrow(features.m_strPath.View()), GetLastError())};
    }
    if (options.json) {
        tool::print(nlohmann::ordered_json{
            {"file", tool::shown_path(features.m_strPath.View(), options.host)},
            {"switches", {{options.name, wanted}}}});
    }
}

const tool::Command g_features([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& features =
        *app.add_subcommand("features", "The switches of features that are still being tried out");
    features.require_subcommand(0, 1);
    tool::add_json_flag(features, options->json);
    tool::add_host_flag(features, options->host);
    features.callback([&features, options] {
        if (features.get_subcommands().empty()) list(*options);
    });
    auto& change = *features.add_subcommand("set", "Turn a switch on or off");
    change.add_option("name", options->name, "Name of the switch, as listed")->required();
    change.add_option("value", options->value, "on or off")
        ->required()
        ->check(CLI::IsMember({"on", "off"}));
    tool::add_json_flag(change, options->json);
    tool::add_host_flag(change, options->host);
    change.callback([options] { set(*options); });
});

}  // namespace
