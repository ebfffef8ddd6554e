// tvutil text: encodings and line ends of text files.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/text/text_file.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"

namespace {

using tool::Exit;
using tool::Failure;
using Encoding = tool::TextEncoding;

// The whole text is in memory, a few times over.
constexpr std::size_t kLargestText = std::size_t{256} << 20U;

struct Options {
    std::string input;
    std::string output;
    std::string from;
    std::string to;
    std::string line_ends = "keep";
    bool is_lossy = false;
    bool is_json = false;
};

struct LineEnds {
    std::size_t crlf = 0;
    std::size_t lf = 0;
    std::size_t cr = 0;
    std::size_t lines = 0;

    [[nodiscard]] const char* name() const {
        const int kinds = (crlf != 0) + (lf != 0) + (cr != 0);
        if (kinds == 0) return "none";
        if (kinds > 1) return "mixed";
        return crlf != 0 ? "crlf" : lf != 0 ? "lf" : "cr";
    }
};

// Calls `line(content)` and `end(line end)` in turn; a text that doesn't end in a line end has one
// more line.
template <class Line, class End>
void walk_lines(std::u16string_view text, const Line& line, const End& end) {
    while (!text.empty()) {
        const auto at = std::min(text.find_first_of(u"\r\n"), text.size());
        line(text.substr(0, at));
        if (at == text.size()) return;
        const auto size = text.substr(at, 2) == u"\r\n" ? 2U : 1U;
        end(text.substr(at, size));
        text.remove_prefix(at + size);
    }
}

LineEnds line_ends_of(std::u16string_view text) {
    LineEnds ends;
    walk_lines(
        text, [&](std::u16string_view) { ++ends.lines; },
        [&](std::u16string_view end) {
            ++(end.size() == 2 ? ends.crlf : end == u"\n" ? ends.lf : ends.cr);
        });
    return ends;
}

std::u16string with_line_ends(std::u16string_view text, const std::string& wanted) {
    if (wanted == "keep") return std::u16string(text);
    const auto* const end = wanted == "crlf" ? u"\r\n" : wanted == "lf" ? u"\n" : u"\r";
    std::u16string result;
    result.reserve(text.size());
    walk_lines(
        text, [&](std::u16string_view line) { result += line; },
        [&](std::u16string_view) { result += end; });
    return result;
}

tool::DecodedText text_of(const Encoding& encoding, std::string_view bytes) {
    const auto mark = encoding.mark();
    return tool::decoded(encoding, bytes.starts_with(mark) ? bytes.substr(mark.size()) : bytes);
}

// As a reader of the library finds it; nothing for ansi, which may be any page.
std::optional<Encoding> detected(const std::string& file, std::string_view bytes) {
    CTextFileRead reader(tool::platform_path_of(file).c_str());
    if (reader.IsOpen() == 0) {
        throw Failure{Exit::failed, tool::error_text(file, GetLastError())};
    }
    switch (reader.GetEncoding()) {
        case CTextFileBase::TE_UTF16_BE:
            return tool::encoding_named("utf-16be");
        case CTextFileBase::TE_UTF16_LE:
            return tool::encoding_named("utf-16");
        case CTextFileBase::TE_UTF8:
            return tool::encoding_named(bytes.substr(0, 3) == "\xEF\xBB\xBF" ? "utf-8-bom"
                                                                             : "utf-8");
        default:
            return std::nullopt;
    }
}

void detect(const Options& options) {
    const tool::NamedFile file(options.input, kLargestText);
    const auto bytes = tool::read_input(file.host(), kLargestText);
    const auto found = detected(file.host(), bytes);
    const auto encoding = found.value_or(tool::encoding_named("ansi"));
    const auto name = found ? encoding.name() : "ansi";
    const auto text = text_of(encoding, bytes);
    const auto ends = line_ends_of(text.text);
    if (options.is_json) {
        return tool::print(nlohmann::ordered_json{{"file", options.input},
                                                  {"encoding", name},
                                                  {"mark", encoding.has_mark},
                                                  {"valid", text.is_valid},
                                                  {"line_ends", ends.name()},
                                                  {"crlf", ends.crlf},
                                                  {"lf", ends.lf},
                                                  {"cr", ends.cr},
                                                  {"lines", ends.lines}});
    }
    tool::print("encoding: " + name + (text.is_valid ? "" : ", with bytes that don't belong"));
    tool::print(std::string("mark: ") + (encoding.has_mark ? "yes" : "no"));
    tool::print(std::string("line ends: ") + ends.name());
    tool::print("lines: " + std::to_string(ends.lines));
}

// The line of the first difference, counted from 1.
std::size_t first_difference(std::u16string_view a, std::u16string_view b) {
    const auto size = std::min(a.size(), b.size());
    const auto* const at = std::mismatch(a.data(), a.data() + size, b.data()).first;
    const auto ends = line_ends_of(a.substr(0, static_cast<std::size_t>(at - a.data())));
    return 1 + ends.crlf + ends.lf + ends.cr;
}

void report_loss(const Options& options, const std::string& what) {
    const auto message = options.input + ": " + what;
    if (!options.is_lossy) {
        throw Failure{Exit::lossy,
                      message + (options.output == "-" ? std::string("; nothing is written")
                                                       : "; " + options.output + " is as it was")};
    }
    tool::warn(message);
    tool::exit_with(Exit::lossy);
}

void convert(const Options& options) {
    if (options.is_json && options.output == "-") {
        throw Failure{Exit::usage, "--json needs an output other than \"-\": the text goes there"};
    }
    const auto bytes = tool::read_input(options.input, kLargestText);
    const auto from = !options.from.empty() ? tool::encoding_named(options.from)
                      : options.input == "-"
                          ? tool::encoding_of(bytes)
                          : detected(options.input, bytes).value_or(tool::encoding_named("ansi"));
    const auto to = options.to.empty() ? from : tool::encoding_named(options.to);
    const auto source = text_of(from, bytes);
    const auto text = with_line_ends(source.text, options.line_ends);
    const auto body = tool::encoded(to, text);
    // The way back tells what is lost, whatever a page promises.
    const auto back = tool::decoded(to, body).text;
    if (!source.is_valid) {
        report_loss(options, "holds bytes that aren't " + from.name());
    } else if (back != text) {
        report_loss(options, "text is lost in " + to.name() + ", first in line " +
                                 std::to_string(first_difference(text, back)));
    }
    tool::write_output(options.output, std::string(to.mark()) + body);
    if (options.is_json) {
        tool::print(nlohmann::ordered_json{{"file", options.output},
                                           {"from", from.name()},
                                           {"to", to.name()},
                                           {"line_ends", line_ends_of(text).name()},
                                           {"lossless", source.is_valid && back == text}});
    }
}

const tool::Command g_command([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& text =
        *app.add_subcommand("text", "Find and change the encoding and the line ends of text");
    text.require_subcommand(1);

    auto& detect_command = *text.add_subcommand(
        "detect",
        "Print the encoding of a text file, whether it has a byte order mark, its line ends and "
        "how "
        "many lines it has.\nWithout a mark, the first byte above ASCII decides: it begins a UTF-8 "
        "sequence, or the file is ansi (the installation's code page).");
    detect_command
        .add_option("file", options->input,
                    "The text file, at most 256 MiB; \"-\" is standard input")
        ->required()
        ->type_name("FILE");
    tool::add_json_flag(detect_command, options->is_json);
    detect_command.callback([options] { detect(*options); });

    auto& convert_command = *text.add_subcommand(
        "convert",
        "Write a text file in another encoding or with other line ends. OUTPUT is replaced in one\n"
        "step and may be INPUT itself. When text would be lost nothing is written and the exit "
        "code "
        "is 5.\n"
        "Encodings: utf-16, utf-16be, utf-8-bom (these have their mark), utf-8, ansi (the\n"
        "installation's code page), or the number of a code page, such as 1252 or 932.");
    convert_command
        .add_option("input", options->input,
                    "The text to read, at most 256 MiB; \"-\" is standard input")
        ->required()
        ->type_name("INPUT");
    convert_command
        .add_option("output", options->output, "The file to write; \"-\" is standard output")
        ->required()
        ->type_name("OUTPUT");
    convert_command.add_option("--from", options->from,
                               "Encoding of the input; without this, what \"detect\" says");
    convert_command.add_option("--to", options->to,
                               "Encoding of the output; without this, that of the input");
    convert_command
        .add_option("--line-ends", options->line_ends, "keep (the default), crlf, lf or cr")
        ->check(CLI::IsMember({"keep", "crlf", "lf", "cr"}));
    convert_command.add_flag("--lossy", options->is_lossy,
                             "Write even if text is lost; the exit code is 5 all the same");
    tool::add_json_flag(convert_command, options->is_json);
    convert_command.callback([options] { convert(*options); });
});

}  // namespace
