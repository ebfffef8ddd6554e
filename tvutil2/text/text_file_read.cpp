#include "tvutil2/platform/codepage/narrow_page.h"
#include "tvutil2/text/text_conversion.h"
#include "tvutil2/text/text_file.h"
#include "tvutil2/text/text_line.h"
#include "tvutil2/text/text_units.h"

#include <bit>
#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>

using tvutil2::is_line_end;
using tvutil2::TextLine;

namespace {

constexpr char16_t kReplacement = 0xFFFD;

char16_t joined(unsigned int high, unsigned int low) {
    return static_cast<char16_t>(high << 8U | low);
}

char16_t two_bytes(unsigned int a, unsigned int b) {
    return static_cast<char16_t>((a & 31U) << 6U | (b & 63U));
}

char16_t three_bytes(unsigned int a, unsigned int b, unsigned int c) {
    return static_cast<char16_t>((a & 15U) << 12U | (b & 63U) << 6U | (c & 63U));
}

// Bytes of the unit that a UTF-8 byte begins; what begins none is a unit by itself.
std::size_t utf8_size(unsigned int first) {
    if (first >= 0xE0 && first < 0xF0) return 3;
    return first >= 0xC0 && first < 0xE0 ? 2 : 1;
}

void put_ascii(TextLine<char16_t>& line, std::string_view bytes) {
    line.put_run(bytes.size(), [bytes](std::size_t first, std::size_t count, char16_t* out) {
        const char* const from = bytes.data() + first;
        for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<unsigned char>(from[i]);
    });
}

void put_utf16(TextLine<char16_t>& line, const char* bytes, std::size_t units, bool is_big) {
    const bool is_swapped = is_big != (std::endian::native == std::endian::big);
    line.put_run(units, [=](std::size_t first, std::size_t count, char16_t* out) {
        std::memcpy(out, bytes + first * 2, count * 2);
        if (!is_swapped) return;
        for (std::size_t i = 0; i < count; ++i) out[i] = joined(out[i] & 0xFFU, out[i] >> 8U);
    });
}

// Takes the characters above ASCII at the front, as far as they are there whole and end no line;
// gives the bytes taken.
std::size_t put_above_ascii(TextLine<char16_t>& line, std::string_view bytes) {
    const auto at = [bytes](std::size_t i) -> unsigned int {
        return static_cast<unsigned char>(bytes[i]);
    };
    std::size_t i = 0;
    while (i < bytes.size() && at(i) >= 0x80) {
        const auto size = utf8_size(at(i));
        if (size > bytes.size() - i) break;
        char16_t unit = kReplacement;
        if (size == 2) unit = two_bytes(at(i), at(i + 1));
        if (size == 3) unit = three_bytes(at(i), at(i + 1), at(i + 2));
        if (is_line_end(unit)) break;
        line.put(unit);
        i += size;
    }
    return i;
}

}  // namespace

CTextFileRead::CTextFileRead(const char16_t* path) {
    OpenOwn(path, CFile::modeRead | CFile::shareDenyWrite);
    DetectEncoding();
}

CTextFileRead::CTextFileRead(CFile* source) {
    file = source;
    DetectEncoding();
}

void CTextFileRead::DetectEncoding() {
    atEnd = IsOpen() == 0;
    if (atEnd) return;
    ReadBOM();
    if (encoding == TE_ANSI && IsUTF8NotBom()) encoding = TE_UTF8;
}

void CTextFileRead::ReadBOM() {
    unsigned char first = 0;
    unsigned char second = 0;
    ReadByte(first);
    ReadByte(second);
    if (first == 0xFF && second == 0xFE) {
        encoding = TE_UTF16_LE;
        return;
    }
    if (first == 0xFE && second == 0xFF) {
        encoding = TE_UTF16_BE;
        return;
    }
    if (first == 0xEF && second == 0xBB) {
        unsigned char third = 0;
        ReadByte(third);
        if (third == 0xBF) {
            encoding = TE_UTF8;
            return;
        }
    }
    encoding = TE_ANSI;
    ResetFilePointer();
}

bool CTextFileRead::IsUTF8NotBom() {
    unsigned char byte = 0;
    do {
        position += static_cast<int>(tvutil2::ascii_prefix(UnreadBytes()));
        ReadByte(byte);
    } while (byte < 0x80 && !atEnd);
    bool is_utf8 = true;
    if (byte >= 0x80) {
        is_utf8 = byte >= 0xC0 && byte < 0xF7;
        const int continuations = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
        for (int i = 0; is_utf8 && i < continuations; ++i) {
            ReadByte(byte);  // 0 at the end, which is none
            is_utf8 = (byte & 0xC0) == 0x80;
        }
    }
    ResetFilePointer();
    return is_utf8;
}

void CTextFileRead::ResetFilePointer() {
    file->SeekToBegin();
    position = -1;
    bufferSize = 0;
    firstLine = true;
    hasPushedBack = false;
    atEnd = false;
}

int CTextFileRead::GuessCharacterCount() {
    const auto bytes = file->GetLength();
    const auto count = encoding == TE_ANSI || encoding == TE_UTF8 ? bytes : bytes / 2;
    return count < INT_MAX ? static_cast<int>(count) : INT_MAX;
}

void CTextFileRead::FillBuffer() {
    bufferSize = IsOpen() != 0 ? static_cast<int>(file->Read(buffer, kBufferSize)) : 0;
    position = -1;
}

std::string_view CTextFileRead::UnreadBytes() const {
    const auto next = position + 1;
    return {reinterpret_cast<const char*>(buffer) + next,
            next < bufferSize ? static_cast<std::size_t>(bufferSize - next) : 0};
}

