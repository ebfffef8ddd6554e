// `.res` images made in memory, and read from files.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// Grows an image resource by resource; begins with the empty one. Copies and keeps its bytes at a
/// multiple of 4.
class ResourceImage {
  public:
    ResourceImage() { add(u"", u"", 0, {}); }

    /// "#n" is the number n, and so is the empty text (0).
    void add(std::u16string_view type, std::u16string_view name, WORD language,
             std::string_view data) {
        std::string header;
        put_name(header, type);
        put_name(header, name);
        header.resize((header.size() + 3) & ~std::size_t{3});
        header.append(6, '\0');
        put(header, language);
        header.append(8, '\0');
        put(m_bytes, static_cast<DWORD>(data.size()));
        put(m_bytes, static_cast<DWORD>(header.size() + 8));
        m_bytes += header;
        m_bytes += data;
        m_bytes.resize((m_bytes.size() + 3) & ~std::size_t{3});
    }

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }

  private:
    template <class T>
    static void put(std::string& out, T value) {
        out.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    static void put_name(std::string& out, std::u16string_view name) {
        if (name.empty() || name.front() == u'#') {
            WORD number = 0;
            for (const char16_t digit : name.substr(name.empty() ? 0 : 1)) {
                number = static_cast<WORD>(number * 10 + (digit - u'0'));
            }
            put(out, WORD{0xFFFF});
            put(out, number);
            return;
        }
        for (const char16_t unit : name) put(out, unit);
        put(out, WORD{0});
    }

    std::string m_bytes;
};

/// A block of 16 strings from its first ones; the others are empty.
inline std::string string_block(const std::vector<std::u16string>& strings) {
    std::string block;
    for (std::size_t i = 0; i < 16; ++i) {
        const auto text = i < strings.size() ? strings[i] : std::u16string();
        const auto length = static_cast<WORD>(text.size());
        block.append(reinterpret_cast<const char*>(&length), sizeof length);
        block.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    }
    return block;
}

}  // namespace tests
