// CString and CStringA: the framework's string classes, as far as the library and its products use
// them.
//
// Values with their own storage: a copy is a copy. An object belongs to one thread at a time. Text
// is held with its length, so it may contain zero units; what takes a plain pointer reads up to the
// first one. An argument may lie in the very text that the call changes. Lengths are int: texts
// beyond 2^31 units are outside the contract.
#pragma once

#include "tvutil2/framework/format.h"
#include "tvutil2/framework/text_search.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <compare>
#include <string>
#include <string_view>

/// 16-bit text.
class TVUTIL_API CString {
  public:
    CString() = default;
    /// Null gives empty text.
    CString(const char16_t* text);
    CString(const char16_t* text, int length);
    explicit CString(std::u16string_view text) : m_text(text) {}
    explicit CString(std::u16string&& text) noexcept : m_text(std::move(text)) {}
    explicit CString(char16_t c, int count = 1);
    CString(const CString&) = default;
    CString(CString&&) noexcept = default;
    ~CString() = default;
    /// From text in the ANSI code page; null gives empty text.
    CString(const char* text);
    /// From what turns itself into a CString, and into other things, too.
    template <class Text>
    requires requires(const Text& text) { text.operator CString(); }
    CString(const Text& text) : CString(text.operator CString()) {}

    CString& operator=(const CString&) = default;
    CString& operator=(CString&&) noexcept = default;
    CString& operator=(const char16_t* text);
    CString& operator=(const char* text);
    CString& operator=(char16_t c);
    CString& operator=(std::u16string_view text);
    template <class Text>
    requires requires(const Text& text) { text.operator CString(); }
    CString& operator=(const Text& text) { return *this = text.operator CString(); }

    [[nodiscard]] int GetLength() const { return static_cast<int>(m_text.size()); }
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }
    /// Empties the text and gives its storage back.
    void Empty();
    [[nodiscard]] const char16_t* GetString() const { return m_text.c_str(); }
    operator const char16_t*() const { return m_text.c_str(); }
    [[nodiscard]] std::u16string_view View() const { return m_text; }

    /// A unit; an index below 0 or above the length throws CInvalidArgException. The index of the
    /// length gives the zero.
    [[nodiscard]] char16_t GetAt(int index) const;
    char16_t operator[](int index) const { return GetAt(index); }
    void SetAt(int index, char16_t c);

    CString& operator+=(const CString& text) {
        m_text.append(text.m_text);
        return *this;
    }
    CString& operator+=(const char16_t* text) { return *this += ViewOf(text); }
    CString& operator+=(std::u16string_view text) {
        m_text.append(text);
        return *this;
    }
    CString& operator+=(char16_t c) {
        m_text.push_back(c);
        return *this;
    }
    /// Makes room for a text of `length` units, so that growing up to it moves nothing.
    void Preallocate(int length);
    void Append(const char16_t* text) { *this += text; }
    void Append(const char16_t* text, int length);
    void AppendChar(char16_t c) { *this += c; }

    /// By code unit: negative, 0 or positive. With a pointer up to the first zero of either; null
    /// counts as empty.
    [[nodiscard]] int Compare(const CString& text) const {
        return tvutil2::compare_units(m_text, text.m_text);
    }
    [[nodiscard]] int Compare(const char16_t* text) const;
    /// As with a pointer, each unit lowered by simple case mapping.
    [[nodiscard]] int CompareNoCase(const char16_t* text) const;

    /// First, last and middle units; counts and positions below 0 count as 0, and what lies behind
    /// the end is not there.
    [[nodiscard]] CString Left(int count) const;
    [[nodiscard]] CString Right(int count) const;
    [[nodiscard]] CString Mid(int first) const;
    [[nodiscard]] CString Mid(int first, int count) const;

    /// Positions; -1 when nothing is found or `start` lies outside the text.
    [[nodiscard]] int Find(char16_t c, int start = 0) const;
    [[nodiscard]] int Find(const char16_t* text, int start = 0) const;
    [[nodiscard]] int ReverseFind(char16_t c) const;
    [[nodiscard]] int FindOneOf(const char16_t* set) const;

    /// How many were replaced or removed. Occurrences are looked for from the left and don't
    /// overlap; an empty `what` replaces nothing.
    int Replace(const char16_t* what, const char16_t* with);
    int Replace(char16_t what, char16_t with);
    int Remove(char16_t c);
    /// Removes units and gives the new length. An index below 0 counts as 0.
    int Delete(int index, int count = 1);
    /// Inserts and gives the new length. An index beyond the end appends.
    int Insert(int index, const char16_t* text);
    int Insert(int index, char16_t c);

    /// Without an argument: white space.
    CString& Trim();
    CString& Trim(char16_t c);
    CString& Trim(const char16_t* set);
    CString& TrimLeft();
    CString& TrimLeft(char16_t c);
    CString& TrimLeft(const char16_t* set);
    CString& TrimRight();
    CString& TrimRight(char16_t c);
    CString& TrimRight(const char16_t* set);
    /// Simple case mapping, unit by unit.
    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();

    /// The next run of units outside `set` from `position` on, which moves behind the run and its
    /// delimiter. When there is none, or for a position outside the text, an empty text, and
    /// `position` is -1. With an empty `set` all that is left is one run.
    CString Tokenize(const char16_t* set, int& position) const;

    /// Storage to be filled from outside, with room for `length` units and a zero. It begins with
    /// the text; the units behind are zero. Until ReleaseBuffer they count as text.
    char16_t* GetBuffer(int length = 0);
    /// The same, and `length` units are the text.
    char16_t* GetBufferSetLength(int length);
    /// Ends the filling: `length` units are the text, or those before the first zero for -1.
    void ReleaseBuffer(int length = -1);

    /// printf-style, type-safe: see format.h.
    template <class... Arguments>
    void Format(const char16_t* format, const Arguments&... arguments) {
        // One more than there are, so that the list is never empty.
        const tvutil2::FormatArgument list[] = {arguments..., nullptr};
        FormatV(format, {list, sizeof...(arguments)});
    }
    void FormatV(const char16_t* format, tvutil2::FormatArguments arguments);
    template <class... Arguments>
    void AppendFormat(const char16_t* format, const Arguments&... arguments) {
        CString text;
        text.Format(format, arguments...);
        *this += text;
    }

    /// The string with that id in the application's resources (AfxGetResourceHandle), in the
    /// language that the system chooses; 0, and empty text, when there is none or it is empty.
    int LoadString(UINT id);

    friend bool operator==(const CString& a, const CString& b) {
        return tvutil2::same_text(a.m_text, b.m_text);
    }
    friend bool operator==(const CString& a, const char16_t* b) { return a.Compare(b) == 0; }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) {
        return a.Compare(b) <=> 0;
    }
    friend std::strong_ordering operator<=>(const CString& a, const char16_t* b) {
        return a.Compare(b) <=> 0;
    }

    friend CString operator+(const CString& a, const CString& b) { return Sum(a.m_text, b.m_text); }
    friend CString operator+(const CString& a, const char16_t* b) {
        return Sum(a.m_text, ViewOf(b));
    }
    friend CString operator+(const char16_t* a, const CString& b) {
        return Sum(ViewOf(a), b.m_text);
    }
    friend CString operator+(const CString& a, char16_t b) { return Sum(a.m_text, {&b, 1}); }
    friend CString operator+(CString&& a, const CString& b) { return std::move(a += b); }
    friend CString operator+(CString&& a, const char16_t* b) { return std::move(a += b); }
    friend CString operator+(CString&& a, char16_t b) { return std::move(a += b); }

  private:
    static std::u16string_view ViewOf(const char16_t* text) {
        return text == nullptr ? std::u16string_view() : std::u16string_view(text);
    }
    static CString Sum(std::u16string_view a, std::u16string_view b);

    std::u16string m_text;
};

