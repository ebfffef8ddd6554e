#include "tvutil2/framework/strings.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/narrow_text.h"
#include "tvutil2/framework/text_search.h"
#include "tvutil2/platform/base/large_memory.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/resource/resource.h"

#include <algorithm>
#include <utility>

namespace {

using tvutil2::throw_invalid_argument;

template <class Unit>
std::basic_string_view<Unit> view_of(const Unit* text) {
    return text == nullptr ? std::basic_string_view<Unit>() : std::basic_string_view<Unit>(text);
}

template <class Unit>
std::basic_string_view<Unit> view_of(const Unit* text, int length) {
    if (text == nullptr || length <= 0) return {};
    return {text, static_cast<std::size_t>(length)};
}

// A count or position of the interface; below 0 counts as 0.
std::size_t size_of(int count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

int position_of(std::size_t found) {
    return found == std::u16string_view::npos ? -1 : static_cast<int>(found);
}

template <class Unit>
std::basic_string_view<Unit> middle(std::basic_string_view<Unit> text, int first, int count) {
    return text.substr(std::min(size_of(first), text.size()), size_of(count));
}

template <class Unit>
std::basic_string_view<Unit> tail(std::basic_string_view<Unit> text, int count) {
    return text.substr(text.size() - std::min(size_of(count), text.size()));
}

// False when a search from there has nothing to look at.
bool is_start(int start, std::size_t size) {
    return start >= 0 && static_cast<std::size_t>(start) <= size;
}

template <class Text>
auto* buffer_of(Text& text, int length) {
    if (size_of(length) > text.size()) text.resize(size_of(length));
    return text.data();
}

template <class Text>
void release_buffer(Text& text, int length) {
    const auto end = length < 0 ? text.find(typename Text::value_type{0}) : size_of(length);
    if (end < text.size()) text.resize(end);
}

bool is_in(char16_t c, std::u16string_view set) {
    return set.find(c) != std::u16string_view::npos;
}

template <class IsDropped>
void trim_left(std::u16string& text, IsDropped is_dropped) {
    const auto first = std::find_if_not(text.begin(), text.end(), is_dropped);
    text.erase(text.begin(), first);
}

template <class IsDropped>
void trim_right(std::u16string& text, IsDropped is_dropped) {
    const auto last = std::find_if_not(text.rbegin(), text.rend(), is_dropped);
    text.erase(last.base(), text.end());
}

// The set may be part of the text that is being trimmed: a copy of it stays what it is.
template <class Trim>
void trim_set(const char16_t* set, Trim trim) {
    const std::u16string units(view_of(set));
    trim([&units](char16_t c) { return is_in(c, units); });
}

}  // namespace

CString::CString(const char16_t* text) : m_text(view_of(text)) {}

CString::CString(const char16_t* text, int length) : m_text(view_of(text, length)) {}

CString::CString(char16_t c, int count) : m_text(size_of(count), c) {}

CString::CString(const char* text) : m_text(tvutil2::from_ansi(view_of(text))) {}

CString& CString::operator=(const char16_t* text) {
    m_text.assign(view_of(text));
    return *this;
}

CString& CString::operator=(const char* text) {
    m_text = tvutil2::from_ansi(view_of(text));
    return *this;
}

CString& CString::operator=(char16_t c) {
    m_text.assign(1, c);
    return *this;
}

CString& CString::operator=(std::u16string_view text) {
    m_text.assign(text);
    return *this;
}

void CString::Empty() {
    std::u16string().swap(m_text);
}

void CString::Preallocate(int length) {
    if (length <= 0) return;
    m_text.reserve(static_cast<std::size_t>(length));
    const auto used = m_text.size();
    tvutil2::hint_large_pages(m_text.data() + used, (m_text.capacity() - used) * sizeof(char16_t));
}

char16_t CString::GetAt(int index) const {
    if (!is_start(index, m_text.size())) throw_invalid_argument();
    return m_text.c_str()[index];
}

void CString::SetAt(int index, char16_t c) {
    if (index < 0 || index >= GetLength()) throw_invalid_argument();
    m_text[static_cast<std::size_t>(index)] = c;
}

void CString::Append(const char16_t* text, int length) {
    m_text.append(view_of(text, length));
}

CString CString::Sum(std::u16string_view a, std::u16string_view b) {
    CString sum;
    sum.m_text.reserve(a.size() + b.size());
    sum.m_text.append(a).append(b);
    return sum;
}

int CString::Compare(const char16_t* text) const {
    if (text == nullptr) return m_text.c_str()[0] == 0 ? 0 : 1;
    for (const char16_t* own = m_text.c_str();; ++own, ++text) {
        if (*own != *text) return *own < *text ? -1 : 1;
        if (*own == 0) return 0;
    }
}

int CString::CompareNoCase(const char16_t* text) const {
    const int order = _wcsicmp(m_text.c_str(), text == nullptr ? u"" : text);
    return (order > 0) - (order < 0);
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    return CString(tail(View(), count));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    return CString(middle(View(), first, count));
}

int CString::Find(char16_t c, int start) const {
    if (!is_start(start, m_text.size())) return -1;
    const auto found = tvutil2::find_unit(View().substr(size_of(start)), c);
    return found == View().npos ? -1 : start + static_cast<int>(found);
}

int CString::Find(const char16_t* text, int start) const {
    if (!is_start(start, m_text.size())) return -1;
    const auto found = tvutil2::find_text(View().substr(size_of(start)), view_of(text));
    return found == View().npos ? -1 : start + static_cast<int>(found);
}

int CString::ReverseFind(char16_t c) const {
    return position_of(m_text.rfind(c));
}

int CString::FindOneOf(const char16_t* set) const {
    return position_of(m_text.find_first_of(view_of(set)));
}

int CString::Replace(const char16_t* what, const char16_t* with) {
    const auto old = view_of(what);
    const auto fresh = view_of(with);
    if (old.empty()) return 0;
    const auto found = tvutil2::find_all(m_text, old);
    if (found.empty()) return 0;
    std::u16string out;
    out.reserve(m_text.size() - found.size() * old.size() + found.size() * fresh.size());
    std::size_t copied = 0;
    for (const auto at : found) {
        out.append(m_text, copied, at - copied).append(fresh);
        copied = at + old.size();
    }
    out.append(m_text, copied);
    m_text = std::move(out);
    return static_cast<int>(found.size());
}

int CString::Replace(char16_t what, char16_t with) {
    int count = 0;
    for (auto& c : m_text) {
        count += c == what ? 1 : 0;
        c = c == what ? with : c;
    }
    return count;
}

int CString::Remove(char16_t c) {
    return static_cast<int>(std::erase(m_text, c));
}

int CString::Delete(int index, int count) {
    m_text.erase(std::min(size_of(index), m_text.size()), size_of(count));
    return GetLength();
}

int CString::Insert(int index, const char16_t* text) {
    const auto units = view_of(text);
    m_text.insert(std::min(size_of(index), m_text.size()), units.data(), units.size());
    return GetLength();
}

int CString::Insert(int index, char16_t c) {
    m_text.insert(std::min(size_of(index), m_text.size()), 1, c);
    return GetLength();
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}

CString& CString::Trim(char16_t c) {
    return TrimRight(c).TrimLeft(c);
}

CString& CString::Trim(const char16_t* set) {
    trim_set(set, [this](auto is_dropped) {
        trim_right(m_text, is_dropped);
        trim_left(m_text, is_dropped);
    });
    return *this;
}

CString& CString::TrimLeft() {
    trim_left(m_text, tvutil2::is_space);
    return *this;
}

CString& CString::TrimLeft(char16_t c) {
    trim_left(m_text, [c](char16_t unit) { return unit == c; });
    return *this;
}

CString& CString::TrimLeft(const char16_t* set) {
    trim_set(set, [this](auto is_dropped) { trim_left(m_text, is_dropped); });
    return *this;
}

CString& CString::TrimRight() {
    trim_right(m_text, tvutil2::is_space);
    return *this;
}

CString& CString::TrimRight(char16_t c) {
    trim_right(m_text, [c](char16_t unit) { return unit == c; });
    return *this;
}

CString& CString::TrimRight(const char16_t* set) {
    trim_set(set, [this](auto is_dropped) { trim_right(m_text, is_dropped); });
    return *this;
}

CString& CString::MakeUpper() {
    for (auto& c : m_text) c = tvutil2::to_upper(c);
    return *this;
}

CString& CString::MakeLower() {
    for (auto& c : m_text) c = tvutil2::to_lower(c);
    return *this;
}

CString& CString::MakeReverse() {
    std::reverse(m_text.begin(), m_text.end());
    return *this;
}

CString CString::Tokenize(const char16_t* set, int& position) const {
    const auto delimiters = view_of(set);
    const auto first =
        position < 0 ? m_text.npos : m_text.find_first_not_of(delimiters, size_of(position));
    if (first == m_text.npos) {
        position = -1;
        return {};
    }
    const auto end = std::min(m_text.find_first_of(delimiters, first), m_text.size());
    position = static_cast<int>(end) + 1;
    return CString(View().substr(first, end - first));
}

char16_t* CString::GetBuffer(int length) {
    return buffer_of(m_text, length);
}

char16_t* CString::GetBufferSetLength(int length) {
    m_text.resize(size_of(length));
    return m_text.data();
}

void CString::ReleaseBuffer(int length) {
    release_buffer(m_text, length);
}

void CString::FormatV(const char16_t* format, tvutil2::FormatArguments arguments) {
    tvutil2::format_over(m_text, view_of(format), arguments);
}

int CString::LoadString(UINT id) {
    // With no room to copy to, the call gives the place of the text in the module.
    const char16_t* text = nullptr;
    const int length =
        LoadStringW(AfxGetResourceHandle(), id, reinterpret_cast<char16_t*>(&text), 0);
    m_text.assign(view_of(text, length));
    return length > 0 ? TRUE : FALSE;
}

CStringA::CStringA(const char* text) : m_text(view_of(text)) {}

CStringA::CStringA(const char* text, int length) : m_text(view_of(text, length)) {}

CStringA::CStringA(const char16_t* text) : m_text(tvutil2::to_ansi(view_of(text))) {}

CStringA& CStringA::operator=(const char* text) {
    m_text.assign(view_of(text));
    return *this;
}

void CStringA::Empty() {
    std::string().swap(m_text);
}

char CStringA::GetAt(int index) const {
    if (!is_start(index, m_text.size())) throw_invalid_argument();
    return m_text.c_str()[index];
}

CStringA& CStringA::operator+=(const CStringA& text) {
    m_text.append(text.m_text);
    return *this;
}

CStringA& CStringA::operator+=(const char* text) {
    m_text.append(view_of(text));
    return *this;
}

CStringA& CStringA::operator+=(char c) {
    m_text.push_back(c);
    return *this;
}

void CStringA::Append(const char* text, int length) {
    m_text.append(view_of(text, length));
}

int CStringA::Compare(const char* text) const {
    const int order = std::string_view(m_text.c_str()).compare(view_of(text));
    return (order > 0) - (order < 0);
}

CStringA CStringA::Left(int count) const {
    return Mid(0, count);
}

CStringA CStringA::Right(int count) const {
    return CStringA(tail(View(), count));
}

CStringA CStringA::Mid(int first) const {
    return Mid(first, GetLength());
}

CStringA CStringA::Mid(int first, int count) const {
    return CStringA(middle(View(), first, count));
}

int CStringA::Find(char c, int start) const {
    return is_start(start, m_text.size()) ? position_of(m_text.find(c, size_of(start))) : -1;
}

int CStringA::Find(const char* text, int start) const {
    if (!is_start(start, m_text.size())) return -1;
    return position_of(m_text.find(view_of(text), size_of(start)));
}

char* CStringA::GetBuffer(int length) {
    return buffer_of(m_text, length);
}

char* CStringA::GetBufferSetLength(int length) {
    m_text.resize(size_of(length));
    return m_text.data();
}

void CStringA::ReleaseBuffer(int length) {
    release_buffer(m_text, length);
}
