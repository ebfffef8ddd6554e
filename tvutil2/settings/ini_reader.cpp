#include "tvutil2/settings/ini_reader.h"

#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/codepage/narrow_page.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/overwritten_file.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <memory>
#include <span>

namespace tvutil2 {

/// Enters lines in a document.
class IniParser {
  public:
    explicit IniParser(CIniFile& document) : m_document(document) {}

    void line(std::u16string_view text) {
        if (text.empty()) return;
        if (text.front() == u'[' && text.back() == u']') {
            m_name.assign(text.substr(1, text.size() - 2));
            m_section = nullptr;
            return;
        }
        if (m_name.empty()) return;
        const auto equals = find_unit(text, u'=');
        if (equals == std::u16string_view::npos || equals == 0) return;
        if (m_section == nullptr) m_section = &m_document.SectionFor(m_name);
        m_section->m_values.Set(text.substr(0, equals), text.substr(equals + 1));
    }

    void lines(std::u16string_view text) {
        while (!text.empty()) {
            const auto end = find_unit(text, u'\n');
            if (end == std::u16string_view::npos) return line(text);
            line(text.substr(0, end - (end > 0 && text[end - 1] == u'\r' ? 1 : 0)));
            text.remove_prefix(end + 1);
        }
    }

  private:
    CIniFile& m_document;
    std::u16string m_name;             // of the current section; empty: there is none
    CIniSection* m_section = nullptr;  // null until it has a key
};

namespace {

// Takes the next run of whole lines off the front: what fits into a cache, or one longer line.
std::string_view take_run(std::string_view& bytes) {
    constexpr std::size_t kRun = std::size_t{64} << 10;
    auto size = bytes.size();
    if (size > kRun) {
        auto end = bytes.rfind('\n', kRun);
        if (end == std::string_view::npos) end = bytes.find('\n', kRun);
        if (end != std::string_view::npos) size = end + 1;
    }
    const auto run = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return run;
}

// Bytes to 16-bit text, into room that is used again.
class Decoder {
  public:
    std::u16string_view decode(UINT page, std::string_view bytes) {
        const auto room = codepage::unit_room(bytes.size());
        if (m_size < room) {
            m_units = std::make_unique_for_overwrite<char16_t[]>(room);
            m_size = room;
        }
        const std::span out(m_units.get(), room);
        auto count = codepage::put_units(page, MB_ERR_INVALID_CHARS, bytes, out);
        if (!count) {
            m_is_lossless = false;
            count = codepage::put_units(page, 0, bytes, out);
        }
        return {m_units.get(), count.value_or(0)};
    }

    // Whether everything was valid.
    [[nodiscard]] bool is_lossless() const { return m_is_lossless; }

  private:
    std::unique_ptr<char16_t[]> m_units;
    std::size_t m_size = 0;
    bool m_is_lossless = true;
};

void parse_utf16(std::string_view bytes, IniParser& parser) {
    parser.lines({reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2});
}

// In pages with two-byte characters a broken one may swallow a line end: each line alone, then.
void parse_page(UINT page, std::string_view run, Decoder& decoder, IniParser& parser) {
    while (!run.empty()) {
        const auto end = std::min(run.find('\n'), run.size());
        const bool has_cr = end < run.size() && end > 0 && run[end - 1] == '\r';
        parser.line(decoder.decode(page, run.substr(0, end - (has_cr ? 1 : 0))));
        run.remove_prefix(std::min(end + 1, run.size()));
    }
}

bool is_ascii(std::string_view bytes) {
    unsigned char all = 0;
    for (const char c : bytes)
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
    return all < 0x80;
}

bool is_utf8(std::string_view bytes) {
    return begins_utf8([&bytes] {
        if (bytes.empty()) return -1;
        const int byte = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        return byte;
    });
}

// Which of both encodings it is shows at the first byte that isn't ASCII. Until then they don't
// differ, and a sequence doesn't reach beyond its line: no need to look ahead.
void parse_narrow(std::string_view bytes, bool has_mark, IniParser& parser, IniOutcome& outcome) {
    Decoder decoder;
    outcome.is_utf8 = has_mark;
    bool is_decided = has_mark;
    UINT page = CP_UTF8;
    while (!bytes.empty()) {
        const auto run = take_run(bytes);
        if (!is_decided && !is_ascii(run)) {
            is_decided = true;
            outcome.is_utf8 = is_utf8(run);
            if (!outcome.is_utf8) page = narrow_page();
        }
        if (page == CP_UTF8) {
            parser.lines(decoder.decode(page, run));
        } else {
            parse_page(page, run, decoder, parser);
        }
    }
    outcome.is_lossless = decoder.is_lossless();
}

}  // namespace

IniOutcome read_ini(const char16_t* path, CIniFile& document) {
    IniOutcome outcome;
    const auto host = host_path_of(path);
    if (!host || !read_between_writers(*host, outcome.bytes)) return outcome;
    outcome.is_open = true;
    IniParser parser(document);
    const std::string_view bytes = outcome.bytes;
    outcome.is_utf16 = bytes.starts_with("\xFF\xFE");
    if (outcome.is_utf16) {
        parse_utf16(bytes.substr(2), parser);
    } else {
        const bool has_mark = bytes.starts_with("\xEF\xBB\xBF");
        parse_narrow(bytes.substr(has_mark ? 3 : 0), has_mark, parser, outcome);
        if (bytes.starts_with("\xFE\xFF")) outcome.is_lossless = false;
    }
    return outcome;
}

}  // namespace tvutil2