/// Narrow text: what Utf16ToUtf8 and its kin give. The encoding is whatever the maker says.
class TVUTIL_API CStringA {
  public:
    CStringA() = default;
    CStringA(const char* text);
    CStringA(const char* text, int length);
    explicit CStringA(std::string_view text) : m_text(text) {}
    /// From wide text, in the ANSI code page; null gives empty text.
    explicit CStringA(const char16_t* text);

    CStringA& operator=(const char* text);

    [[nodiscard]] int GetLength() const { return static_cast<int>(m_text.size()); }
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }
    void Empty();
    [[nodiscard]] const char* GetString() const { return m_text.c_str(); }
    operator const char*() const { return m_text.c_str(); }
    [[nodiscard]] std::string_view View() const { return m_text; }
    [[nodiscard]] char GetAt(int index) const;
    char operator[](int index) const { return GetAt(index); }

    CStringA& operator+=(const CStringA& text);
    CStringA& operator+=(const char* text);
    CStringA& operator+=(char c);
    void Append(const char* text, int length);

    [[nodiscard]] int Compare(const char* text) const;
    [[nodiscard]] CStringA Left(int count) const;
    [[nodiscard]] CStringA Right(int count) const;
    [[nodiscard]] CStringA Mid(int first) const;
    [[nodiscard]] CStringA Mid(int first, int count) const;
    [[nodiscard]] int Find(char c, int start = 0) const;
    [[nodiscard]] int Find(const char* text, int start = 0) const;

    char* GetBuffer(int length = 0);
    char* GetBufferSetLength(int length);
    void ReleaseBuffer(int length = -1);

    friend bool operator==(const CStringA& a, const CStringA& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CStringA& a, const char* b) { return a.Compare(b) == 0; }

  private:
    std::string m_text;
};
