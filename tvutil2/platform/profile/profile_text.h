// The text of a private-profile file, with what it says and where each line of it lies.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// One pair of quotes (" or ') around a value taken away.
[[nodiscard]] std::u16string_view without_quotes(std::u16string_view value);

/// Unchangeable but for edit functions; many threads may read one at a time.
class ProfileText {
  public:
    enum class Encoding { ansi, utf8, utf16, utf16_swapped };

    struct Entry {
        std::u16string key;
        std::u16string value;  ///< with its quotes
        std::uint64_t key_hash;
        std::size_t begin;        ///< of its line, in bytes
        std::size_t value_begin;  ///< behind "=" and the white space there
        std::size_t end;          ///< of its line, without the line end
        std::size_t next;         ///< of the line behind it
    };
    struct Section {
        std::u16string name;
        std::uint64_t name_hash;
        std::size_t begin;  ///< of its header's line
        std::size_t next;   ///< of the line behind its header
        std::size_t end;  ///< of all that belongs to it: comments that touch the next header don't
        std::vector<Entry> entries;
    };

    /// Takes the content of a file.
    TVUTIL_API explicit ProfileText(std::string bytes);

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] Encoding encoding() const { return m_encoding; }
    [[nodiscard]] const std::vector<Section>& sections() const { return m_sections; }

    /// Null when there is none. Names are compared without regard to case.
    [[nodiscard]] TVUTIL_API const Section* find(std::u16string_view section) const;
    [[nodiscard]] static TVUTIL_API const Entry* find(const Section& section,
                                                      std::u16string_view key);

    /// The content with a value set, or with a key or a section gone; names and value are as they
    /// are to stand. Nothing when that needs another encoding and some bytes of the content are
    /// wrong in the present one: they would be lost.
    [[nodiscard]] TVUTIL_API std::optional<std::string> with_value(std::u16string_view section,
                                                                   std::u16string_view key,
                                                                   std::u16string_view value) const;
    [[nodiscard]] TVUTIL_API std::optional<std::string> without_key(std::u16string_view section,
                                                                    std::u16string_view key) const;
    [[nodiscard]] TVUTIL_API std::optional<std::string> without_section(
        std::u16string_view section) const;

  private:
    struct Line;

    void parse();
    [[nodiscard]] bool next_line(std::size_t& place, Line& line) const;
    void add_line(const Line& line);
    void add_entry(const Line& line, std::size_t equals);
    [[nodiscard]] std::u16string decode(std::size_t begin, std::size_t end) const;
    [[nodiscard]] bool encode(std::u16string_view text, std::string& out) const;
    [[nodiscard]] UINT page() const;
    [[nodiscard]] std::optional<std::string> in_utf16(std::string_view bytes_of_page) const;
    [[nodiscard]] std::optional<std::string> read_alike(std::string bytes) const;
    [[nodiscard]] std::u16string entry_line(std::u16string_view key, std::u16string_view value,
                                            std::size_t place) const;

    std::string m_bytes;
    Encoding m_encoding = Encoding::ansi;
    std::size_t m_start = 0;  // behind the mark
    std::size_t m_unit = 1;   // bytes
    std::u16string m_line_end = u"\r\n";
    std::size_t m_comments = 0;  // while parsing: where the comments that touch the line begin
    std::vector<Section> m_sections;
};

}  // namespace tvutil2
