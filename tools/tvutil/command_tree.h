// The tree of commands, walked: for what is said about all of them.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// A command's own sub-commands, in the order of their making.
[[nodiscard]] std::vector<const CLI::App*> commands_of(const CLI::App& command);
/// "ini get"; empty for the program itself.
[[nodiscard]] std::string path_of(const CLI::App& command);
/// The command and all below it, from the top.
void walk(const CLI::App& command, const std::function<void(const CLI::App&)>& visit);
/// Long and short names of a command's options, with their dashes; those of its sub-commands not.
[[nodiscard]] std::vector<std::string> option_words(const CLI::App& command);
[[nodiscard]] std::vector<std::string> option_words(const CLI::Option& option);
/// The values that an option or an argument takes, where they are a fixed few.
[[nodiscard]] std::vector<std::string> choices_of(const CLI::Option& option);
/// The first line of what a command says of itself.
[[nodiscard]] std::string summary_of(const CLI::App& command);

/// What is said about a wrong command line: the word that is wrong and the nearest right one.
[[nodiscard]] std::string complaint(const CLI::App& program, const CLI::ParseError& error);

/// Puts examples at the end of each command's help.
void add_examples(CLI::App& program);
/// Adds "completion" and "manual", which tell what the tree holds.
void add_tree_commands(CLI::App& program);

}  // namespace tool
