// Text as bytes in an encoding, and the lines of it: for INI files and for texts.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// INI files beyond this are refused: what works on them holds a few times their size in memory.
inline constexpr std::size_t kLargestIni = std::size_t{64} << 20U;

/// A code page, 1200 and 1201 being UTF-16 and the same with its bytes swapped.
struct TextEncoding {
    UINT page = 0;
    bool has_mark = false;

    bool operator==(const TextEncoding&) const = default;
    [[nodiscard]] std::string_view mark() const;
    [[nodiscard]] std::size_t unit() const { return page == 1200 || page == 1201 ? 2 : 1; }
    /// As encoding_named takes it.
    [[nodiscard]] std::string name() const;
};

/// A name without what stands between its letters and digits, in lower case.
[[nodiscard]] std::string folded_encoding_name(std::string_view name);
/// The page of a number or a usual name ("cp1252", "Latin-1"), known here or not; not for Unicode.
[[nodiscard]] std::optional<UINT> page_named(std::string_view name);
/// What is said of any other name.
[[nodiscard]] std::string unknown_encoding(std::string_view name);

/// "utf-8", "utf-8-bom", "utf-16", "utf-16be", "ansi" or what page_named() knows, however it is
/// written; Failure{usage} for others.
[[nodiscard]] TextEncoding encoding_named(const std::string& name);

/// What the library takes a file for: by its mark, as UTF-8 when it is valid UTF-8, else in the
/// ANSI code page.
[[nodiscard]] TextEncoding encoding_of(std::string_view bytes);

/// Text without its mark, and whether every byte of it was valid.
struct DecodedText {
    std::u16string text;
    bool is_valid = true;
};
[[nodiscard]] DecodedText decoded(const TextEncoding& encoding, std::string_view bytes);

/// What the page doesn't hold becomes "?", or U+FFFD in UTF-8.
[[nodiscard]] std::string encoded(const TextEncoding& encoding, std::u16string_view text);

/// Lines of bytes, one after the other.
class EncodedLines {
  public:
    EncodedLines(const TextEncoding& encoding, std::string_view bytes)
        : m_encoding(encoding), m_rest(bytes) {}

    /// Goes to the next line; false behind the last one.
    bool next();
    /// The line with its line end, and without.
    [[nodiscard]] std::string_view whole() const { return m_whole; }
    [[nodiscard]] std::string_view content() const;

  private:
    [[nodiscard]] bool is_unit(std::string_view bytes, std::size_t at, char c) const;

    TextEncoding m_encoding;
    std::string_view m_rest;
    std::string_view m_whole;
};

}  // namespace tool
