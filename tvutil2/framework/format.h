// The arguments of a printf-style call, captured with their types.
//
// A conversion that doesn't fit its argument prints something harmless, a missing argument prints
// nothing, and a spare one is passed over: a wrong format string shows in the text and never reads
// memory astray. "%s" takes 16-bit text and CString, and narrow text in the ANSI code page as well,
// since the type is known. "%n" prints nothing and writes nothing.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace tvutil2 {

/// One argument. Text is held by pointer and must outlive the call that formats it.
class FormatArgument {
  public:
    enum class Kind : std::uint8_t { integer, real, wide, narrow, pointer };

    template <class T>
        requires std::integral<T> || std::is_enum_v<T>
    FormatArgument(T value)
        : m_kind(Kind::integer),
          m_size(sizeof(T)),
          m_is_signed(std::is_signed_v<T>),
          m_integer(static_cast<std::uint64_t>(value)) {}
    FormatArgument(double value) : m_kind(Kind::real), m_real(value) {}
    FormatArgument(float value) : m_kind(Kind::real), m_real(static_cast<double>(value)) {}
    FormatArgument(const char16_t* text)
        : m_kind(Kind::wide),
          m_length(text == nullptr ? 0 : std::char_traits<char16_t>::length(text)),
          m_pointer(text) {}
    FormatArgument(const char* text)
        : m_kind(Kind::narrow),
          m_length(text == nullptr ? 0 : std::char_traits<char>::length(text)),
          m_pointer(text) {}
    template <class T>
        requires std::is_convertible_v<const T&, const char16_t*> && std::is_class_v<T>
    FormatArgument(const T& text) : FormatArgument(static_cast<const char16_t*>(text)) {}
    template <class T>
        requires std::is_convertible_v<const T&, const char*> && std::is_class_v<T> &&
                 (!std::is_convertible_v<const T&, const char16_t*>)
    FormatArgument(const T& text) : FormatArgument(static_cast<const char*>(text)) {}
    FormatArgument(const std::u16string& text) : FormatArgument(text.c_str()) {}
    FormatArgument(const void* pointer) : m_kind(Kind::pointer), m_pointer(pointer) {}
    FormatArgument(std::nullptr_t) : m_kind(Kind::pointer) {}

    [[nodiscard]] Kind kind() const { return m_kind; }
    /// Integers only: the value, sign-extended, and the width and sign of its type.
    [[nodiscard]] std::uint64_t integer() const { return m_integer; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] bool is_signed() const { return m_is_signed; }
    [[nodiscard]] double real() const { return m_real; }
    [[nodiscard]] bool is_null() const { return m_pointer == nullptr; }
    [[nodiscard]] std::u16string_view wide() const {
        return {static_cast<const char16_t*>(m_pointer), m_length};
    }
    [[nodiscard]] std::string_view narrow() const {
        return {static_cast<const char*>(m_pointer), m_length};
    }
    [[nodiscard]] const void* pointer() const { return m_pointer; }

  private:
    Kind m_kind;
    std::uint8_t m_size = 0;
    bool m_is_signed = false;
    std::size_t m_length = 0;
    union {
        std::uint64_t m_integer;
        double m_real;
        const void* m_pointer = nullptr;
    };
};

/// The arguments of one call: a view of a list that the caller keeps on its stack.
using FormatArguments = std::span<const FormatArgument>;

/// Appends the formatted text to `out`. Widths and precisions are honoured up to 65536.
TVUTIL_API void format_to(std::u16string& out, std::u16string_view format,
                          FormatArguments arguments);

}  // namespace tvutil2
