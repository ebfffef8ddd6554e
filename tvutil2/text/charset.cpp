#include "tvutil2/text/charset.h"

#include "tvutil2/frame/buffer.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/composition.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/codepage/pair_bytes.h"
#include "tvutil2/platform/codepage/utf8_coding.h"
#include "tvutil2/text/code_page.h"
#include "tvutil2/text/euc_jp.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <string_view>

namespace cp = tvutil2::codepage;

namespace {

using tvutil2::kEucJp;
using tvutil2::kGb18030;
constexpr unsigned int kShiftJis = 932;

// WC_COMPOSITECHECK, unless there is nothing that it could change: looking once is less than twice.
DWORD encode_flags(unsigned int page, std::u16string_view text) {
    return page == kGb18030 || !cp::has_mark(text) ? 0 : WC_COMPOSITECHECK;
}

std::u16string_view whole(const char16_t* text) {
    return {text, static_cast<std::size_t>(lstrlenW(text))};
}

unsigned char* space(CBuffer& out, std::size_t size) {
    if (size > std::numeric_limits<unsigned int>::max()) throw std::bad_alloc();
    return out.AppendSpace(static_cast<unsigned int>(size));
}

// The size asked first, so that the buffer grows once.
template <class Encode>
void append_sized(CBuffer& out, Encode encode) {
    cp::Counter<char> counter;
    encode(counter);
    if (counter.count() == 0) return;
    auto* const bytes = reinterpret_cast<char*>(space(out, counter.count()));
    cp::Writer<char> writer(bytes, counter.count());
    encode(writer);
}

template <class Sink>
cp::Outcome put_question_mark(Sink& out) {
    return out.put('?') ? cp::Outcome::done : cp::Outcome::no_room;
}

// Surrogates stand in runs of their own here, so that none of them meets its other half.
template <class Sink>
void put_halves(std::u16string_view text, Sink& out) {
    const auto is_half = [](char16_t unit) { return cp::is_surrogate(unit); };
    while (!text.empty()) {
        const auto* const half = std::find_if(text.begin(), text.end(), is_half);
        const auto plain = static_cast<std::size_t>(half - text.begin());
        cp::to_utf8(text.substr(0, plain), out, put_question_mark<Sink>);
        text.remove_prefix(plain);
        for (; !text.empty() && is_half(text[0]); text.remove_prefix(1)) {
            cp::put_utf8(text[0], out);
        }
    }
}

// The bytes of a unit in EUC-JP into `out`, which has room for two.
unsigned int put_euc_jp(const cp::PageTable& shift_jis, char16_t unit, unsigned char* out) {
    out[0] = static_cast<unsigned char>(unit);
    if (unit < 0x80) return 1;
    const auto bytes = shift_jis.bytes_of(unit);
    out[0] = bytes == cp::PageTable::kNoBytes ? '?' : static_cast<unsigned char>(bytes);
    out[1] = static_cast<unsigned char>(bytes >> 8U);
    return tvutil2::to_euc_jp(out, bytes > 0xFF ? 2 : 1);
}

// What each unit becomes in EUC-JP, as in the table of a page; every unit has its bytes.
class EucJpBytes {
  public:
    static const EucJpBytes& get() {
        static const EucJpBytes bytes;
        return bytes;
    }
    [[nodiscard]] std::uint16_t of(char16_t unit) const { return m_bytes[unit]; }
    [[nodiscard]] const std::uint16_t* table() const { return m_bytes.data(); }

  private:
    EucJpBytes() {
        const auto* const shift_jis = cp::PageTable::of(kShiftJis);
        for (unsigned int unit = 0; unit < 0x10000; ++unit) {
            unsigned char bytes[2] = {'?'};
            const auto size = shift_jis == nullptr
                                  ? 1
                                  : put_euc_jp(*shift_jis, static_cast<char16_t>(unit), bytes);
            m_bytes[unit] =
                static_cast<std::uint16_t>(size == 1 ? bytes[0] : bytes[1] << 8U | bytes[0]);
        }
    }

