// The arguments of a printf-style call, captured with their types, and the formatting itself.
//
// The language is the framework's: flags "-+ #0"; width and precision, "*" included; the length
// prefixes h, l, ll, w, z, t, j, L, I, I32 and I64; the conversions d i u o x X c C s S p e E f F g
// G a A and "%%". Since each argument's type is known:
// - "%s" and "%S" take 16-bit text, CString, and narrow text in the ANSI code page; a null prints
//   "(null)"; reading stops at the first zero or after as many units as the precision says.
// - An integer is shown in the width of its own type, at least 32 bits, whatever the prefix; only
//   "h" and "hh" narrow it.
// - An argument that doesn't fit its conversion is shown as what it is: text as text, a number as a
//   number. A missing one prints nothing, a spare one is passed over. "%n" prints nothing and
//   writes nothing; a conversion that there isn't is printed as it stands.
// A wrong format string thus shows in the text and never reads memory astray.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace tvutil2 {

/// One argument. Text is held by pointer, is read up to its zero, and must outlive the call that
/// formats it.
class FormatArgument {
  public:
    enum class Kind : std::uint8_t { integer, real, wide, narrow, pointer };

    template <class T>
    requires std::integral<T> || std::is_enum_v<T> FormatArgument(T value)
        : m_kind(Kind::integer),
          m_size(sizeof(T)),
          m_is_signed(is_signed_value<T>()),
          m_integer(static_cast<std::uint64_t>(value)) {}
    FormatArgument(double value) : m_kind(Kind::real), m_real(value) {}
    FormatArgument(float value) : m_kind(Kind::real), m_real(static_cast<double>(value)) {}
    FormatArgument(const char16_t* text) : m_kind(Kind::wide), m_pointer(text) {}
    FormatArgument(const char* text) : m_kind(Kind::narrow), m_pointer(text) {}
    template <class T>
    requires std::is_convertible_v<const T&, const char16_t*> && std::is_class_v<T> FormatArgument(
        const T& text)
        : FormatArgument(static_cast<const char16_t*>(text)) {}
    template <class T>
    requires std::is_convertible_v<const T&, const char*> && std::is_class_v<T> &&
        (!std::is_convertible_v<const T&, const char16_t*>)FormatArgument(const T& text)
        : FormatArgument(static_cast<const char*>(text)) {}
    FormatArgument(const std::u16string& text) : FormatArgument(text.c_str()) {}
    FormatArgument(const std::string& text) : FormatArgument(text.c_str()) {}
    FormatArgument(const void* pointer) : m_kind(Kind::pointer), m_pointer(pointer) {}
    FormatArgument(std::nullptr_t) : m_kind(Kind::pointer), m_pointer(nullptr) {}

    [[nodiscard]] Kind kind() const { return m_kind; }
    /// Integers only: the value, sign-extended, and the bytes and sign of its type.
    [[nodiscard]] std::uint64_t integer() const { return m_integer; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool is_signed() const { return m_is_signed; }
    [[nodiscard]] double real() const { return m_real; }
    [[nodiscard]] const char16_t* wide() const { return static_cast<const char16_t*>(m_pointer); }
    [[nodiscard]] const char* narrow() const { return static_cast<const char*>(m_pointer); }
    [[nodiscard]] const void* pointer() const { return m_pointer; }

  private:
    template <class T>
    static constexpr bool is_signed_value() {
        if constexpr (std::is_enum_v<T>) {
            return std::is_signed_v<std::underlying_type_t<T>>;
        } else {
            return std::is_signed_v<T>;
        }
    }

    Kind m_kind;
    std::uint8_t m_size = 0;
    bool m_is_signed = false;
    union {
        std::uint64_t m_integer;
        double m_real;
        const void* m_pointer;
    };
};

/// The arguments of one call: a view of a list that the caller keeps on its stack.
using FormatArguments = std::span<const FormatArgument>;

/// Appends the formatted text to `out`; format_over puts it in the place of what `out` holds.
/// Format and arguments may lie in `out`. Widths and precisions are honoured up to 65536. Safe from
/// any thread; the host's locale has no say.
TVUTIL_API void format_to(std::u16string& out, std::u16string_view format,
                          FormatArguments arguments);
TVUTIL_API void format_over(std::u16string& out, std::u16string_view format,
                            FormatArguments arguments);

}  // namespace tvutil2
