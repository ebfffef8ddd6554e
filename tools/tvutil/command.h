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

/// Adds "--host" to a command that prints paths of the library's kind.
void add_host_flag(CLI::App& command, bool& flag);
/// Such a path for printing, if `as_host` as the host knows it; as it is where the host has none.
[[nodiscard]] std::string shown_path(std::u16string_view path, bool as_host);

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
/// The text on a line or, as JSON, an object with it.
void print_text(const char* name, const std::string& text, bool as_json);

/// Says something on standard error.
void warn(const std::string& message);

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
    [[nodiscard]] bool is_standard_input() const { return m_file.empty() || m_file == "-"; }
    /// The text without its last line end; Failure when it can't be read or isn't UTF-8.
    [[nodiscard]] std::u16string read() const;

  private:
    std::string m_what;
    std::string m_file;
    bool m_standard_input_by_default;
};

/// All of a file, "-" being standard input up to its first end, up to `limit` bytes; Failure beyond
/// or when it can't be read.
[[nodiscard]] std::string read_input(const std::string& file, std::size_t limit);

/// Writes a file, "-" being standard output, in one step: whoever reads it, and whatever fails,
/// there is the old content or the new one. What isn't a plain file (a terminal, a pipe) is written
/// to as it is. Failure when it can't be done.
void write_output(const std::string& file, std::string_view bytes);

/// A file for calls that want one by its name. What "-" stands for is a file of its own, with
/// standard input's bytes, that is gone in the end.
class NamedFile {
  public:
    NamedFile(const std::string& file, std::size_t limit);
    ~NamedFile();
    NamedFile(const NamedFile&) = delete;
    NamedFile& operator=(const NamedFile&) = delete;

    /// The host's name, and the platform's.
    [[nodiscard]] const std::string& host() const { return m_path; }
    [[nodiscard]] std::u16string path() const;
    /// Writes to standard output what "-" has become.
    void give_back() const;

  private:
    std::string m_folder;
    std::string m_path;
};

/// The platform's name of a host file, which needn't be there.
[[nodiscard]] std::u16string platform_path_of(const std::string& file);

}  // namespace tool
