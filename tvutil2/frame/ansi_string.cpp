#include "tvutil2/frame/ansi_string.h"

#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t kFormatRoom = 4096;

// What stands in front of the characters, in the same array: the object has a pointer and no more.
struct Head {
    std::size_t length;  // up to the first zero
    std::size_t room;    // without a zero behind it
};

Head& head_of(char* text) {
    return *std::launder(reinterpret_cast<Head*>(text - sizeof(Head)));
}

std::size_t length_of(const char* text) {
    return text == nullptr ? 0 : head_of(const_cast<char*>(text)).length;
}

// A new array with `size` characters, and room for more of them; null for none.
char* copy_of(const char* text, std::size_t size, std::size_t room) {
    if (size == 0) return nullptr;
    char* const block = new char[sizeof(Head) + room + 1];
    new (block) Head{strnlen(text, size), room};
    char* const copy = block + sizeof(Head);
    std::memcpy(copy, text, size);
    copy[size] = 0;
    return copy;
}

char* copy_of(const char* text, std::size_t size) {
    return copy_of(text, size, size);
}

void release(char* text) {
    if (text != nullptr) delete[](text - sizeof(Head));
}

char* narrow_copy_of(const char16_t* text) {
    if (text == nullptr) return nullptr;
    const std::u16string_view units = text;
    const auto convert = [units](std::span<char> out) {
        using namespace tvutil2::codepage;
        const auto size = put_bytes(CP_ACP, WC_COMPOSITECHECK, units, out, "?");
        if (!size) throw std::bad_alloc();  // beyond what one text can be
        return *size;
    };
    // Most texts are short: no more memory than they need.
    char in_place[1024];
    const auto room = tvutil2::codepage::byte_room(CP_ACP, units.size());
    if (room <= sizeof in_place) return copy_of(in_place, convert(in_place));
    const auto bytes = std::make_unique_for_overwrite<char[]>(room);
    return copy_of(bytes.get(), convert({bytes.get(), room}));
}

int is_class(int (*test)(int), char c) {
    return test(static_cast<unsigned char>(c));
}

}  // namespace

CAnsiString::CAnsiString(const char* s) : m_text(copy_of(s, std::strlen(s))) {}

CAnsiString::CAnsiString(const char16_t* s) : m_text(narrow_copy_of(s)) {}

CAnsiString::CAnsiString(const CAnsiString& other) : CAnsiString(static_cast<const char*>(other)) {}

CAnsiString::~CAnsiString() {
    release(m_text);
}

// The new text is always made before the old one goes, which it may have been made from.
void CAnsiString::take(char* text) {
    release(std::exchange(m_text, text));
}

CAnsiString& CAnsiString::operator=(const char* s) {
    take(copy_of(s, std::strlen(s)));
    return *this;
}

CAnsiString& CAnsiString::operator=(const char16_t* s) {
    take(narrow_copy_of(s));
    return *this;
}

CAnsiString& CAnsiString::operator=(const CAnsiString& other) {
    if (this == &other) return *this;
    return *this = static_cast<const char*>(other);
}

CAnsiString& CAnsiString::operator+=(const char* s) {
    if (s == nullptr || *s == 0) return *this;
    append(s, std::strlen(s));
    return *this;
}

// Characters without a zero, which may lie in this text. Room doubles, so that a text may be built
// a character at a time.
void CAnsiString::append(const char* s, std::size_t added) {
    const auto length = length_of(m_text);
    const auto needed = length + added;
    if (m_text == nullptr) return take(copy_of(s, added));
    char* text = m_text;
    if (needed > head_of(text).room) {
        text = copy_of(m_text, std::max<std::size_t>(length, 1), std::max(needed, 2 * length + 16));
    }
    std::memcpy(text + length, s, added);
    text[needed] = 0;
    head_of(text).length = needed;
    if (text != m_text) take(text);
}

CAnsiString& CAnsiString::operator+=(const char16_t* s) {
    return *this += static_cast<const char*>(CAnsiString(s));
}

CAnsiString& CAnsiString::operator+=(char c) {
    if (c != 0) append(&c, 1);
    return *this;
}

void CAnsiString::SetString(const char* s, int n) {
    take(n > 0 ? copy_of(s, static_cast<std::size_t>(n)) : nullptr);
}

void CAnsiString::Format(const char* format, ...) {
    char text[kFormatRoom];
    std::va_list arguments;
    va_start(arguments, format);
    const int size = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    take(size > 0 ? copy_of(text, std::strlen(text)) : nullptr);
}

int CAnsiString::GetLength() const {
    return static_cast<int>(length_of(m_text));
}

int CAnsiString::IsEmpty() const {
    return *static_cast<const char*>(*this) == 0 ? 1 : 0;
}

void CAnsiString::Empty() {
    take(nullptr);
}

CAnsiString CAnsiString::Left(int n) const {
    CAnsiString result;
    result.SetString(*this, std::min(n, GetLength()));
    return result;
}

CAnsiString CAnsiString::Right(int n) const {
    if (n < 0) return {};
    return CAnsiString(static_cast<const char*>(*this) + (n > GetLength() ? 0 : n));
}

void CAnsiString::Trim() {
    TrimLeft();
    TrimRight();
}

void CAnsiString::TrimLeft() {
    if (m_text == nullptr) return;
    const char* first = m_text;
    while (is_class(std::isspace, *first) != 0) ++first;
    const auto length = length_of(m_text) - static_cast<std::size_t>(first - m_text);
    std::memmove(m_text, first, length + 1);
    head_of(m_text).length = length;
}

void CAnsiString::TrimRight() {
    if (m_text == nullptr) return;
    auto& length = head_of(m_text).length;
    while (length > 0 && is_class(std::isspace, m_text[length - 1]) != 0) --length;
    m_text[length] = 0;
}

void CAnsiString::MakeUpper() {
    if (m_text == nullptr) return;
    for (char* c = m_text; *c != 0; ++c) {
        if (is_class(std::islower, *c) != 0) *c = static_cast<char>(*c - 32);
    }
}

void CAnsiString::MakeLower() {
    if (m_text == nullptr) return;
    for (char* c = m_text; *c != 0; ++c) {
        if (is_class(std::isupper, *c) != 0) *c = static_cast<char>(*c + 32);
    }
}

void CAnsiString::Delete(int index, int count) {
    CString text(static_cast<const char*>(*this));
    text.Delete(index, count);
    *this = text.GetString();
}

char CAnsiString::GetAt(int i) const {
    return i < GetLength() ? m_text[i] : '\0';
}

void CAnsiString::SetAt(int i, char c) {
    if (i >= GetLength()) return;
    m_text[i] = c;
    if (c == 0) head_of(m_text).length = static_cast<std::size_t>(i);
}

CAnsiString::operator CString() const {
    return CString(static_cast<const char*>(*this));
}

bool operator==(const CAnsiString& a, const CAnsiString& b) {
    return a == static_cast<const char*>(b);
}

bool operator==(const CAnsiString& a, const char* b) {
    return std::strcmp(a, b) == 0;
}
