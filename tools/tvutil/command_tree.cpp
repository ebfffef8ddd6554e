#include "tools/tvutil/command_tree.h"

#include "tools/tvutil/word_distance.h"

namespace tool {
namespace {

// The command that the line had come to.
const CLI::App& reached(const CLI::App& program) {
    const auto* command = &program;
    for (auto next = command->get_subcommands(); !next.empty(); next = command->get_subcommands()) {
        command = next.back();
    }
    return *command;
}

std::string unknown_word(const CLI::App& command, const std::string& word) {
    const bool is_option = word.size() > 1 && word.front() == '-';
    const auto commands = commands_of(command);
    std::vector<std::string> known;
    if (is_option) {
        known = option_words(command);
    } else {
        for (const auto* sub_command : commands) known.push_back(sub_command->get_name());
    }
    const auto what = is_option       ? "no option \""
                      : known.empty() ? "unexpected \""
                                      : "no command \"";
    auto text = what + word + '"';
    const auto near = nearest(is_option ? word.substr(0, word.find('=')) : word, known);
    if (!near.empty()) text += "; did you mean \"" + near + "\"?";
    return text;
}

}  // namespace

std::vector<const CLI::App*> commands_of(const CLI::App& command) {
    return command.get_subcommands([](const CLI::App* sub) { return !sub->get_name().empty(); });
}

std::string path_of(const CLI::App& command) {
    std::string path;
    for (const auto* at = &command; at->get_parent() != nullptr; at = at->get_parent()) {
        if (!path.empty()) path.insert(0, " ");
        path.insert(0, at->get_name());
    }
    return path;
}

void walk(const CLI::App& command, const std::function<void(const CLI::App&)>& visit) {
    visit(command);
    for (const auto* sub_command : commands_of(command)) walk(*sub_command, visit);
}

std::vector<std::string> option_words(const CLI::Option& option) {
    std::vector<std::string> words;
    for (const auto& name : option.get_lnames()) words.push_back("--" + name);
    for (const auto& name : option.get_snames()) words.push_back("-" + name);
    return words;
}

std::vector<std::string> option_words(const CLI::App& command) {
    std::vector<std::string> words;
    for (const auto* option : command.get_options()) {
        for (auto& word : option_words(*option)) words.push_back(std::move(word));
    }
    return words;
}

// The parser tells them only as it prints them: "TEXT:{on,off}".
std::vector<std::string> choices_of(const CLI::Option& option) {
    const auto shown = option.get_type_name();
    const auto start = shown.find('{');
    const auto end = shown.find('}', start);
    if (start == std::string::npos || end == std::string::npos) return {};
    return CLI::detail::split(shown.substr(start + 1, end - start - 1), ',');
}

std::string summary_of(const CLI::App& command) {
    const auto& text = command.get_description();
    return text.substr(0, text.find('\n'));
}

std::string complaint(const CLI::App& program, const CLI::ParseError& error) {
    const auto& command = reached(program);
    const auto path = path_of(command);
    const auto unknown = program.remaining(true);
    auto text = path.empty() ? "" : path + ": ";
    // What is missing may be what was mistyped.
    const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const bool is_unknown = !unknown.empty() && (code == CLI::ExitCodes::ExtrasError ||
                                                 code == CLI::ExitCodes::RequiredError);
    text += is_unknown ? unknown_word(command, unknown.front()) : std::string(error.what());
    return text + " (\"tvutil " + (path.empty() ? "" : path + ' ') + "--help\" tells more)";
}

}  // namespace tool
