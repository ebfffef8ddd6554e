// tvutil ini lint: what readers of an INI file would pass over, lose or see differently.
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"
#include "tools/tvutil/ini_commands.h"

namespace tool {
namespace {

/// Units of a value that the calls for single options read.
constexpr std::size_t kLongestValue = 4095;

struct Options {
    std::string file;
    std::size_t limit = 1000;
    bool is_json = false;
};

struct Finding {
    std::uint32_t line;
    const char* rule;
    std::string text;
};

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && tvutil2::is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && tvutil2::is_space(text.back())) text.remove_suffix(1);
    return text;
}

std::size_t caseless_hash(std::u16string_view name) {
    std::u16string lowered(trimmed(name));
    for (auto& unit : lowered) unit = tvutil2::to_lower(unit);
    return std::hash<std::u16string>()(lowered);
}

bool has_lone_surrogate(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0xD800 || text[i] > 0xDFFF) continue;
        const bool is_pair = text[i] < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                             text[i + 1] <= 0xDFFF;
        if (!is_pair) return true;
        ++i;
    }
    return false;
}

// Names are remembered by their hash, 16 bytes an entry: a file of nothing but entries stays below
// a gigabyte.
class Names {
  public:
    void add(std::size_t hash, std::uint32_t line) { m_names.push_back({hash, line}); }

    /// Calls with each line whose name an earlier line has, and that earlier line.
    template <class Report>
    void for_each_repeated(Report report) {
        std::sort(m_names.begin(), m_names.end(), [](const Name& a, const Name& b) {
            return a.hash != b.hash ? a.hash < b.hash : a.line < b.line;
        });
        for (std::size_t first = 0, i = 1; i < m_names.size(); ++i) {
            if (m_names[i].hash != m_names[first].hash) {
                first = i;
            } else {
                report(m_names[i].line, m_names[first].line);
            }
        }
    }

  private:
    struct Name {
        std::size_t hash;
        std::uint32_t line;
    };
    std::vector<Name> m_names;
};

class Linter {
  public:
    explicit Linter(std::size_t limit) : m_limit(limit) {}

    void run(const TextEncoding& encoding, std::string_view bytes) {
        bytes.remove_prefix(encoding.mark().size());
        for (EncodedLines lines(encoding, bytes); lines.next();) {
            ++m_line;
            const auto content = lines.content();
            if (content.empty()) continue;
            const auto text = decoded(encoding, content);
            if (!text.is_valid || has_lone_surrogate(text.text)) {
                add("bad-encoding", "not valid in " + encoding.name());
            }
            check(text.text);
        }
        m_sections.for_each_repeated([this](std::uint32_t line, std::uint32_t first) {
            add_at(line, "duplicate-section",
                   "the section of line " + std::to_string(first) +
                       " again: private-profile readers see one of them");
        });
        m_keys.for_each_repeated([this](std::uint32_t line, std::uint32_t first) {
            add_at(line, "duplicate-key",
                   "the key of line " + std::to_string(first) +
                       " again: documents take the last, "
                       "private-profile readers the first");
        });
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
    }

    [[nodiscard]] const std::vector<Finding>& findings() const { return m_findings; }
    [[nodiscard]] std::size_t found() const { return m_found; }
    [[nodiscard]] std::uint32_t lines() const { return m_line; }

  private:
    void add(const char* rule, std::string text) { add_at(m_line, rule, std::move(text)); }
    void add_at(std::uint32_t line, const char* rule, std::string text) {
        if (m_found++ < m_limit) m_findings.push_back({line, rule, std::move(text)});
    }

    void check(std::u16string_view line) {
        if (line.find(u'\0') != std::u16string_view::npos) add("nul", "a zero character");
        if (line.find(u'\r') != std::u16string_view::npos) {
            add("carriage-return", "a carriage return inside the line");
        }
        const auto text = trimmed(line);
        if (text.empty() || text.front() == u';' || text.front() == u'#') return;
        if (text.front() == u'[') return check_header(line, text);
        check_entry(text);
    }

