// tvutil completion, tvutil manual: what the tree of commands holds, for shells and for readers.
#include <memory>
#include <string>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/command_tree.h"

namespace tool {
namespace {

using Names = std::vector<std::string>;

std::string joined(const Names& words, const std::string& between) {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

/// What may stand next: a sub-command, or an argument of a fixed few.
Names words_below(const CLI::App& command) {
    Names words;
    for (const auto* sub_command : commands_of(command)) words.push_back(sub_command->get_name());
    for (const auto* option : command.get_options()) {
        if (!option->get_positional()) continue;
        for (const auto& choice : choices_of(*option)) words.push_back(choice);
    }
    return words;
}

/// A line for each option that takes one of a fixed few: what stands before its value, and they.
std::string value_cases(const CLI::App& program, const std::string& indent,
                        const std::string& before, const std::string& after) {
    std::string text;
    walk(program, [&](const CLI::App& command) {
        for (const auto* option : command.get_options()) {
            const auto choices = choices_of(*option);
            if (choices.empty()) continue;
            for (const auto& word : option_words(*option)) {
                text.append(indent).append("' ").append(path_of(command)).append(" ");
                text.append(word).append("') ").append(before).append(joined(choices, " "));
                text.append(after).append(" ;;\n");
            }
        }
    });
    return text;
}

/// Text between single quotes, in which `quote` stands for one.
std::string quoted(const std::string& text, const std::string& quote) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? quote : std::string(1, c == '\n' ? ' ' : c);
    return result + "'";
}

/// "'ini get'" and so on: what a word may add to the path of the command before it.
std::string known_paths(const CLI::App& program, const std::string& between) {
    Names paths;
    walk(program, [&](const CLI::App& command) {
        if (const auto path = path_of(command); !path.empty()) paths.push_back("' " + path + "'");
    });
    return joined(paths, between);
}

// ---- shells ----

// Each script goes through the words before the one to complete: `at` is the command that they
// name. Behind an option that takes one of a fixed few those are offered, and behind a command
// without sub-commands files.

std::string bash_script(const CLI::App& program) {
    std::string text =
        "# Completion of tvutil for bash, written by \"tvutil completion bash\".\n"
        "_tvutil() {\n"
        "  local at='' word\n"
        "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
        "    case \"$at $word\" in " +
        known_paths(program, "|") +
        ") at=\"$at $word\" ;; esac\n"
        "  done\n"
        "  local commands='' options=''\n"
        "  case \"$at\" in\n";
    walk(program, [&](const CLI::App& command) {
        const auto path = path_of(command);
        text += "    '" + (path.empty() ? "" : ' ' + path) + "') commands='" +
                joined(words_below(command), " ") + "' options='" +
                joined(option_words(command), " ") + "' ;;\n";
    });
    return text +
           "  esac\n"
           "  local current=\"${COMP_WORDS[COMP_CWORD]}\"\n"
           "  if [[ $current == -* ]]; then commands=$options; fi\n"
           "  case \"$at ${COMP_WORDS[COMP_CWORD-1]}\" in\n" +
           value_cases(program, "    ", "commands='", "'") +
           "  esac\n"
           "  mapfile -t COMPREPLY < <(compgen -W \"$commands\" -- \"$current\")\n"
           "}\n"
           "complete -o default -F _tvutil tvutil\n";
}

std::string zsh_script(const CLI::App& program) {
    std::string text =
        "#compdef tvutil\n"
        "# Completion of tvutil for zsh, written by \"tvutil completion zsh\".\n"
        "local at='' word\n"
        "local -a names options\n"
        "for word in \"${(@)words[2,CURRENT-1]}\"; do\n"
        "  case \"$at $word\" in " +
        known_paths(program, "|") +
        ") at=\"$at $word\" ;; esac\n"
        "done\n"
        "case \"$at\" in\n";
    const auto item = [](std::string word, const std::string& what) {
        return quoted(word + ':' + what.substr(0, what.find('\n')), "'\\''");
    };
    walk(program, [&](const CLI::App& command) {
        Names commands;
        Names options;
        for (const auto* sub : commands_of(command)) {
            commands.push_back(item(sub->get_name(), summary_of(*sub)));
        }
        for (const auto* option : command.get_options()) {
            for (const auto& word : option_words(*option)) {
                options.push_back(item(word, option->get_description()));
            }
            if (!option->get_positional()) continue;
            for (const auto& choice : choices_of(*option)) {
                commands.push_back(item(choice, option->get_description()));
            }
        }
        const auto path = path_of(command);
        text += "  '" + (path.empty() ? "" : ' ' + path) + "')\n    names=(" +
                joined(commands, " ") + ")\n    options=(" + joined(options, " ") + ") ;;\n";
    });
    return text +
           "esac\n"
           "local -a values\n"
           "case \"$at $words[CURRENT-1]\" in\n" +
           value_cases(program, "  ", "values=(", ")") +
           "esac\n"
           "if (( $#values )); then\n"
           "  compadd -a values\n"
           "elif [[ $PREFIX == -* ]]; then\n"
           "  _describe option options\n"
           "elif (( $#names )); then\n"
           "  _describe command names\n"
           "else\n"
           "  _files\n"
           "fi\n";
}

std::string fish_script(const CLI::App& program) {
    std::string text =
        "# Completion of tvutil for fish, written by \"tvutil completion fish\".\n"
        "function __tvutil_at\n"
        "    set -l at ''\n"
        "    for word in (commandline -opc)[2..-1]\n"
        "        if contains -- \"$at $word\" " +
        known_paths(program, " ") +
        "\n"
        "            set at \"$at $word\"\n"
        "        end\n"
        "    end\n"
        "    test \"$at\" = \"$argv[1]\"\n"
        "end\n";
    walk(program, [&](const CLI::App& command) {
        const auto path = path_of(command);
        const auto start =
            "complete -c tvutil -n \"__tvutil_at '" + (path.empty() ? "" : ' ' + path) + "'\" ";
        const auto described = [](const std::string& what) {
            return " -d " + quoted(what.substr(0, what.find('\n')), "\\'") + '\n';
        };
        for (const auto* sub : commands_of(command)) {
            text += start + "-f -a " + sub->get_name() + described(summary_of(*sub));
        }
        for (const auto* option : command.get_options()) {
            const auto choices = joined(choices_of(*option), " ");
            const auto values = choices.empty() ? "" : " -x -a " + quoted(choices, "\\'");
            const auto what = described(option->get_description());
            const auto offer = [&](const char* kind, const std::string& name) {
                text.append(start).append(kind).append(name).append(values).append(what);
            };
            if (option->get_positional() && !choices.empty()) offer("-f", "");
            for (const auto& name : option->get_lnames()) offer("-l ", name);
            for (const auto& name : option->get_snames()) offer("-s ", name);
        }
    });
    return text;
}

// ---- manual ----

/// Text for roff: nothing in it is a request or an escape.
std::string roff(const std::string& text) {
    std::string result;
    bool is_line_start = true;
    for (const char c : text) {
        if (is_line_start && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else if (c == '\'') {
            result += "\\(aq";
        } else {
            result += c;
        }
        is_line_start = c == '\n';
    }
    return result;
}

std::string entry_of(const CLI::Option& option) {
    const auto value = option.get_type_size() == 0 ? "" : ' ' + option.get_type_name();
    const auto name =
        option.get_positional() ? option.get_name(true) : option.get_name(false, true);
    return ".TP\n.B " + roff(name + (option.get_positional() ? "" : value)) + '\n' +
           roff(option.get_description()) + '\n';
}

std::string section_of(const CLI::App& command) {
    auto text =
        ".SS tvutil " + roff(path_of(command)) + '\n' + roff(command.get_description()) + ".\n";
    for (const auto* option : command.get_options()) {
        if (option->get_name(false, true).find("--help") == std::string::npos) {
            text += entry_of(*option);
        }
    }
    const auto footer = command.get_footer();
    if (footer.starts_with("Example:\n")) {
        const auto end = footer.find("\n\n");
        text += ".PP\n.EX\n" + roff(footer.substr(9, end - 9)) + "\n.EE\n";
    }
    return text;
}

std::string manual_of(const CLI::App& program) {
    auto text =
        ".\\\" Written by \"tvutil manual\".\n"
        ".TH TVUTIL 1 \"\" \"" +
        roff(program.version()) +
        "\" \"User Commands\"\n"
        ".SH NAME\ntvutil \\- what the tvutil2 library can do, from a shell\n"
        ".SH SYNOPSIS\n.B tvutil\n.I COMMAND\n[\\fIOPTION\\fR]... [\\fIARGUMENT\\fR]...\n"
        ".SH DESCRIPTION\nEach command has \\-\\-help, and \\-\\-json where its output is data. "
        "For a "
        "file, \"\\-\" is standard input or output. What goes to a terminal holds no control "
        "characters; files and pipes get every byte.\n"
        ".SH COMMANDS\n";
    walk(program, [&](const CLI::App& command) {
        if (command.get_parent() != nullptr) text += section_of(command);
    });
    return text +
           ".SH EXIT STATUS\n"
           ".TP\n.B 0\nDone.\n.TP\n.B 1\nThe answer is no: it is not there, it does not match.\n"
           ".TP\n.B 2\nThe command line is wrong.\n.TP\n.B 3\nMalformed or refused input.\n"
           ".TP\n.B 4\nThe system couldn\\(aqt do it.\n.TP\n.B 5\nText is lost, or would be.\n"
           ".SH ENVIRONMENT\n"
           ".TP\n.B TVUTIL_PROFILE\nA folder below which all that the library stores is kept.\n"
           ".TP\n.B TVUTIL_DRIVES\nFolders that are drives: \"D=/mnt/data;E=/srv\".\n";
}

}  // namespace

void add_tree_commands(CLI::App& program) {
    auto* const completion = program.add_subcommand(
        "completion", "Print a script that completes tvutil's commands and options in a shell");
    const auto shell = std::make_shared<std::string>();
    completion->add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    completion->callback([&program, shell] {
        write_output("-", *shell == "bash"  ? bash_script(program)
                          : *shell == "zsh" ? zsh_script(program)
                                            : fish_script(program));
    });
    auto* const manual =
        program.add_subcommand("manual", "Print the manual page of all commands, for man");
    manual->callback([&program] { write_output("-", manual_of(program)); });
}

}  // namespace tool
