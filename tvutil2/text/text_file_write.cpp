#include "tvutil2/text/text_conversion.h"
#include "tvutil2/text/text_file.h"
#include "tvutil2/text/text_units.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace {

// One unit by itself, surrogates too; room for three bytes. Gives the bytes written.
std::size_t encode_utf8(char16_t unit, unsigned char* out) {
    const unsigned int c = unit;
    const auto tail = [c](unsigned int shift) {
        return static_cast<unsigned char>(0x80U | ((c >> shift) & 63U));
    };
    if (c < 0x80) {
        out[0] = static_cast<unsigned char>(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0U | c >> 6U);
        out[1] = tail(0);
        return 2;
    }
    out[0] = static_cast<unsigned char>(0xE0U | c >> 12U);
    out[1] = tail(6);
    out[2] = tail(0);
    return 3;
}

}  // namespace

CTextFileWrite::CTextFileWrite(const char16_t* path, TEXTENCODING text_encoding) {
    encoding = text_encoding;
    OpenOwn(path, CFile::modeCreate | CFile::modeWrite);
    WriteBOM();
}

CTextFileWrite::CTextFileWrite(CFile* target, TEXTENCODING text_encoding) {
    encoding = text_encoding;
    file = target;
    WriteBOM();
}

CTextFileWrite::~CTextFileWrite() {
    try {
        CTextFileWrite::Close();
    } catch (...) {
        // Nobody is left to be told; see the header.
    }
}

void CTextFileWrite::Close() {
    try {
        if (IsOpen() != 0) Flush();
    } catch (...) {
        CTextFileBase::Close();
        throw;
    }
    CTextFileBase::Close();
}

void CTextFileWrite::WriteBOM() {
    if (IsOpen() != 0 && encoding != TE_ANSI) WriteWchar(0xFEFF);
}

void CTextFileWrite::Flush() {
    const auto size = static_cast<UINT>(position + 1);
    position = -1;
    if (size != 0) file->Write(buffer, size);
}

std::size_t CTextFileWrite::RoomInBuffer() {
    if (position + 1 == kBufferSize) Flush();
    return static_cast<std::size_t>(kBufferSize - 1 - position);
}

void CTextFileWrite::WriteByte(unsigned char byte) {
    RoomInBuffer();
    buffer[++position] = byte;
}

void CTextFileWrite::WriteWchar(char16_t unit) {
    unsigned char bytes[3];
    std::size_t size = 2;
    if (encoding == TE_UTF8) {
        size = encode_utf8(unit, bytes);
    } else {
        const bool is_big = encoding == TE_UTF16_BE;
        bytes[is_big ? 0 : 1] = static_cast<unsigned char>(unit >> 8U);
        bytes[is_big ? 1 : 0] = static_cast<unsigned char>(unit & 0xFFU);
    }
    for (std::size_t i = 0; i < size; ++i) WriteByte(bytes[i]);
}

void CTextFileWrite::WriteAsciiString(const char* text) {
    WriteBytes(text);
}

void CTextFileWrite::WriteBytes(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto size = std::min(RoomInBuffer(), bytes.size());
        std::memcpy(buffer + (position + 1), bytes.data(), size);
        position += static_cast<int>(size);
        bytes.remove_prefix(size);
    }
}

void CTextFileWrite::WriteUnits(std::u16string_view units) {
    if (encoding == TE_UTF8) {
        WriteUtf8(units);
    } else {
        WriteUtf16(units);
    }
}

void CTextFileWrite::WriteUtf8(std::u16string_view units) {
    while (!units.empty()) {
        auto plain = tvutil2::ascii_prefix(units);
        while (plain != 0) {
            const auto size = std::min(RoomInBuffer(), plain);
            unsigned char* const out = buffer + (position + 1);
            for (std::size_t i = 0; i < size; ++i) out[i] = static_cast<unsigned char>(units[i]);
            position += static_cast<int>(size);
            units.remove_prefix(size);
            plain -= size;
        }
        std::size_t above = 0;
        for (; above < units.size() && units[above] >= 0x80; ++above) {
            if (RoomInBuffer() < 3) {
                WriteWchar(units[above]);
            } else {
                position += static_cast<int>(encode_utf8(units[above], buffer + (position + 1)));
            }
        }
        units.remove_prefix(above);
    }
}

void CTextFileWrite::WriteUtf16(std::u16string_view units) {
    const bool is_swapped = (encoding == TE_UTF16_BE) != (std::endian::native == std::endian::big);
    while (!units.empty()) {
        const auto count = std::min(RoomInBuffer() / 2, units.size());
        unsigned char* const out = buffer + (position + 1);
        std::memcpy(out, units.data(), count * 2);
        if (is_swapped) {
            for (std::size_t i = 0; i < count * 2; i += 2) std::swap(out[i], out[i + 1]);
        }
        position += static_cast<int>(count * 2);
        units.remove_prefix(count);
    }
}

// A zero stands behind the text.
void CTextFileWrite::WriteNarrow(std::string_view text) {
    if (IsOpen() == 0) return;
    if (encoding == TE_ANSI) {
        WriteBytes(text);
    } else {
        WriteUnits(tvutil2::WideText(text, codePage).view());
    }
}

// A zero stands behind the text.
void CTextFileWrite::WriteWide(std::u16string_view text) {
    if (IsOpen() == 0) return;
    if (encoding == TE_ANSI) {
        WriteBytes(tvutil2::NarrowText(text, codePage, &dataLost, unknownChar).view());
    } else {
        WriteUnits(text);
    }
}

void CTextFileWrite::Write(const char* text) {
    WriteNarrow(text);
}

void CTextFileWrite::Write(const char16_t* text) {
    WriteWide(text);
}

void CTextFileWrite::Write(const std::string& text) {
    WriteNarrow(text.c_str());
}

void CTextFileWrite::Write(const std::u16string& text) {
    WriteWide(tvutil2::before_zero(text));
}

CTextFileWrite& CTextFileWrite::operator<<(const char* text) {
    Write(text);
    return *this;
}

CTextFileWrite& CTextFileWrite::operator<<(const char16_t* text) {
    Write(text);
    return *this;
}

CTextFileWrite& CTextFileWrite::operator<<(const std::string& text) {
    Write(text);
    return *this;
}

CTextFileWrite& CTextFileWrite::operator<<(const std::u16string& text) {
    Write(text);
    return *this;
}

CTextFileWrite& CTextFileWrite::operator<<(char c) {
    const char text[] = {c, '\0'};
    Write(text);
    return *this;
}

CTextFileWrite& CTextFileWrite::operator<<(char16_t c) {
    const char16_t text[] = {c, u'\0'};
    Write(text);
    return *this;
}

void CTextFileWrite::WriteEndl() {
    if (IsOpen() == 0) return;
    if (encoding == TE_ANSI) {
        WriteAsciiString("\r\n");
    } else {
        WriteUnits(u"\r\n");
    }
}
