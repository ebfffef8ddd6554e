#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/euc_jp.h"

#include <algorithm>
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

bool is_gb18030_pair(unsigned char first, unsigned char second) {
    return is_between(first, 0x81, 0xFE) && is_between(second, 0x40, 0xFE) && second != 0x7F;
}

unsigned int gb18030_length(const unsigned char* held, unsigned int count, unsigned char first) {
    if (first <= 0x7F) return 1;
    if (count < 2) return kUnsettled;
    const auto second = held[1];
    if (FourByteArea::is_begun_by(first, second)) return 4;
    if (is_gb18030_pair(first, second)) return 2;
    // A bad pair: what could begin a character is left to do so.
    return is_between(second, 0x81, 0xFE) ? 1 : 2;
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
            return Utf8Length(byte);
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
    if (page == CP_UTF8) return Utf8Sum(expected);
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
    std::fill(std::begin(sequence), std::end(sequence), static_cast<unsigned char>(0));
    if (left_over != 0) Take(left_over);
    return character;
}

// Most of what the general way below would do, in a few steps: a byte of a page of single bytes,
// and the second byte of a pair in a page whose pairs stand in its table as they come.
inline bool CCharSetDecoder::IsLookedUp(unsigned char byte, char16_t& unit) const {
    if (codePage == kEucJp) return false;
    const auto* const table = PageTable::of(Page());
    if (table == nullptr) return false;
    if (received == 0) {
        if (table->has_leads()) return false;
        unit = table->unit_of(byte);
        return true;
    }
    const bool is_pair = expected == 2 || (expected == kUnsettled && codePage == kGb18030 &&
                                           is_gb18030_pair(sequence[0], byte));
    if (received != 1 || !is_pair) return false;
    unit = table->is_lead(sequence[0]) ? table->unit_of(sequence[0], byte) : PageTable::kNoUnit;
    return true;
}

template <class Code>
inline int CCharSetDecoder::Complete(unsigned char byte, Code& code, unsigned char* raw,
                                     unsigned int* rawLength) {
    auto unit = PageTable::kNoUnit;
    if (IsLookedUp(byte, unit)) {
        code = static_cast<Code>(unit == PageTable::kNoUnit ? kBad : unit);
        if (raw != nullptr) *std::copy_n(sequence, received, raw) = byte;
        if (rawLength != nullptr) *rawLength = received + 1;
        sequence[0] = 0;
        received = 0;
        return 1;
    }
    if (!Take(byte)) return 0;
    const auto character = Finish(raw, rawLength);
    const bool has_room = sizeof(Code) > 2 || character <= 0xFFFF || Page() == CP_UTF8;
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
