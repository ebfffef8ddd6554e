#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/euc_jp.h"

#include <algorithm>
#include <bit>
#include <iterator>

using tvutil2::codepage::FourByteArea;
using tvutil2::codepage::PageTable;

namespace {

constexpr char32_t kBad = U'.';
constexpr unsigned int kUnsettled = 0xFFFFFFFF;
constexpr unsigned int kEucJp = 51932;
constexpr unsigned int kGb18030 = 54936;

bool is_between(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

// The leading one bits tell; a byte that continues a sequence and 0xFE, 0xFF stand alone.
unsigned int utf8_length(unsigned char first) {
    const auto ones = static_cast<unsigned int>(std::countl_one(first));
    return ones >= 2 && ones <= 6 ? ones : 1;
}

unsigned int gb18030_length(const unsigned char* held, unsigned int count, unsigned char first) {
    if (first <= 0x7F) return 1;
    if (count < 2) return kUnsettled;
    const auto second = held[1];
    if (FourByteArea::is_begun_by(first, second)) return 4;
    if (is_between(first, 0x81, 0xFE) && second >= 0x40 && second != 0x7F && second != 0xFF) {
        return 2;
    }
    // A bad pair: what could begin a character is left to do so.
    return is_between(second, 0x81, 0xFE) ? 1 : 2;
}

// The sum of a sequence of UTF-8, less the marker bits of its bytes, modulo 2^32.
char32_t utf8_sum(const unsigned char* bytes, unsigned int length) {
    constexpr char32_t kMarkers[] = {0, 0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};
    char32_t sum = bytes[0];
    for (unsigned int i = 1; i < length; ++i) sum = (sum << 6U) + bytes[i];
    return sum - kMarkers[length];
}

char32_t from_table(const PageTable& page, const unsigned char* bytes, unsigned int length) {
    if (length == 4 && page.four_bytes() != nullptr) {
        const auto code = page.four_bytes()->character_of(bytes[0], bytes[1], bytes[2], bytes[3]);
        return code == FourByteArea::kNoCharacter ? kBad : code;
    }
    auto unit = PageTable::kNoUnit;
    if (length == 1) unit = page.unit_of(bytes[0]);
    if (length == 2 && page.is_lead(bytes[0])) unit = page.unit_of(bytes[0], bytes[1]);
    return unit == PageTable::kNoUnit ? kBad : unit;
}

}  // namespace

int CCharSetDecoder::SetCodepage(unsigned int page) {
    received = 0;
    return CCharSetConverter::SetCodepage(page);
}

unsigned int CCharSetDecoder::GetDecodeBuf(unsigned char* out) const {
    std::copy_n(sequence, received, out);
    return received;
}

unsigned int CCharSetDecoder::Page() const {
    return codePage == CP_ACP ? GetACP() : codePage;
}

unsigned int CCharSetDecoder::GetEncodeLength(unsigned char byte) const {
    switch (const auto page = Page()) {
        case CP_UTF8:
            return utf8_length(byte);
        case kGb18030:
            return gb18030_length(sequence, received, byte);
        case kEucJp:
            return byte == 0x8F ? 3 : byte == 0x8E || is_between(byte, 0xA1, 0xFE) ? 2 : 1;
        case 932:
            return is_between(byte, 0x81, 0x9F) || is_between(byte, 0xE0, 0xEF) ? 2 : 1;
        case 949:
            return is_between(byte, 0xA1, 0xFE) ? 2 : 1;
        case 950:
        case 20936:
            return is_between(byte, 0x81, 0xFE) ? 2 : 1;
        default: {
            const auto* const table = PageTable::of(page);
            return table != nullptr && table->is_lead(byte) ? 2 : 1;
        }
    }
}

// Whether a character is complete with this byte. No more than `expected` bytes are ever held,
// except for the second one of a bad pair.
inline bool CCharSetDecoder::Take(unsigned char byte) {
    if (received == 0) expected = GetEncodeLength(byte);
    sequence[received++] = byte;
    if (expected == kUnsettled) expected = GetEncodeLength(sequence[0]);
    return received >= expected;
}

inline char32_t CCharSetDecoder::Convert() {
    auto page = Page();
    if (page == CP_UTF8) return utf8_sum(sequence, expected);
    if (page == kEucJp) {
        expected = tvutil2::to_shift_jis(sequence);
        page = 932;
    }
    if (expected == 1 && sequence[0] < 0x80) return sequence[0];
    const auto* const table = PageTable::of(page);
    return table == nullptr ? kBad : from_table(*table, sequence, expected);
}

inline char32_t CCharSetDecoder::Finish(unsigned char* raw, unsigned int* rawLength) {
    const unsigned char left_over = received > expected ? sequence[1] : 0;
    const auto character = Convert();
    if (raw != nullptr) std::copy_n(sequence, expected, raw);
    if (rawLength != nullptr) *rawLength = expected;
    received = 0;
    if (codePage == CP_UTF8) return character;
    std::fill(std::begin(sequence), std::end(sequence), static_cast<unsigned char>(0));
    if (left_over != 0) Take(left_over);
    return character;
}

// A page of single bytes holds nothing between calls; its table, and null for any other page.
inline const PageTable* CCharSetDecoder::SingleBytes() const {
    if (codePage == CP_UTF8 || received != 0) return nullptr;
    const auto* const table = PageTable::of(Page());
    return table == nullptr || table->has_leads() ? nullptr : table;
}

template <class Code>
inline int CCharSetDecoder::Complete(unsigned char byte, Code& code, unsigned char* raw,
                                     unsigned int* rawLength) {
    if (const auto* const table = SingleBytes(); table != nullptr) {
        const auto unit = table->unit_of(byte);
        code = static_cast<Code>(unit == PageTable::kNoUnit ? kBad : unit);
        if (raw != nullptr) *raw = byte;
        if (rawLength != nullptr) *rawLength = 1;
        return 1;
    }
    if (!Take(byte)) return 0;
    const auto character = Finish(raw, rawLength);
    const bool has_room = sizeof(Code) > 2 || character <= 0xFFFF || codePage == CP_UTF8;
    code = static_cast<Code>(has_room ? character : kBad);
    return 1;
}

int CCharSetDecoder::DecodeRest(unsigned char byte, unsigned int& code, unsigned char* raw,
                                unsigned int* rawLength) {
    return Complete(byte, code, raw, rawLength);
}

int CCharSetDecoder::DecodeRest(unsigned char byte, char16_t& code, unsigned char* raw,
                                unsigned int* rawLength) {
    return Complete(byte, code, raw, rawLength);
}
