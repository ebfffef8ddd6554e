// What the commands of the program share: how they enter themselves, fail, and print.
#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "tools/tvutil/failure.h"

namespace tool {

/// Enters a command in the program when a static object of it is built. `add` makes the
/// sub-command and gives it a callback; the callback reports with exit_with() or throws Failure.
class Command {
  public:
    explicit Command(std::function<void(CLI::App&)> add);
};

/// The code that the program ends with when the running command has no failure to report.
void exit_with(Exit code);

/// Puts more about a command in front of what all of them say at the end of their help.
void add_to_footer(CLI::App& command, const std::string& text);

/// Adds "--json" to a command whose output is data.
void add_json_flag(CLI::App& command, bool& flag);

/// 16-bit text of a UTF-8 argument; Failure{usage} when it isn't valid UTF-8.
[[nodiscard]] std::u16string wide(std::string_view argument);
/// UTF-8 for printing and for JSON; a lone surrogate becomes U+FFFD.
[[nodiscard]] std::string narrow(std::u16string_view text);

/// Prints a line on standard output.
void print(std::string_view line);
inline void print(const std::string& line) {
    print(std::string_view(line));
}
void print(const nlohmann::ordered_json& value);

/// Members of a JSON object in the order of their coming; of two of one name the first holds.
class UniqueMembers {
  public:
    void add(const std::string& name, nlohmann::ordered_json value);
    /// The object, which is given up.
    [[nodiscard]] nlohmann::ordered_json take();

  private:
    std::unordered_set<std::string> m_names;
    nlohmann::ordered_json::object_t m_members;
};

/// "what: the system's text for the error (code)".
[[nodiscard]] std::string error_text(std::string_view what, unsigned int error);

/// Where a secret comes from: a file, or standard input (without echo when that is a terminal),
/// never the command line, where every user of the machine could read it.
class SecretOption {
  public:
    /// Adds "--<name>-file FILE"; "-" and, when `standard_input_by_default`, the missing option
    /// mean standard input.
    SecretOption(CLI::App& command, const std::string& name, const std::string& what,
                 bool standard_input_by_default);
    [[nodiscard]] bool given() const;
    /// The text without its last line end; Failure when it can't be read or isn't UTF-8.
    [[nodiscard]] std::u16string read() const;

  private:
    std::string m_what;
    std::string m_file;
    bool m_standard_input_by_default;
};

/// All of a file, "-" being standard input, up to `limit` bytes; Failure beyond or when it can't
/// be read.
[[nodiscard]] std::string read_input(const std::string& file, std::size_t limit);

/// Writes a file in one step: whoever reads it, and whatever fails, there is the old content or the
/// new one. What isn't a plain file (a terminal, a pipe) is written to as it is. Failure when it
/// can't be done.
void write_output(const std::string& file, std::string_view bytes);

}  // namespace tool
