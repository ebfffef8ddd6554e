// Text files a unit at a time, as plainly as can be, and a file in memory to hold them against.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/text/text_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tests {

/// A file of bytes in memory that can be made to fail.
class MemoryFile : public CFile {
  public:
    explicit MemoryFile(std::string content = {})
        : CFile(HANDLE(nullptr)), bytes(std::move(content)) {}

    UINT Read(void* buffer, UINT count) override {
        const auto size = std::min<std::size_t>(count, bytes.size() - place);
        std::memcpy(buffer, bytes.data() + place, size);
        place += size;
        return static_cast<UINT>(size);
    }
    void Write(const void* data, UINT count) override {
        if (bytes.size() + count > room) throw CFileException(ERROR_DISK_FULL);
        writes.push_back(count);
        bytes.append(static_cast<const char*>(data), count);
    }
    ULONGLONG Seek(LONGLONG offset, UINT /*from*/) override {
        return place = static_cast<std::size_t>(offset);
    }
    [[nodiscard]] ULONGLONG GetLength() const override { return bytes.size(); }

    std::string bytes;
    std::size_t place = 0;
    std::size_t room = SIZE_MAX;
    std::vector<UINT> writes;
};

/// What a reader makes of a file.
struct ReadModel {
    CTextFileBase::TEXTENCODING encoding = CTextFileBase::TE_ANSI;
    std::vector<std::u16string> lines;  ///< a byte a unit in an ANSI file
};

class TextFileModel {
  public:
    explicit TextFileModel(const std::string& bytes) : m_bytes(bytes) {}

    ReadModel read() {
        ReadModel result;
        result.encoding = m_encoding = encoding();
        std::u16string line;
        char16_t unit = next();
        for (;;) {
            line.clear();
            for (; unit != u'\r' && unit != u'\n' && !m_at_end; unit = next()) line += unit;
            // The last piece of 1023 units ends at its first zero.
            const auto last_piece = line.empty() ? 0 : (line.size() - 1) / 1023 * 1023;
            result.lines.push_back(line.substr(0, line.find(u'\0', last_piece)));
            if (m_at_end) return result;
            const bool is_cr = unit == u'\r';
            unit = next();
            if (is_cr && unit == u'\n') unit = next();
        }
    }

    static std::string written(std::u16string_view text, CTextFileBase::TEXTENCODING encoding) {
        std::string bytes;
        const auto put = [&bytes](unsigned int byte) { bytes += static_cast<char>(byte); };
        std::u16string units = u"\xFEFF";
        units += text;
        for (const unsigned int c : units) {
            if (encoding == CTextFileBase::TE_UTF16_BE) {
                put(c >> 8), put(c & 0xFF);
            } else if (encoding == CTextFileBase::TE_UTF16_LE) {
                put(c & 0xFF), put(c >> 8);
            } else if (c < 0x80) {
                put(c);
            } else if (c < 0x800) {
                put(0xC0 | c >> 6), put(0x80 | (c & 63));
            } else {
                put(0xE0 | c >> 12), put(0x80 | (c >> 6 & 63)), put(0x80 | (c & 63));
            }
        }
        return bytes;
    }

  private:
    CTextFileBase::TEXTENCODING encoding() {
        const auto starts = [this](const char* mark) { return m_bytes.rfind(mark, 0) == 0; };
        if (starts("\xFF\xFE")) return m_place = 2, CTextFileBase::TE_UTF16_LE;
        if (starts("\xFE\xFF")) return m_place = 2, CTextFileBase::TE_UTF16_BE;
        if (starts("\xEF\xBB\xBF")) return m_place = 3, CTextFileBase::TE_UTF8;
        std::size_t i = 0;
        while (i < m_bytes.size() && at(i) < 0x80) ++i;
        if (i == m_bytes.size()) return CTextFileBase::TE_UTF8;
        const auto lead = at(i);
        if (lead < 0xC0 || lead >= 0xF7) return CTextFileBase::TE_ANSI;
        for (std::size_t tails = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3; tails != 0; --tails) {
            if (++i >= m_bytes.size() || (at(i) & 0xC0) != 0x80) return CTextFileBase::TE_ANSI;
        }
        return CTextFileBase::TE_UTF8;
    }
    [[nodiscard]] unsigned int at(std::size_t i) const {
        return static_cast<unsigned char>(m_bytes[i]);
    }
    unsigned int byte() {
        if (m_place < m_bytes.size()) return at(m_place++);
        m_at_end = true;
        return 0;
    }
    char16_t next() {
        const unsigned int a = byte();
        if (m_encoding == CTextFileBase::TE_ANSI) return static_cast<char16_t>(a);
        if (m_encoding == CTextFileBase::TE_UTF16_LE) return static_cast<char16_t>(a | byte() << 8);
        if (m_encoding == CTextFileBase::TE_UTF16_BE) return static_cast<char16_t>(a << 8 | byte());
        if (a < 0x80) return static_cast<char16_t>(a);
        if (a < 0xC0 || a >= 0xF0) return 0xFFFD;
        const unsigned int b = byte() & 63;
        if (a < 0xE0) return static_cast<char16_t>((a & 31) << 6 | b);
        const unsigned int c = byte() & 63;
        return static_cast<char16_t>((a & 15) << 12 | b << 6 | c);
    }

    const std::string& m_bytes;
    CTextFileBase::TEXTENCODING m_encoding = CTextFileBase::TE_ANSI;
    std::size_t m_place = 0;
    bool m_at_end = false;
};

}  // namespace tests
