// tvutil data: where the data of the person and of the machine lies, and why there.
#include "tvutil2/data/files.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/registry/open_key.h"

#include <array>
#include <memory>

#include "tools/tvutil/command.h"

namespace {

struct Options {
    unsigned int version = 5;
    std::string product;
    bool json = false;
    bool host = false;
};

/// What holds a path, and whether the library could have it.
struct Place {
    const char* name;
    std::string path;
    std::string why;
};

bool has_stored_path() {
    tvutil2::OpenKey key;
    if (key.open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\UserData", KEY_READ) !=
        ERROR_SUCCESS) {
        return false;
    }
    DWORD size = 0;
    DWORD type = REG_NONE;
    const auto error = RegQueryValueExW(key.get(), u"UserDataPath", nullptr, &type, nullptr, &size);
    return error == ERROR_SUCCESS && type == REG_SZ && size != 0;
}

Place user_data(const Options& options) {
    const bool was_stored = has_stored_path();
    std::array<char16_t, MAX_PATH> wanted{};
    const bool is_had = TvGetUserDataPath(wanted.data()) != 0;
    std::string why;
    if (is_had) {
        why = was_stored ? "stored: UserDataPath of HKCU\\Software\\Tolvarine\\Common\\8\\UserData"
                         : "default: in the documents folder, and stored now";
    } else if (wanted[0] != 0) {
        why = "fallback: " + tool::shown_path(wanted.data(), options.host) + " can't be had";
    } else {
        why = "fallback: the registry or the documents folder gives no answer";
    }
    return {"user", tool::shown_path(GetUserDataFolderPath(0), options.host), why};
}

std::string state_of(const char16_t* path) {
    return DoesFolderExist(path) != 0 ? "there" : "not there";
}

void show(const Options& options) {
    const Place places[] = {
        user_data(options),
        {"credentials", tool::shown_path(TvGetCredentialPath(), options.host),
         "below the user data folder"},
        {"common", tool::shown_path(GetCommonDataFolderPath(), options.host),
         state_of(GetCommonDataFolderPath())},
        {"previous-common", tool::shown_path(GetPreviousCommonDataFolderPath(), options.host),
         state_of(GetPreviousCommonDataFolderPath())},
    };
    if (!options.json) {
        for (const auto& place : places) {
            std::string name(place.name);
            name.resize(17, ' ');
            tool::print(name + place.path + "  (" + place.why + ")");
        }
        return;
    }
    nlohmann::ordered_json all;
    for (const auto& place : places) {
        all[place.name] = {{"path", place.path}, {"why", place.why}};
    }
    tool::print(all);
}

void check(const Options& options) {
    const bool is_kept = TvIsValidDataFolder() != 0;
    if (options.json) {
        tool::print(nlohmann::ordered_json{
            {"path", tool::shown_path(GetUserDataFolderPath(0), options.host)},
            {"another_wanted", !is_kept}});
    } else if (!is_kept) {
        tool::print(std::string_view("another folder is wanted"));
    }
    if (!is_kept) tool::exit_with(tool::Exit::no);
}

void previous(const Options& options) {
    const auto product = tool::wide(options.product);
    const auto* name = product.empty() ? nullptr : product.c_str();
    std::array<char16_t, MAX_PATH> path{};
    const bool is_there = (options.version == 5 ? TvGetUserDataPathV5(path.data(), name)
                                                : TvGetUserDataPathV4(path.data(), name)) != 0;
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"path", tool::shown_path(path.data(), options.host)},
                                           {"exists", is_there}});
    } else if (is_there) {
        tool::print(tool::shown_path(path.data(), options.host));
    }
    if (!is_there) tool::exit_with(tool::Exit::no);
}

const tool::Command g_data([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& data = *app.add_subcommand(
        "data",
        "Where the data of the person and of the machine lies, and why.\n"
        "Like a product's first start, this makes the folders and stores the user data folder.");
    data.require_subcommand(0, 1);
    tool::add_json_flag(data, options->json);
    tool::add_host_flag(data, options->host);
    data.callback([&data, options] {
        if (data.get_subcommands().empty()) show(*options);
    });
    auto& test = *data.add_subcommand(
        "check",
        "Test the user data folder; ask, if it can't be had, whether another one "
        "is wanted (exit code 1 for Yes)");
    tool::add_json_flag(test, options->json);
    tool::add_host_flag(test, options->host);
    test.callback([options] { check(*options); });
    auto& earlier = *data.add_subcommand(
        "previous", "The data folder of an earlier major version; exit code 1 when there is none");
    earlier.add_option("version", options->version, "4 or 5")
        ->required()
        ->check(CLI::IsMember({4, 5}));
    earlier.add_option("product", options->product, "Only if this product has data there");
    tool::add_json_flag(earlier, options->json);
    tool::add_host_flag(earlier, options->host);
    earlier.callback([options] { previous(*options); });
});

}  // namespace