    std::array<std::uint16_t, 0x10001> m_bytes;
};

void append_euc_jp(std::u16string_view text, CBuffer& out) {
    const auto& table = EucJpBytes::get();
    const auto most = text.size() * 2;
    auto* const bytes = space(out, most);
    const auto front = cp::pair_bytes_kernels().back().put(table.table(), text,
                                                           reinterpret_cast<char*>(bytes), most);
    auto size = front.made;
    for (const auto unit : text.substr(front.taken)) {
        const auto both = table.of(unit);
        bytes[size++] = static_cast<unsigned char>(both);
        if (both > 0xFF) bytes[size++] = static_cast<unsigned char>(both >> 8U);
    }
    out.ConsumeEnd(static_cast<unsigned int>(most - size));
}

int append_page(unsigned int page, std::u16string_view text, CBuffer& out) {
    const auto flags = encode_flags(page, text);
    const auto room = cp::byte_room(page, text.size());
    if (room == 0) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    auto* const bytes = reinterpret_cast<char*>(space(out, room));
    const auto size = cp::put_bytes(page, flags, text, std::span(bytes, room)).value_or(0);
    out.ConsumeEnd(static_cast<unsigned int>(room - size));
    return static_cast<int>(size);
}

// The size asked first, so that the string has no more room than it needs; nothing where it can't
// be converted. `convert` has the platform's results.
template <class String, class Convert>
void set_converted(String& out, bool is_empty, Convert convert) {
    const int size = is_empty ? 0 : convert(nullptr, 0);
    if (size <= 0) return out.Empty();
    out.ReleaseBuffer(convert(out.GetBuffer(size), size));
}

void to_bytes(UINT page, const char16_t* text, CStringA& out) {
    const auto units = whole(text);
    set_converted(out, units.empty(), [page, units](char* bytes, int room) {
        return WideCharToMultiByte(page, 0, units.data(), static_cast<int>(units.size()), bytes,
                                   room, nullptr, nullptr);
    });
}

}  // namespace

int CCharSetConverter::SetCodepage(unsigned int page) {
    codePage = page == 0xFFFFFFFF ? CCodePage::GetDefault() : page;
    return 1;
}

int CCharSetBaseEncoder::Encode(char16_t ch, unsigned char* out) const {
    if (codePage == CP_UTF8) {
        cp::Writer<char> writer(reinterpret_cast<char*>(out), 3);
        cp::put_utf8(ch, writer);
        return static_cast<int>(writer.count());
    }
    if (ch < 0x80) {
        out[0] = static_cast<unsigned char>(ch);
        return 1;
    }
    if (codePage == kEucJp) {
        const auto* const shift_jis = cp::PageTable::of(kShiftJis);
        return shift_jis == nullptr ? 0 : static_cast<int>(put_euc_jp(*shift_jis, ch, out));
    }
    return WideCharToMultiByte(codePage, 0, &ch, 1, reinterpret_cast<char*>(out), 6, nullptr,
                               nullptr);
}

int CCharSetBaseEncoder::Encode(const char16_t* text, CBuffer& out) const {
    const auto units = whole(text);
    if (units.empty()) return 0;
    if (codePage == CP_UTF8) {
        append_sized(out, [units](auto& sink) { put_halves(units, sink); });
        return 1;
    }
    if (codePage == kEucJp) {
        append_euc_jp(units, out);
        return 1;
    }
    return append_page(codePage, units, out);
}

int CCharSetEncoder::Encode(const char16_t* text, CBuffer& out) const {
    if (codePage != CP_UTF8) return CCharSetBaseEncoder::Encode(text, out);
    const auto units = whole(text);
    append_sized(out, [units](auto& sink) {
        cp::to_utf8(units, sink, put_question_mark<std::remove_reference_t<decltype(sink)>>);
    });
    return static_cast<int>(out.Len());
}

unsigned int _ucs4_to_utf16(unsigned int code, char16_t* out) {
    constexpr unsigned int kMiddleDot = 0xB7;
    cp::Writer<char16_t> writer(out, 2);
    cp::put_utf16(code > 0x10FFFF ? kMiddleDot : code, writer);
    return static_cast<unsigned int>(writer.count());
}

void Utf16ToUtf8(const char16_t* text, CStringA& out) {
    to_bytes(CP_UTF8, text, out);
}

void Utf16ToAnsi(const char16_t* text, CStringA& out) {
    to_bytes(CP_ACP, text, out);
}

void Utf8ToUtf16(const char* text, CString& out) {
    const std::string_view bytes = text == nullptr ? "" : text;
    if (bytes.size() > INT_MAX) return out.Empty();
    set_converted(out, bytes.empty(), [bytes](char16_t* units, int room) {
        return MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), units,
                                   room);
    });
}
