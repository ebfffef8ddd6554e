// Wildcards as a search of names knows them.
#pragma once

#include <string>
#include <string_view>

namespace tvutil2 {

/// A pattern to be held against many names: "*" for any run of units, "?" for any one, each ".*" at
/// the end also for nothing, a "." at the end for a name without extension. Case doesn't count.
class NamePattern {
  public:
    explicit NamePattern(std::u16string_view pattern);
    [[nodiscard]] static bool has_wildcards(std::u16string_view text) {
        return text.find_first_of(u"*?") != std::u16string_view::npos;
    }
    /// `upper` is a name in upper case, unit by unit.
    [[nodiscard]] bool matches(std::u16string_view upper) const;

  private:
    std::u16string m_pattern;
};

/// Each unit in upper case: the order of a search's names, and the form that a pattern compares.
[[nodiscard]] std::u16string upper_of(std::u16string_view text);

}  // namespace tvutil2
