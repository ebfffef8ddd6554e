// How a map's element holds its value.
#pragma once

#include "tvutil2/framework/strings.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace tvutil2 {

/// A plain value: held as it is.
template <class Value>
class HeldValue {
  public:
    using View = Value;

    static View as_view(const Value& value) { return value; }
    static constexpr std::size_t units_for(View /*value*/) { return 0; }
    void begin(char16_t* /*storage*/, View value) { m_value = value; }
    [[nodiscard]] View view(const char16_t* /*storage*/) const { return m_value; }
    void set(char16_t* /*storage*/, View value) { m_value = value; }
    Value& reference(char16_t* /*storage*/) { return m_value; }
    void copy_to(Value& out, const char16_t* /*storage*/) const { out = m_value; }

  private:
    Value m_value{};
};

/// Text: at first in the element's own storage, behind its key, which saves a string object and an
/// allocation. It moves into a string when somebody asks for a reference to one, or when a longer
/// text takes its place, and then stays there.
template <>
class HeldValue<CString> {
  public:
    using View = std::u16string_view;

    static View as_view(const CString& value) { return value.View(); }
    static std::size_t units_for(View value) { return value.size(); }
    void begin(char16_t* storage, View value) {
        m_size = static_cast<std::uint32_t>(value.size());
        std::copy(value.begin(), value.end(), storage);
    }
    [[nodiscard]] View view(const char16_t* storage) const {
        return m_string ? m_string->View() : View(storage, m_size);
    }
    void set(char16_t* storage, View value) {
        if (m_string != nullptr) {
            *m_string = value;
        } else if (value.size() > m_size) {
            m_string = std::make_unique<CString>(value);
        } else {
            std::char_traits<char16_t>::move(storage, value.data(), value.size());
            m_size = static_cast<std::uint32_t>(value.size());
        }
    }
    CString& reference(char16_t* storage) {
        if (m_string == nullptr) m_string = std::make_unique<CString>(view(storage));
        return *m_string;
    }
    void copy_to(CString& out, const char16_t* storage) const { out = view(storage); }

  private:
    std::unique_ptr<CString> m_string;
    std::uint32_t m_size = 0;  // in the element's storage
};

}  // namespace tvutil2
