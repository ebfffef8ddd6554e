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
#include "tvutil2/text/decode_table.h"

#include <bit>

class CBuffer;

/// What has a code page.
class TVUTIL_API CCharSetConverter {
  public:
    /// Takes the number as it is, 0xFFFFFFFF too.
    CCharSetConverter(unsigned int page = 0) : codePage(page) {}
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
        return Step(byte, code, raw, rawLength);
    }
    /// The same with a 16-bit unit in `code`: the low half of what lies above U+FFFF in UTF-8, and
    /// "." for it in 54936.
    int Decode(unsigned char byte, char16_t& code, unsigned char* raw, unsigned int* rawLength) {
        return Step(byte, code, raw, rawLength);
    }

  protected:
    /// How many bytes a sequence has that begins with `byte`; 0xFFFFFFFF in 54936 until the bytes
    /// held tell.
    [[nodiscard]] unsigned int GetEncodeLength(unsigned char byte) const;

  private:
    static constexpr unsigned int kLongest = 6;
    static constexpr unsigned int kUtf8 = 65001;

    /// In one register, so that a caller's `code` can stay in another.
    struct Result {
        int isComplete;
        unsigned int code;
    };

    // None of what hosts mostly send costs a call: pages with a table, ASCII, UTF-8.
    template <class Code>
    int Step(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength) {
        // ASCII but for the last one, which EUC-JP rewrites: whatever the page, nothing is asked.
        if (received == 0 && byte < 0x7F) return Put(byte, 1, &byte, code, raw, rawLength);
        if (codePage == kUtf8) return DecodeUtf8(byte, code, raw, rawLength);
        if (table->page == codePage) return DecodeByTable(byte, code, raw, rawLength);
        return DecodeByRule(byte, code, raw, rawLength);
    }
    template <class Code>
    static int Put(unsigned int character, unsigned int length, const unsigned char* bytes,
                   Code& code, unsigned char* raw, unsigned int* rawLength) {
        code = static_cast<Code>(character);
        if (raw != nullptr) {
            for (unsigned int i = 0; i < length; ++i) raw[i] = bytes[i];
        }
        if (rawLength != nullptr) *rawLength = length;
        return 1;
    }
    template <class Code>
    int DecodeByTable(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength) {
        using tvutil2::DecodeTable;
        if (received == 0) {
            const auto unit = table->units[byte];
            if (unit != DecodeTable::kNoUnit) return Put(unit, 1, &byte, code, raw, rawLength);
            if (table->row[byte] != 0) {
                sequence[0] = byte;
                expected = table->begun;
                received = 1;
                return 0;
            }
        } else if (received == 1) {
            const auto row = table->row[sequence[0]] * 256U;
            const auto unit = table->units[row + byte];
            const bool is_told = !table->is_rewritten || (raw == nullptr && rawLength == nullptr);
            if (row != 0 && unit != DecodeTable::kNoUnit && is_told) {
                sequence[1] = byte;
                received = 0;
                return Put(unit, 2, sequence, code, raw, rawLength);
            }
        }
        return DecodeByRule(byte, code, raw, rawLength);
    }
    // The sum is kept as it grows.
    template <class Code>
    int DecodeUtf8(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength) {
        if (received == 0) {
            expected = Utf8Length(byte);
            if (expected == 1) return Put(byte, 1, &byte, code, raw, rawLength);
            sequence[0] = byte;
            sum = byte;
            received = 1;
            return 0;
        }
        sequence[received] = byte;
        sum = (sum << 6U) + byte;
        if (++received < expected) return 0;
        received = 0;
        return Put(Utf8Sum(expected), expected, sequence, code, raw, rawLength);
    }
    template <class Code>
    int DecodeByRule(unsigned char byte, Code& code, unsigned char* raw, unsigned int* rawLength) {
        const auto result = Complete(byte, sizeof(Code) > 2, raw, rawLength);
        if (result.isComplete != 0) code = static_cast<Code>(result.code);
        return result.isComplete;
    }
    // The leading one bits tell; a byte that continues a sequence and 0xFE, 0xFF stand alone.
    static unsigned int Utf8Length(unsigned char first) {
        const auto ones = static_cast<unsigned int>(std::countl_one(first));
        return ones >= 2 && ones <= kLongest ? ones : 1;
    }
    // The sum without the marker bits of its bytes, modulo 2^32.
    [[nodiscard]] unsigned int Utf8Sum(unsigned int length) const {
        constexpr unsigned int kMarkers[] = {0,         0,          0x3080,    0xE2080,
                                             0x3C82080, 0xFA082080, 0x82082080};
        return sum - kMarkers[length];
    }

    [[nodiscard]] unsigned int Page() const;
    bool Take(unsigned char byte);
    [[nodiscard]] char32_t Convert();
    char32_t Finish(unsigned char* raw, unsigned int* rawLength);
    Result Complete(unsigned char byte, bool isWide, unsigned char* raw, unsigned int* rawLength);

    unsigned char sequence[kLongest] = {};
    unsigned int expected = 0;  ///< length of the sequence
    unsigned int received = 0;  ///< bytes held; 0 between characters
    unsigned int sum = 0;       ///< what the bytes held come to in UTF-8
    const tvutil2::DecodeTable* table = &tvutil2::DecodeTable::none;
};

/// A code point as one unit or a surrogate pair, and their count. Beyond Unicode it is the middle
/// dot.
TVUTIL_API unsigned int _ucs4_to_utf16(unsigned int code, char16_t* out);

/// Whole texts up to their zero, as WideCharToMultiByte and MultiByteToWideChar convert them with
/// flags 0; null counts as empty. Safe from any thread.
TVUTIL_API void Utf16ToUtf8(const char16_t* text, CStringA& out);
TVUTIL_API void Utf16ToAnsi(const char16_t* text, CStringA& out);
TVUTIL_API void Utf8ToUtf16(const char* text, CString& out);
