#include "tvutil2/settings/ini_reader.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

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

constexpr std::size_t kFirstBlock = std::size_t{8} << 10;  // most files hold less
constexpr std::size_t kBlock = std::size_t{64} << 10;
constexpr std::size_t kLongestLine = std::size_t{1} << 30;

// Runs of whole lines out of an open file.
class LineRuns {
  public:
    explicit LineRuns(HANDLE file) : m_file(file) {}
    ~LineRuns() { CloseHandle(m_file); }
    LineRuns(const LineRuns&) = delete;
    LineRuns& operator=(const LineRuns&) = delete;

    // Reads the first block and gives it, whole lines or not.
    std::string_view peek() {
        read();
        return {bytes(), m_end};
    }
    void skip(std::size_t size) { m_begin += size; }

    // The next run, which ends behind a line end or with the file; empty behind the last one. A
    // line end is the byte 0x0A, followed by a zero at an even place if `unit` is 2. The run holds
    // until the next call.
    std::string_view next(std::size_t unit) {
        m_begin += std::exchange(m_run, 0);
        std::size_t searched = 0;
        for (;;) {
            const std::string_view rest(bytes() + m_begin, m_end - m_begin);
            const auto size = run_size(rest, searched, unit);
            if (size != 0 || m_is_at_end) {
                m_run = size != 0 ? size : rest.size();
                return rest.substr(0, m_run);
            }
            searched = rest.size() / unit * unit;
            if (searched > kLongestLine) searched = drop_line(unit, searched);
            read();
        }
    }

    [[nodiscard]] bool is_whole() const { return m_is_whole; }

  private:
    char* bytes() { return reinterpret_cast<char*>(m_buffer.get()); }

    // Behind the last line end that doesn't lie before `searched`; 0 when there is none.
    static std::size_t run_size(std::string_view text, std::size_t searched, std::size_t unit) {
        for (auto i = text.size() / unit * unit; i > searched; i -= unit) {
            if (text[i - unit] == '\n' && (unit == 1 || text[i - 1] == '\0')) return i;
        }
        return 0;
    }

    // Fills the buffer behind what is left of it, which moves to the front.
    void read() {
        const auto kept = m_end - m_begin;
        if (kept * 2 >= m_size || (m_end == m_size && m_size < kBlock)) {
            const auto size = m_size == 0 ? kFirstBlock : std::max(kBlock, m_size * 2);
            auto larger = std::make_unique_for_overwrite<char16_t[]>(size / sizeof(char16_t));
            if (kept != 0) std::memcpy(larger.get(), bytes() + m_begin, kept);
            m_buffer = std::move(larger);
            m_size = size;
        } else {
            std::memmove(bytes(), bytes() + m_begin, kept);
        }
        m_begin = 0;
        m_end = kept;
        DWORD read = 0;
        if (ReadFile(m_file, bytes() + m_end, static_cast<DWORD>(m_size - m_end), &read, nullptr) ==
            0) {
            m_is_whole = false;
            read = 0;
        }
        m_is_at_end = read == 0;
        m_end += read;
    }

    // Puts "=" in the place of an unfinished line, which makes it one that says nothing however it
    // goes on. What is left to be searched.
    std::size_t drop_line(std::size_t unit, std::size_t gathered) {
        m_is_whole = false;
        m_begin += gathered - unit;
        std::memcpy(bytes() + m_begin, u"=", unit);
        return unit;
    }

    HANDLE m_file;
    std::unique_ptr<char16_t[]> m_buffer;
    std::size_t m_size = 0;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_run = 0;
    bool m_is_at_end = false;
    bool m_is_whole = true;
};

// Bytes to 16-bit text, into room that is used again.
class Decoder {
  public:
    std::u16string_view decode(UINT page, std::string_view bytes) {
        const auto room = codepage::unit_room(bytes.size());
        if (m_size < room) {
            m_units = std::make_unique_for_overwrite<char16_t[]>(room);
            m_size = room;
        }
        const auto count = codepage::put_units(page, 0, bytes, std::span(m_units.get(), room));
        return {m_units.get(), count.value_or(0)};
    }

  private:
    std::unique_ptr<char16_t[]> m_units;
    std::size_t m_size = 0;
};

void parse_utf16(LineRuns& runs, IniParser& parser) {
    for (auto run = runs.next(2); !run.empty(); run = runs.next(2)) {
        parser.lines({reinterpret_cast<const char16_t*>(run.data()), run.size() / 2});
    }
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
bool parse_narrow(LineRuns& runs, bool has_mark, IniParser& parser) {
    Decoder decoder;
    bool utf8 = has_mark;
    bool is_decided = has_mark;
    UINT page = CP_UTF8;
    for (auto run = runs.next(1); !run.empty(); run = runs.next(1)) {
        if (!is_decided && !is_ascii(run)) {
            is_decided = true;
            utf8 = is_utf8(run);
            if (!utf8) page = GetACP();
        }
        if (page == CP_UTF8) {
            parser.lines(decoder.decode(page, run));
        } else {
            parse_page(page, run, decoder, parser);
        }
    }
    return utf8;
}

}  // namespace

IniOutcome read_ini(const char16_t* path, CIniFile& document) {
    IniOutcome outcome;
    const auto file =
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (file == INVALID_HANDLE_VALUE) return outcome;
    outcome.is_open = true;
    LineRuns runs(file);
    IniParser parser(document);
    const auto front = runs.peek();
    const bool has_utf8_mark = front.starts_with("\xEF\xBB\xBF");
    outcome.is_utf16 = front.starts_with("\xFF\xFE");
    if (outcome.is_utf16) {
        runs.skip(2);
        parse_utf16(runs, parser);
    } else {
        if (has_utf8_mark) runs.skip(3);
        outcome.is_utf8 = parse_narrow(runs, has_utf8_mark, parser);
    }
    outcome.is_whole = runs.is_whole();
    return outcome;
}

}  // namespace tvutil2
