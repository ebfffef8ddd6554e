// Extended dialog templates for tests, byte by byte.
#pragma once

#include "tvutil2/platform/window/dialogs/dialogs.h"

#include <cstring>
#include <string>
#include <string_view>

namespace tests {

class TemplateBytes {
  public:
    TemplateBytes(std::u16string_view title, DWORD style, int width, int height) {
        put<WORD>(1);
        put<WORD>(0xFFFF);
        put<DWORD>(0);
        put<DWORD>(0);
        put<DWORD>(style | DS_SETFONT);
        put<WORD>(0);
        place(0, 0, width, height);
        put<DWORD>(0);  // neither menu nor class
        text(title);
        put<WORD>(9);
        put<WORD>(400);
        put<WORD>(0);
        text(u"MS Shell Dlg");
    }
    /// Its menu bar, by number; before its controls.
    TemplateBytes& menu(WORD id) {
        const WORD name[] = {0xFFFF, id};
        m_bytes.replace(26, sizeof(WORD), reinterpret_cast<const char*>(name), sizeof name);
        return *this;
    }
    TemplateBytes& add(WORD code, DWORD id, DWORD style, std::u16string_view title, int x, int y,
                       int width, int height) {
        m_bytes.resize((m_bytes.size() + 3) & ~std::size_t{3});
        put<DWORD>(0);
        put<DWORD>(0);
        put<DWORD>(style | WS_CHILD | WS_VISIBLE);
        place(x, y, width, height);
        put<DWORD>(id);
        put<WORD>(0xFFFF);
        put<WORD>(code);
        text(title);
        put<WORD>(0);
        ++m_bytes[16];  // the count
        return *this;
    }
    /// At a multiple of 4.
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }

  private:
    template <class T>
    void put(T value) {
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void place(int x, int y, int width, int height) {
        for (const int each : {x, y, width, height}) put<WORD>(static_cast<WORD>(each));
    }
    void text(std::u16string_view units) {
        for (const auto unit : units) put(unit);
        put<WORD>(0);
    }

    std::string m_bytes;
};

}  // namespace tests
