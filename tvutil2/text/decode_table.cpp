#include "tvutil2/text/decode_table.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/text/euc_jp.h"

#include <map>
#include <mutex>
#include <vector>

using tvutil2::codepage::PageTable;

namespace tvutil2 {
namespace {

static_assert(DecodeTable::kNoUnit == PageTable::kNoUnit);

constexpr auto kNoUnits = [] {
    std::array<char16_t, 256> units{};
    units.fill(DecodeTable::kNoUnit);
    return units;
}();

// By way of Shift-JIS, and its arithmetic takes any second byte.
char16_t euc_jp_unit(const PageTable& shift_jis, unsigned int lead, unsigned int trail) {
    unsigned char bytes[] = {static_cast<unsigned char>(lead), static_cast<unsigned char>(trail)};
    if (to_shift_jis(bytes) == 1) return shift_jis.unit_of(bytes[0]);
    return shift_jis.is_lead(bytes[0]) ? shift_jis.unit_of(bytes[0], bytes[1])
                                       : DecodeTable::kNoUnit;
}

// A table, and the units of a page that has none by itself.
struct Kept {
    DecodeTable table{};
    std::vector<char16_t> units;
};

void add_euc_jp(const PageTable& shift_jis, Kept& kept) {
    auto& units = kept.units;
    units.assign(kNoUnits.begin(), kNoUnits.end());
    for (unsigned char byte = 0; byte < 0x7F; ++byte) units[byte] = byte;
    for (unsigned int lead = 0x80; lead < 0x100; ++lead) {
        if (sequence_length(kEucJp, static_cast<unsigned char>(lead)) != 2) continue;
        kept.table.row[lead] = static_cast<unsigned char>(units.size() / 256);
        for (unsigned int trail = 0; trail < 0x100; ++trail) {
            units.push_back(euc_jp_unit(shift_jis, lead, trail));
        }
    }
    kept.table.units = units.data();
}

// The page's own units; of its rows those that the decoder's rule for the length has too. A byte
// that is a character in the page and begins a pair by the rule is none here: then the units are a
// copy.
void add_page(const PageTable& page, Kept& kept) {
    auto& table = kept.table;
    table.units = page.rows();
    for (unsigned int lead = 0x80; lead < 0x100; ++lead) {
        const auto byte = static_cast<unsigned char>(lead);
        if (page.number() != kGb18030 && sequence_length(table.page, byte) != 2) continue;
        table.row[lead] = page.row_numbers()[lead];
        if (table.row[lead] != 0 || table.units[lead] == DecodeTable::kNoUnit) continue;
        if (kept.units.empty()) kept.units.assign(page.rows(), page.rows() + page.row_units());
        kept.units[lead] = DecodeTable::kNoUnit;
        table.units = kept.units.data();
    }
}

void fill(Kept& kept, unsigned int number, const PageTable& page) {
    auto& table = kept.table;
    table.page = number;
    table.begun = page.number() == kGb18030 ? kUnsettled : 2;
    table.is_rewritten = number == kEucJp;
    const auto* const shift_jis = table.is_rewritten ? PageTable::of(932) : nullptr;
    if (shift_jis != nullptr) {
        add_euc_jp(*shift_jis, kept);
    } else {
        add_page(page, kept);
    }
}

}  // namespace

constinit const DecodeTable DecodeTable::none = {0xFFFFFFFF, 2, false, {}, kNoUnits.data()};

// Never destroyed: other modules' static objects may decode after ours are gone.
const DecodeTable* DecodeTable::of(unsigned int page) {
    static std::mutex making;
    static const tvutil2::ForkLock is_fork_safe(making, tvutil2::ForkRank::store);
    static auto& tables = *new std::map<unsigned int, Kept>();
    const auto* const source = PageTable::of(page == CP_ACP ? GetACP() : page);
    if (source == nullptr) return &none;
    const std::lock_guard guard(making);
    auto& kept = tables[page];
    if (kept.table.units == nullptr) fill(kept, page, *source);
    return &kept.table;
}

unsigned int sequence_length(unsigned int page, unsigned char first) {
    const auto is_between = [first](unsigned char low, unsigned char high) {
        return first >= low && first <= high;
    };
    switch (page) {
        case kEucJp:
            return first == 0x8F ? 3 : first == 0x8E || is_between(0xA1, 0xFE) ? 2 : 1;
        case 932:
            return is_between(0x81, 0x9F) || is_between(0xE0, 0xEF) ? 2 : 1;
        case 949:
            return is_between(0xA1, 0xFE) ? 2 : 1;
        case 950:
        case 20936:
            return is_between(0x81, 0xFE) ? 2 : 1;
        default: {
            const auto* const table = PageTable::of(page == CP_ACP ? GetACP() : page);
            return table != nullptr && table->is_lead(first) ? 2 : 1;
        }
    }
}

}  // namespace tvutil2
