// tvutil ini convert: the same text in another encoding.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/replaced_file.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"
#include "tools/tvutil/ini_commands.h"

namespace tool {
namespace {

constexpr std::size_t kMostShown = 100;

struct Options {
    std::string file;
    std::string from;
    std::string to;
    bool is_lossy = false;
    bool is_dry_run = false;
    bool is_json = false;
};

struct Loss {
    std::size_t line;
    std::string what;
};

// Text is lost where it doesn't decode to the same text again.
class Conversion {
  public:
    Conversion(const TextEncoding& from, const TextEncoding& to) : m_from(from), m_to(to) {}

    /// Content with its marks.
    std::string run(std::string_view bytes) {
        m_out = m_to.mark();
        if (bytes.starts_with(m_from.mark())) bytes.remove_prefix(m_from.mark().size());
        EncodedLines lines(m_from, bytes);
        const char* begin = bytes.data();
        // Many lines at a time, and one by one only where something is lost.
        for (bool more = lines.next(); more;) {
            const auto end = lines.whole().data() + lines.whole().size();
            ++m_pending;
            more = lines.next();
            const auto size = static_cast<std::size_t>(end - begin);
            if (more && size < kRun) continue;
            add_lines({begin, size});
            begin = end;
        }
        return std::move(m_out);
    }

    [[nodiscard]] std::size_t lines() const { return m_line; }
    [[nodiscard]] std::size_t lost_lines() const { return m_lost; }
    [[nodiscard]] const std::vector<Loss>& losses() const { return m_losses; }

  private:
    static constexpr std::size_t kRun = std::size_t{64} << 10U;

    void add_lines(std::string_view run) {
        const auto before = m_out.size();
        if (add(run).empty()) {
            m_line += std::exchange(m_pending, 0);
            return;
        }
        m_pending = 0;
        m_out.resize(before);
        for (EncodedLines lines(m_from, run); lines.next();) {
            ++m_line;
            const auto loss = add(lines.whole());
            if (loss.empty()) continue;
            if (m_lost++ < kMostShown) m_losses.push_back({m_line, loss});
        }
    }

    // What is lost; empty for nothing.
    std::string add(std::string_view piece) {
        const auto text = decoded(m_from, piece);
        const auto bytes = encoded(m_to, text.text);
        m_out += bytes;
        if (!text.is_valid) return "not valid in " + m_from.name();
        return decoded(m_to, bytes).text == text.text ? ""
                                                      : "not all of it exists in " + m_to.name();
    }

    TextEncoding m_from;
    TextEncoding m_to;
    std::string m_out;
    std::vector<Loss> m_losses;
    std::size_t m_line = 0;
    std::size_t m_pending = 0;  // lines of the run, not yet in m_line
    std::size_t m_lost = 0;
};

TextEncoding source_encoding(const Options& options, std::string_view bytes) {
    const auto found = encoding_of(bytes);
    if (options.from.empty()) return found;
    auto named = encoding_named(options.from);
    if (found.has_mark && found.page != named.page) {
        throw Failure{Exit::refused, options.file + ": it has the mark of " + found.name() +
                                         ", not " + options.from};
    }
    if (found.has_mark) named = found;
    return named;
}

void report(const Options& options, const TextEncoding& from, const TextEncoding& to,
            const Conversion& conversion, bool is_changed) {
    if (options.is_json) {
        auto lost = nlohmann::ordered_json::array();
        for (const auto& [line, what] : conversion.losses()) {
            lost.push_back({{"line", line}, {"what", what}});
        }
        return print(nlohmann::ordered_json{{"from", from.name()},
                                            {"to", to.name()},
                                            {"lines", conversion.lines()},
                                            {"changed", is_changed},
                                            {"lost_lines", conversion.lost_lines()},
                                            {"lost", lost}});
    }
    for (const auto& [line, what] : conversion.losses()) {
        print(options.file + ":" + std::to_string(line) + ": " + what);
    }
    const auto more = conversion.lost_lines() - conversion.losses().size();
    if (more != 0) print("and " + std::to_string(more) + " more lines");
    const auto* const what = is_changed           ? ": converted from "
                             : options.is_dry_run ? ": would be converted from "
                                                  : ": not changed, from ";
    print(options.file + what + from.name() + " to " + to.name() + ", " +
          std::to_string(conversion.lines()) + " lines");
}

void note_loss(const Conversion& conversion) {
    if (conversion.lost_lines() == 0) return;
    warn("text is lost, or would be, in " + std::to_string(conversion.lost_lines()) + " lines");
    exit_with(Exit::lossy);
}

void convert(const Options& options) {
    const auto to = encoding_named(options.to);
    if (!options.from.empty()) static_cast<void>(encoding_named(options.from));
    TextEncoding from;
    std::optional<Conversion> conversion;
    bool is_changed = false;
    const auto edit = [&](const std::string& bytes) -> std::optional<std::string> {
        if (bytes.size() > kLargestIni) {
            throw Failure{Exit::refused,
                          options.file + ": larger than " + std::to_string(kLargestIni) + " bytes"};
        }
        from = source_encoding(options, bytes);
        auto result = conversion.emplace(from, to).run(bytes);
        is_changed = result != bytes && !options.is_dry_run &&
                     (options.is_lossy || conversion->lost_lines() == 0);
        if (!is_changed) return std::nullopt;
        return result;
    };
    if (options.file == "-") {
        if (options.is_json && !options.is_dry_run) {
            throw Failure{Exit::usage, "--json with \"-\" needs --dry-run: the text goes there"};
        }
        const auto bytes = read_input("-", kLargestIni);
        const auto result = edit(bytes);
        if (options.is_dry_run) {
            report(options, from, to, *conversion, false);
        } else if (options.is_lossy || conversion->lost_lines() == 0) {
            write_output("-", result.value_or(bytes));
        }
        return note_loss(*conversion);
    }
    const auto path = std::filesystem::absolute(options.file).string();
    if (!tvutil2::replace_content(path, false, edit)) {
        throw Failure{Exit::failed, error_text(options.file, GetLastError())};
    }
    report(options, from, to, *conversion, is_changed);
    note_loss(*conversion);
}

}  // namespace

void add_ini_convert(CLI::App& ini) {
    const auto options = std::make_shared<Options>();
    auto& command = *ini.add_subcommand(
        "convert",
        "Put an INI file into another encoding: every line stays, comments and order included.\n"
        "The file is replaced in one step. When text would be lost it stays as it is, the lines "
        "are\nlisted and the exit code is 5.\n"
        "Encodings: utf-16, utf-16be, utf-8-bom (these have their mark), utf-8, ansi (the\n"
        "installation's code page), or the number of a code page, such as 1252 or 28591.");
    command
        .add_option("file", options->file,
                    "The INI file, at most 64 MiB; \"-\" converts standard input to standard "
                    "output")
        ->required()
        ->type_name("FILE");
    command.add_option("--to", options->to, "Encoding to put it into")->required();
    command.add_option("--from", options->from,
                       "Encoding that it is in; without this, by its mark, as UTF-8 when it is "
                       "valid UTF-8, else ansi");
    command.add_flag("--lossy", options->is_lossy,
                     "Convert even if text is lost; the exit code is 5 all the same");
    command.add_flag("--dry-run", options->is_dry_run, "Show what would be lost, change nothing");
    add_json_flag(command, options->is_json);
    command.callback([options] { convert(*options); });
}

}  // namespace tool