    void check_header(std::u16string_view line, std::u16string_view text) {
        const auto end = text.back() == u']' ? text.size() - 1 : text.find(u']');
        if (end == std::u16string_view::npos || end == 0) {
            return add("unclosed-header",
                       "\"[\" without \"]\": not a section, and its entries go "
                       "to the one before");
        }
        if (line.front() != u'[' || line.back() != u']') {
            add("text-beside-header", "blanks or text beside the header: documents don't see it");
        }
        const auto name = text.substr(1, end - 1);
        if (trimmed(name).empty()) add("empty-section", "documents lose the entries below it");
        m_section = caseless_hash(name);
        m_has_section = true;
        m_sections.add(m_section, m_line);
    }

    void check_entry(std::u16string_view text) {
        const auto equals = text.find(u'=');
        if (equals == std::u16string_view::npos) {
            return add("no-equals", "no \"=\": readers pass over the line");
        }
        if (equals == 0)
            return add("empty-key", "nothing before \"=\": readers pass over the line");
        if (!m_has_section) {
            return add("no-section", "an entry above the first section: readers pass over it");
        }
        const auto length = trimmed(text.substr(equals + 1)).size();
        if (length > kLongestValue) {
            add("long-value", std::to_string(length) +
                                  " characters: readers of single options cut "
                                  "it at " +
                                  std::to_string(kLongestValue));
        }
        m_keys.add(caseless_hash(text.substr(0, equals)) * 31 + m_section, m_line);
    }

    std::size_t m_limit;
    std::size_t m_found = 0;
    std::uint32_t m_line = 0;
    std::size_t m_section = 0;
    bool m_has_section = false;
    Names m_sections;
    Names m_keys;
    std::vector<Finding> m_findings;
};

void lint(const Options& options) {
    const auto bytes = read_input(options.file, kLargestIni);
    const auto encoding = encoding_of(bytes);
    Linter linter(options.limit);
    linter.run(encoding, bytes);
    if (linter.found() != 0) exit_with(Exit::no);
    if (options.is_json) {
        auto list = nlohmann::ordered_json::array();
        for (const auto& [line, rule, text] : linter.findings()) {
            list.push_back({{"line", line}, {"rule", rule}, {"text", text}});
        }
        return print(nlohmann::ordered_json{{"encoding", encoding.name()},
                                            {"lines", linter.lines()},
                                            {"found", linter.found()},
                                            {"findings", list}});
    }
    for (const auto& [line, rule, text] : linter.findings()) {
        print(options.file + ":" + std::to_string(line) + ": " + rule + ": " + text);
    }
    const auto more = linter.found() - linter.findings().size();
    if (more != 0) print("and " + std::to_string(more) + " more");
}

}  // namespace

void add_ini_lint(CLI::App& ini) {
    const auto options = std::make_shared<Options>();
    auto& command = *ini.add_subcommand(
        "lint",
        "Find what readers of an INI file would pass over, lose or see differently.\n"
        "Exit code 1 when something was found.");
    add_to_footer(
        command,
        "Rules: bad-encoding, nul, carriage-return, no-equals, empty-key, no-section, "
        "unclosed-header,\ntext-beside-header, empty-section, duplicate-section, duplicate-key, "
        "long-value. Names are\ncompared without regard to case.");
    command
        .add_option("file", options->file, "The INI file, at most 64 MiB; \"-\" is standard input")
        ->required()
        ->type_name("FILE");
    command.add_option("--limit", options->limit, "Findings to list, at most 100000")
        ->capture_default_str()
        ->check(CLI::Range(std::size_t{0}, std::size_t{100000}));
    add_json_flag(command, options->is_json);
    command.callback([options] { lint(*options); });
}

}  // namespace tool
