// CAnsiString: narrow text in an array of its own, for interfaces that want `const char*`.
//
// Wide text is converted in the ANSI code page: a base character and a non-spacing mark go out as
// the precomposed character where the page has it, and what the page doesn't hold becomes "?". An
// object belongs to one thread at a time. A failed allocation throws and leaves the text as it was.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

#include <cstddef>

class TVUTIL_API CAnsiString {
  public:
    CAnsiString() = default;
    /// `s` must not be null.
    CAnsiString(const char* s);
    /// Null gives empty text.
    CAnsiString(const char16_t* s);
    CAnsiString(const CAnsiString& other);
    ~CAnsiString();

    /// The text may come from this very string.
    CAnsiString& operator=(const char* s);
    CAnsiString& operator=(const char16_t* s);
    CAnsiString& operator=(const CAnsiString& other);

    /// Null and the zero character append nothing.
    CAnsiString& operator+=(const char* s);
    CAnsiString& operator+=(const char16_t* s);
    CAnsiString& operator+=(char c);

    /// The first `n` bytes of `s` as they are, zeros included, and a zero; `n` of 0 or below gives
    /// empty text.
    void SetString(const char* s, int n);
    /// printf-style; what goes beyond 4095 characters is cut.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Characters up to the first zero.
    [[nodiscard]] int GetLength() const;
    [[nodiscard]] int IsEmpty() const;
    void Empty();

    /// The first `n` characters: none for `n` below 0, all for `n` above the length.
    [[nodiscard]] CAnsiString Left(int n) const;
    /// What stands from index `n` on (not the last `n` characters): none for `n` below 0, all for
    /// `n` above the length.
    [[nodiscard]] CAnsiString Right(int n) const;

    /// White space is what isspace says.
    void Trim();
    void TrimLeft();
    void TrimRight();
    /// A letter of the other case, by islower and isupper, moves by 32.
    void MakeUpper();
    void MakeLower();
    /// CString::Delete on the wide form: counts characters, not bytes, and changes a byte that the
    /// ANSI code page can't carry both ways.
    void Delete(int index, int count);

    /// 0, and nothing, at and beyond the length. An index below 0 is the caller's fault.
    [[nodiscard]] char GetAt(int i) const;
    void SetAt(int i, char c);

    /// Never null.
    operator const char*() const { return m_text != nullptr ? m_text : ""; }
    operator CString() const;

    /// By bytes.
    friend TVUTIL_API bool operator==(const CAnsiString& a, const CAnsiString& b);
    friend TVUTIL_API bool operator==(const CAnsiString& a, const char* b);

  private:
    void take(char* text);
    void append(const char* s, std::size_t added);

    /// Ends with a zero; what it knows of itself stands in front of it. Null and a text of no
    /// characters are the same thing.
    char* m_text = nullptr;
};