void CTextFileRead::ReadByte(unsigned char& byte) {
    if (hasPushedBack) {
        hasPushedBack = false;
        byte = static_cast<unsigned char>(pushedBack);
        return;
    }
    if (position == -1 || position == kBufferSize - 1) FillBuffer();
    if (position + 1 >= bufferSize) {
        atEnd = true;
        byte = 0;
        return;
    }
    byte = buffer[++position];
}

void CTextFileRead::ReadWchar(char16_t& unit) {
    if (hasPushedBack) {
        hasPushedBack = false;
        unit = pushedBack;
        return;
    }
    unsigned char bytes[3] = {};
    ReadByte(bytes[0]);
    if (encoding != TE_UTF8) {
        ReadByte(bytes[1]);
        unit = encoding == TE_UTF16_BE ? joined(bytes[0], bytes[1]) : joined(bytes[1], bytes[0]);
        return;
    }
    const auto size = utf8_size(bytes[0]);
    for (std::size_t i = 1; i < size; ++i) ReadByte(bytes[i]);
    unit = bytes[0] < 0x80 ? bytes[0] : kReplacement;
    if (size == 2) unit = two_bytes(bytes[0], bytes[1]);
    if (size == 3) unit = three_bytes(bytes[0], bytes[1], bytes[2]);
}

void CTextFileRead::ReadUnit(char& unit) {
    unsigned char byte = 0;
    ReadByte(byte);
    unit = static_cast<char>(byte);
}

// A unit at a time would do; GatherBuffered takes all those at once that lie in the buffer.
template <class Unit>
bool CTextFileRead::GatherLine(TextLine<Unit>& line) {
    if (atEnd) return false;
    Unit unit = 0;
    ReadUnit(unit);
    if (firstLine) {
        firstLine = false;
    } else {
        if (unit == Unit{'\r'}) ReadUnit(unit);
        if (unit == Unit{'\n'}) ReadUnit(unit);
    }
    while (!is_line_end(unit) && !atEnd) {
        line.put(unit);
        GatherBuffered(line);
        ReadUnit(unit);
    }
    pushedBack = static_cast<std::make_unsigned_t<Unit>>(unit);
    hasPushedBack = true;
    return true;
}

void CTextFileRead::GatherBuffered(TextLine<char>& line) {
    const auto bytes = UnreadBytes();
    const auto size = tvutil2::line_prefix(bytes);
    line.put_run(size, [bytes](std::size_t first, std::size_t count, char* out) {
        std::memcpy(out, bytes.data() + first, count);
    });
    position += static_cast<int>(size);
}

void CTextFileRead::GatherBuffered(TextLine<char16_t>& line) {
    auto bytes = UnreadBytes();
    if (encoding != TE_UTF8) {
        const bool is_big = encoding == TE_UTF16_BE;
        const auto units = tvutil2::utf16_line_prefix(bytes, is_big);
        put_utf16(line, bytes.data(), units, is_big);
        position += static_cast<int>(units * 2);
        return;
    }
    for (std::size_t above_ascii = 1; above_ascii != 0;) {
        const auto plain = tvutil2::ascii_line_prefix(bytes);
        put_ascii(line, bytes.substr(0, plain));
        bytes.remove_prefix(plain);
        above_ascii = put_above_ascii(line, bytes);
        bytes.remove_prefix(above_ascii);
    }
    position = bufferSize - 1 - static_cast<int>(bytes.size());
}

bool CTextFileRead::ReadCharLine(std::string& line) {
    if (atEnd) return false;
    TextLine<char> text(line);
    GatherLine(text);
    text.finish_in_string();
    return true;
}

bool CTextFileRead::ReadWcharLine(std::u16string& line) {
    if (atEnd) return false;
    TextLine<char16_t> text(line);
    GatherLine(text);
    text.finish_in_string();
    return true;
}

bool CTextFileRead::ReadLine(std::string& line) {
    if (encoding == TE_ANSI) return ReadCharLine(line);
    if (atEnd) return false;
    std::u16string long_line;
    TextLine<char16_t> text(long_line);
    GatherLine(text);
    WcharToString(text.finish().data(), line);
    return true;
}

bool CTextFileRead::ReadLine(std::u16string& line) {
    if (encoding != TE_ANSI) return ReadWcharLine(line);
    if (atEnd) return false;
    std::string long_line;
    TextLine<char> text(long_line);
    GatherLine(text);
    const auto page = codePage == CP_ACP ? tvutil2::narrow_page() : codePage;
    ConvertCharToWstring(text.finish().data(), line, page);
    return true;
}

bool CTextFileRead::ReadLine(CString& line) {
    std::u16string text;
    if (!ReadLine(text)) return false;
    line = CString(std::move(text));
    return true;
}

template <class Text>
bool CTextFileRead::ReadRest(Text& out, const Text& separator) {
    if (IsOpen() == 0) return false;
    out.clear();
    out.reserve(static_cast<std::size_t>(GuessCharacterCount()) + 2);
    Text line;
    for (bool is_first = true; !atEnd; is_first = false) {
        ReadLine(line);
        if (!is_first) out += separator;
        out += line;
    }
    return true;
}

// The separator may come from the text that is replaced.
// NOLINTBEGIN(performance-unnecessary-value-param)
bool CTextFileRead::Read(std::string& out, std::string separator) {
    return ReadRest(out, separator);
}

bool CTextFileRead::Read(std::u16string& out, std::u16string separator) {
    return ReadRest(out, separator);
}

bool CTextFileRead::Read(CString& out, CString separator) {
    std::u16string text;
    if (!ReadRest(text, std::u16string(separator.View()))) return false;
    out = CString(std::move(text));
    return true;
}
// NOLINTEND(performance-unnecessary-value-param)
