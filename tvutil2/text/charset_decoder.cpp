#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/euc_jp.h"

#include <algorithm>
#include <iterator>

using tvutil2::kEucJp;
using tvutil2::kUnsettled;
using tvutil2::codepage::FourByteArea;
using tvutil2::codepage::PageTable;

namespace {

constexpr char32_t kBad = U'.';

bool is_between(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

bool is_gb18030_pair(unsigned char first, unsigned char second) {
    return is_between(first, 0x81, 0xFE) && is_between(second, 0x40, 0xFE) && second != 0x7F;
}

// Of a sequence that doesn't begin with ASCII.
unsigned int gb18030_length(const unsigned char* held, unsigned int count, unsigned char first) {
    if (count < 2) return kUnsettled;
    const auto second = held[1];
    if (FourByteArea::is_begun_by(first, second)) return 4;
    if (is_gb18030_pair(first, second)) return 2;
    // A bad pair: what could begin a character is left to do so.
    return is_between(second, 0x81, 0xFE) ? 1 : 2;
}

char32_t from_table(const PageTable& page, const unsigned char* bytes, unsigned int length) {
    if (length == 4 && page.four_bytes() != nullptr) {
        const auto number = FourByteArea::number_of(reinterpret_cast<const char*>(bytes));
        const auto code = page.four_bytes()->character_of(number);
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
    if (byte < 0x80) return 1;
    switch (Page()) {
        case CP_UTF8:
            return Utf8Length(byte);
        case tvutil2::kGb18030:
            return gb18030_length(sequence, received, byte);
        default:
            return tvutil2::sequence_length(codePage, byte);
    }
}

// Whether a character is complete with this byte. No more than `expected` bytes are ever held,
// except for the second one of a bad pair.
bool CCharSetDecoder::Take(unsigned char byte) {
    if (received == 0) expected = GetEncodeLength(byte);
    sequence[received++] = byte;
    if (expected == kUnsettled) expected = GetEncodeLength(sequence[0]);
    return received >= expected;
}

char32_t CCharSetDecoder::Convert() {
    if (codePage == kEucJp) expected = tvutil2::to_shift_jis(sequence);
    if (expected == 1 && sequence[0] < 0x80) return sequence[0];
    const auto* const units = PageTable::of(codePage == kEucJp ? 932 : Page());
    return units == nullptr ? kBad : from_table(*units, sequence, expected);
}

char32_t CCharSetDecoder::Finish(unsigned char* raw, unsigned int* rawLength) {
    const unsigned char left_over = received > expected ? sequence[1] : 0;
    const auto character = Convert();
    if (raw != nullptr) std::copy_n(sequence, expected, raw);
    if (rawLength != nullptr) *rawLength = expected;
    received = 0;
    std::fill(std::begin(sequence), std::end(sequence), static_cast<unsigned char>(0));
    if (left_over != 0) Take(left_over);
    return character;
}

// What a look-up doesn't tell, the first look at a page, and UTF-8 as the ANSI code page.
CCharSetDecoder::Result CCharSetDecoder::Complete(unsigned char byte, bool isWide,
                                                  unsigned char* raw, unsigned int* rawLength) {
    const bool is_ascii = received == 0 && byte < 0x80;
    if (!is_ascii && Page() == CP_UTF8) {
        Result result{0, 0};
        result.isComplete = DecodeUtf8(byte, result.code, raw, rawLength);
        return result;
    }
    if (!is_ascii && table->page != codePage) table = tvutil2::DecodeTable::of(codePage);
    if (!Take(byte)) return {0, 0};
    const auto character = Finish(raw, rawLength);
    return {1, isWide || character <= 0xFFFF ? character : kBad};
}
