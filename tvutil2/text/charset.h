// Text of a code page as a stream of bytes: what a terminal receives, a byte at a time, and sends.
//
// 51932 (EUC-JP) is rewritten to and from 932 (Shift-JIS) by arithmetic, 65001 (UTF-8) is coded
// here without testing anything, and every other page goes by its table. A page is named by its
// number: 0 is the ANSI code page, 0xFFFFFFFF in SetCodepage the default of CCodePage::GetDefault.
//
// Encoders keep nothing between calls and may be shared by threads as long as none sets the page. A
// decoder holds the beginning of a character: an object serves one stream on one thread.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

class CBuffer;
namespace tvutil2::codepage {
class PageTable;
}

/// What has a code page.
class TVUTIL_API CCharSetConverter {
  public:
    /// Takes the number as it is, 0xFFFFFFFF too.
    explicit CCharSetConverter(unsigned int page = 0) : codePage(page) {}
    CCharSetConverter(const CCharSetConverter&) = default;
    CCharSetConverter& operator=(const CCharSetConverter&) = default;
    virtual ~CCharSetConverter() = default;
    /// With 0xFFFFFFFF resolved. Gives 1.
    virtual int SetCodepage(unsigned int page);
    [[nodiscard]] unsigned int GetCodePage() const { return codePage; }

  protected:
    unsigned int codePage;
};

/// Encodes UTF-8 a unit at a time: each half of a surrogate pair becomes three bytes of its own.
class TVUTIL_API CCharSetBaseEncoder : public CCharSetConverter {
  public:
    using CCharSetConverter::CCharSetConverter;

    /// The bytes of one unit into `out`, which has room for 6, and their count. What the page
    /// doesn't hold becomes its default character; 0 for a page that isn't known.
    int Encode(char16_t ch, unsigned char* out) const;
    /// Appends the bytes of a text up to its zero; null counts as empty. Non-zero when there were
    /// some.
    int Encode(const char16_t* text, CBuffer& out) const;
};

/// Encodes UTF-8 with surrogate pairs as the four bytes of their character.
class TVUTIL_API CCharSetEncoder : public CCharSetBaseEncoder {
  public:
    using CCharSetBaseEncoder::CCharSetBaseEncoder;
    using CCharSetBaseEncoder::Encode;

    /// As the base class, but for 65001: there a surrogate without its other half becomes "?", and
    /// the result is the length of the whole buffer.
    int Encode(const char16_t* text, CBuffer& out) const;
};

/// Decodes a stream that is never refused: a sequence that the page doesn't hold becomes "." and
/// takes all its bytes along, as its length is told by its first byte.
///
/// In 54936 (GB18030) the second byte has a say. A pair that begins nothing becomes "." too; when
/// its second byte could begin a character it isn't taken along and does.
class TVUTIL_API CCharSetDecoder : public CCharSetConverter {
  public:
    using CCharSetConverter::CCharSetConverter;

    /// Forgets the beginning of a character.
    int SetCodepage(unsigned int page) override;
    /// The same, and the page stays.
    void Reset() { received = 0; }
    /// Copies the bytes of the character begun to `out`, which has room for 6, and counts them.
    unsigned int GetDecodeBuf(unsigned char* out) const;

    /// Takes the next byte. 0 while a character is incomplete, and nothing is written; 1 with the
    /// code point of a complete one in `code`, and where they aren't null its bytes in `raw` (room
    /// for 6) and their count in `rawLength`. Of 51932 these are the bytes in 932.
    ///
    /// UTF-8 isn't tested: a stray byte is the character of its value, any byte continues a
    /// sequence, overlong forms and those of 5 and 6 bytes are computed modulo 2^32.
    int Decode(unsigned char byte, unsigned int& code, unsigned char* raw,
               unsigned int* rawLength) {
        if (IsWhole(byte, code, raw, rawLength)) return 1;
        return IsInside(byte) ? 0 : DecodeRest(byte, code, raw, rawLength);
    }
    /// The same with a 16-bit unit in `code`: the low half of what lies above U+FFFF in UTF-8, and
    /// "." for it in 54936.
    int Decode(unsigned char byte, char16_t& code, unsigned char* raw, unsigned int* rawLength) {
        if (IsWhole(byte, code, raw, rawLength)) return 1;
        return IsInside(byte) ? 0 : DecodeRest(byte, code, raw, rawLength);
    }

  protected:
    /// How many bytes a sequence has that begins with `byte`; 0xFFFFFFFF in 54936 until the bytes
    /// held tell.
    [[nodiscard]] unsigned int GetEncodeLength(unsigned char byte) const;

  private:
    static constexpr unsigned int kLongest = 6;

    // A terminal's bytes are mostly ASCII, which every page has as it is, and the rest mostly lies
    // inside of characters: neither costs a call.
    template <class Code>
    bool IsWhole(unsigned char byte, Code& code, unsigned char* raw,
                 unsigned int* rawLength) const {
        if (received != 0 || byte >= 0x7F) return false;
        code = byte;
        if (raw != nullptr) *raw = byte;
        if (rawLength != nullptr) *rawLength = 1;
        return true;
    }
    bool IsInside(unsigned char byte) {
        if (received == 0 || expected > kLongest || received + 1 >= expected) return false;
        sequence[received++] = byte;
        return true;
    }

    int DecodeRest(unsigned char byte, unsigned int& code, unsigned char* raw,
                   unsigned int* rawLength);
    int DecodeRest(unsigned char byte, char16_t& code, unsigned char* raw, unsigned int* rawLength);
    [[nodiscard]] unsigned int Page() const;
    bool Take(unsigned char byte);
    [[nodiscard]] char32_t Convert();
    char32_t Finish(unsigned char* raw, unsigned int* rawLength);
    [[nodiscard]] const tvutil2::codepage::PageTable* SingleBytes() const;
    template <class Code>
    int Complete(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength);

    unsigned char sequence[kLongest] = {};
    unsigned int expected = 0;  ///< length of the sequence
    unsigned int received = 0;  ///< bytes held; 0 between characters
};

/// A code point as one unit or a surrogate pair, and their count. Beyond Unicode it is the middle
/// dot.
TVUTIL_API unsigned int _ucs4_to_utf16(unsigned int code, char16_t* out);

/// Whole texts up to their zero, as WideCharToMultiByte and MultiByteToWideChar convert them with
/// flags 0; null counts as empty. Safe from any thread.
TVUTIL_API void Utf16ToUtf8(const char16_t* text, CStringA& out);
TVUTIL_API void Utf16ToAnsi(const char16_t* text, CStringA& out);
TVUTIL_API void Utf8ToUtf16(const char* text, CString& out);
