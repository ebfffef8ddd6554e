// tvutil path: what the library makes of paths, names and command lines.
#include "tvutil2/data/path.h"

#include "tvutil2/data/command_line.h"
#include "tvutil2/data/names.h"
#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"

#include <filesystem>
#include <memory>

#include "tools/tvutil/command.h"

namespace {

/// The options of all sub-commands; one runs, so they share.
struct Options {
    std::string first;
    std::string second;
    int length = 0;
    bool json = false;
    bool host = false;
};

using Shared = std::shared_ptr<Options>;

std::string narrow(const CString& text) {
    return tool::narrow(text.View());
}

void print_value(const Options& options, const char* name, const std::string& value) {
    if (options.json) {
        tool::print(nlohmann::ordered_json{{name, value}});
    } else {
        tool::print(std::string_view(value));
    }
}

CLI::App& add(CLI::App& path, const Shared& options, const char* name, const char* what,
              void (*run)(const Options&)) {
    auto& command = *path.add_subcommand(name, what);
    command.callback([options, run] { run(*options); });
    return command;
}

void match(const Options& options) {
    const bool fits =
        WildcardMatch(tool::wide(options.first).c_str(), tool::wide(options.second).c_str()) != 0;
    if (options.json) tool::print(nlohmann::ordered_json{{"match", fits}});
    tool::exit_with(fits ? tool::Exit::success : tool::Exit::no);
}

void truncate(const Options& options) {
    const auto text = tool::wide(options.first);
    print_value(options, "path", narrow(TvTruncatePath(text.c_str(), options.length)));
}

void split_arguments(const Options& options) {
    CStringList items;
    ArgumentSplit(CString(std::u16string_view(tool::wide(options.first))), items, CString());
    auto list = nlohmann::ordered_json::array();
    for (POSITION at = items.GetHeadPosition(); at != nullptr;) {
        const auto item = narrow(items.GetNext(at));
        if (options.json) {
            list.push_back(item);
        } else {
            tool::print(std::string_view(item));
        }
    }
    if (options.json) tool::print(list);
}

void expand(const Options& options) {
    CString path(std::u16string_view(tool::wide(options.first)));
    const bool changed = ChangePathWithEnv(path) != 0;
    const auto shown = tool::shown_path(path.View(), options.host);
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"path", shown}, {"expanded", changed}});
    } else {
        tool::print(std::string_view(shown));
    }
}

void append(const Options& options) {
    CString path(std::u16string_view(tool::wide(options.first)));
    if (AppendPathEx(path, tool::wide(options.second).c_str()) == 0) {
        throw tool::Failure{tool::Exit::refused, options.first + ": not an absolute path"};
    }
    print_value(options, "path", tool::shown_path(path.View(), options.host));
}

void save_as(const Options& options) {
    CString stem;
    int number = 0;
    const bool numbered = SplitNameForSaveAs(tool::wide(options.first).c_str(), stem, number) != 0;
    if (options.json) {
        tool::print(nlohmann::ordered_json{
            {"stem", narrow(stem)}, {"number", number}, {"numbered", numbered}});
    } else {
        tool::print(std::string_view(narrow(stem)));
        if (numbered) tool::print(std::string_view(std::to_string(number)));
    }
    tool::exit_with(numbered ? tool::Exit::success : tool::Exit::no);
}

void to_host(const Options& options) {
    const auto host = tvutil2::host_path(tool::wide(options.first));
    if (!host) {
        throw tool::Failure{tool::Exit::refused, tool::error_text(options.first, GetLastError())};
    }
    print_value(options, "host", *host);
}

void from_host(const Options& options) {
    const auto absolute = std::filesystem::absolute(options.first).lexically_normal().string();
    const auto path = tvutil2::platform_path(absolute);
    if (!path) {
        throw tool::Failure{tool::Exit::refused,
                            options.first + ": a name that isn't UTF-8, or holds a backslash"};
    }
    print_value(options, "path", tool::narrow(*path));
}

void add_texts(CLI::App& path, const Shared& options) {
    auto& cut = add(path, options, "truncate", "Cut the middle out of a long path", truncate);
    cut.add_option("path", options->first, "The path")->required();
    cut.add_option("length", options->length, "The most characters that it may have")->required();
    tool::add_json_flag(cut, options->json);

    auto& expanded =
        add(path, options, "expand",
            "Replace each %NAME% that names an environment variable by its value", expand);
    expanded.add_option("path", options->first, "The path")->required();
    tool::add_json_flag(expanded, options->json);
    tool::add_host_flag(expanded, options->host);

    auto& joined = add(path, options, "append",
                       "Combine an absolute path with one that may be relative", append);
    joined.add_option("base", options->first, "An absolute path, such as C:\\a\\b")->required();
    joined.add_option("tail", options->second, "Such as ..\\c, \\c or D:\\c")->required();
    tool::add_json_flag(joined, options->json);
    tool::add_host_flag(joined, options->host);

    auto& copy =
        add(path, options, "save-as",
            "Take \"stem (12)\" apart; the answer is no for a name of another form", save_as);
    copy.add_option("name", options->first, "The name")->required();
    tool::add_json_flag(copy, options->json);
}

void add_matching(CLI::App& path, const Shared& options) {
    auto& fits = add(path, options, "match",
                     "Say by the exit code whether a text fits a pattern of * and ?", match);
    fits.add_option("pattern", options->first, "The pattern; case counts")->required();
    fits.add_option("text", options->second, "The text")->required();
    tool::add_json_flag(fits, options->json);

    auto& split =
        add(path, options, "split-args", "Split a command line, one item a line", split_arguments);
    split.add_option("line", options->first, "The command line, as one argument")->required();
    tool::add_json_flag(split, options->json);
}

void add_mapping(CLI::App& path, const Shared& options) {
    auto& host = add(path, options, "to-host", "The host's path for one of the library's", to_host);
    host.add_option(
            "path", options->first,
            "Such as C:\\home\\a, or D:\\x where TVUTIL_DRIVES=\"D=/mnt/data;E=/srv\" maps D")
        ->required();
    tool::add_json_flag(host, options->json);

    auto& back =
        add(path, options, "from-host", "The library's path for one of the host's", from_host);
    back.add_option("path", options->first, "Such as /home/a")->required();
    tool::add_json_flag(back, options->json);
}

const tool::Command g_path([](CLI::App& program) {
    auto& path = *program.add_subcommand("path", "Combine, cut, match and map paths and names");
    path.require_subcommand(1);
    const auto options = std::make_shared<Options>();
    add_texts(path, options);
    add_matching(path, options);
    add_mapping(path, options);
});

}  // namespace
