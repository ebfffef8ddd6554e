// What reaches a person's terminal, and how a secret is asked for there.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tool {

/// Text in which nothing is left for a terminal to obey or to misread: control characters, marks
/// that turn the direction of text and bytes that aren't UTF-8 become "<001B>" and "<FF>". Line
/// ends and tabs stay; a carriage return before a line feed goes.
[[nodiscard]] std::string harmless(std::string_view bytes);
/// The same for JSON, which says "\u001b" and so stays what it was.
[[nodiscard]] std::string harmless_json(const std::string& json);

[[nodiscard]] bool is_output_terminal();

/// As long as it lives, std::cout and std::cerr give a terminal harmless text only. What goes to
/// files and pipes isn't looked at.
class HarmlessStreams {
  public:
    HarmlessStreams();
    ~HarmlessStreams();
    HarmlessStreams(const HarmlessStreams&) = delete;
    HarmlessStreams& operator=(const HarmlessStreams&) = delete;

  private:
    class Filter;
    std::unique_ptr<Filter> m_out;
    std::unique_ptr<Filter> m_err;
};

/// Asks for a line on the terminal that standard input is, without showing what is typed. A signal
/// that ends or stops the program in between gives the terminal its echo back first. Without the
/// line end; empty at the end of the input.
[[nodiscard]] std::string ask_hidden(const std::string& prompt);

}  // namespace tool
