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

#include <bit>

class CBuffer;

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
        if (IsAscii(byte, code, raw, rawLength)) return 1;
        if (codePage == kUtf8) return DecodeUtf8(byte, code, raw, rawLength);
        return DecodeRest(byte, code, raw, rawLength);
    }
    /// The same with a 16-bit unit in `code`: the low half of what lies above U+FFFF in UTF-8, and
    /// "." for it in 54936.
    int Decode(unsigned char byte, char16_t& code, unsigned char* raw, unsigned int* rawLength) {
        if (IsAscii(byte, code, raw, rawLength)) return 1;
        if (codePage == kUtf8) return DecodeUtf8(byte, code, raw, rawLength);
        return DecodeRest(byte, code, raw, rawLength);
    }

  protected:
    /// How many bytes a sequence has that begins with `byte`; 0xFFFFFFFF in 54936 until the bytes
    /// held tell.
    [[nodiscard]] unsigned int GetEncodeLength(unsigned char byte) const;

  private:
    static constexpr unsigned int kLongest = 6;

    static constexpr unsigned int kUtf8 = 65001;

    // A terminal's bytes are mostly ASCII, which every page has as it is, and hosts mostly send
    // UTF-8: neither costs a call.
    template <class Code>
    bool IsAscii(unsigned char byte, Code& code, unsigned char* raw,
                 unsigned int* rawLength) const {
        if (received != 0 || byte >= 0x7F) return false;
        code = byte;
        if (raw != nullptr) *raw = byte;
        if (rawLength != nullptr) *rawLength = 1;
        return true;
    }
    template <class Code>
    int DecodeUtf8(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength) {
        auto held = received;
        const auto length = held == 0 ? Utf8Length(byte) : expected;
        sequence[held++] = byte;
        if (held < length) {
            expected = length;
            received = held;
            return 0;
        }
        code = static_cast<Code>(Utf8Sum(length));
        if (raw != nullptr) {
            for (unsigned int i = 0; i < length; ++i) raw[i] = sequence[i];
        }
        if (rawLength != nullptr) *rawLength = length;
        received = 0;
        return 1;
    }
    // The leading one bits tell; a byte that continues a sequence and 0xFE, 0xFF stand alone.
    static unsigned int Utf8Length(unsigned char first) {
        const auto ones = static_cast<unsigned int>(std::countl_one(first));
        return ones >= 2 && ones <= kLongest ? ones : 1;
    }
    // The sum of a sequence, less the marker bits of its bytes, modulo 2^32.
    [[nodiscard]] unsigned int Utf8Sum(unsigned int length) const {
        constexpr unsigned int kMarkers[] = {0,         0,          0x3080,    0xE2080,
                                             0x3C82080, 0xFA082080, 0x82082080};
        unsigned int sum = sequence[0];
        for (unsigned int i = 1; i < length; ++i) sum = (sum << 6U) + sequence[i];
        return sum - kMarkers[length];
    }

    int DecodeRest(unsigned char byte, unsigned int& code, unsigned char* raw,
                   unsigned int* rawLength);
    int DecodeRest(unsigned char byte, char16_t& code, unsigned char* raw, unsigned int* rawLength);
    [[nodiscard]] unsigned int Page() const;
    bool Take(unsigned char byte);
    [[nodiscard]] char32_t Convert();
    char32_t Finish(unsigned char* raw, unsigned int* rawLength);
    bool IsLookedUp(unsigned char byte, char16_t& unit) const;
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
