#include "tvutil2/platform/codepage/codepage.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/ansi_page.h"
#include "tvutil2/platform/codepage/composition.h"
#include "tvutil2/platform/codepage/table_coding.h"
#include "tvutil2/platform/codepage/utf8_coding.h"

#include <climits>
#include <optional>
#include <string>

namespace {

using namespace tvutil2;
using namespace tvutil2::codepage;

// A page that can be converted: UTF-8 is the one without a table.
struct Page {
    const PageTable* table;
    /// CP_ACP: takes whatever flags and defaults a caller has for ANSI pages.
    bool is_ansi;
    [[nodiscard]] bool is_plain_utf8() const { return table == nullptr && !is_ansi; }
    /// A form of Unicode, by its number: nothing to compose, and its own flags.
    [[nodiscard]] bool is_unicode() const {
        return !is_ansi && (table == nullptr || table->four_bytes() != nullptr);
    }
    [[nodiscard]] bool holds(char32_t c) const {
        return table == nullptr ||
               (c < 0x10000 && table->bytes_of(static_cast<char16_t>(c)) != PageTable::kNoBytes);
    }
};

std::optional<Page> find_page(UINT number) {
    const bool is_ansi = number == CP_ACP;
    if (is_ansi) number = GetACP();
    if (number == CP_UTF8) return Page{nullptr, is_ansi};
    if (const auto* const table = PageTable::of(number)) return Page{table, is_ansi};
    SetLastError(ERROR_INVALID_PARAMETER);
    return std::nullopt;
}

// The arguments that both directions share.
template <class From, class To>
bool check_arguments(const From* text, int size, const To* out, int room) {
    const bool is_same = static_cast<const void*>(text) == static_cast<const void*>(out);
    if (text == nullptr || size == 0 || room < 0 || (room > 0 && (out == nullptr || is_same))) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    return true;
}

template <class Unit>
std::basic_string_view<Unit> whole_text(const Unit* text, int size) {
    return {text,
            size < 0 ? std::char_traits<Unit>::length(text) + 1 : static_cast<std::size_t>(size)};
}

// Runs a conversion into the caller's room, or into a counter when there is none, and gives the
// platform's result.
template <class Unit, class Convert>
int run(Unit* out, int room, const Convert& convert) {
    auto outcome = Outcome::done;
    std::size_t count = 0;
    if (room == 0) {
        Counter<Unit> counter;
        outcome = convert(counter);
        count = counter.count();
    } else {
        Writer<Unit> writer(out, static_cast<std::size_t>(room));
        outcome = convert(writer);
        count = writer.count();
    }
    if (outcome == Outcome::no_room) return fail_with(ERROR_INSUFFICIENT_BUFFER);
    if (outcome == Outcome::invalid) return fail_with(ERROR_NO_UNICODE_TRANSLATION);
    if (count > INT_MAX) return fail_with(ERROR_INVALID_PARAMETER);
    return static_cast<int>(count);
}

DefaultBytes default_bytes(const Page& page, const char* text) {
    DefaultBytes result;
    if (text == nullptr) return result;
    result.bytes[0] = text[0];
    if (page.table != nullptr && page.table->is_lead(static_cast<BYTE>(text[0])) && text[1] != 0) {
        result.bytes[1] = text[1];
        result.size = 2;
    }
    return result;
}

// What stands for a surrogate without its other half in UTF-8.
struct LoneSurrogate {
    DWORD flags;
    bool has_default;
    DefaultBytes& default_char;

    template <class Sink>
    Outcome operator()(Sink& out) const {
        if ((flags & WC_ERR_INVALID_CHARS) != 0) return Outcome::invalid;
        if (has_default) return default_char.put(out);
        default_char.used = true;
        return put_utf8(kReplacement, out) ? Outcome::done : Outcome::no_room;
    }
};

}  // namespace

UINT GetACP() {
    static const UINT page = installed_ansi_page();
    return page;
}

BOOL IsDBCSLeadByteEx(UINT page, BYTE byte) {
    const auto found = find_page(page);
    const auto* const table = found ? found->table : nullptr;
    // Pages with longer sequences have no lead bytes in this sense.
    const bool is_double = table != nullptr && table->four_bytes() == nullptr;
    return is_double && table->is_lead(byte) ? TRUE : FALSE;
}

int MultiByteToWideChar(UINT page, DWORD flags, const char* bytes, int size, char16_t* out,
                        int room) {
    if (!check_arguments(bytes, size, out, room)) return 0;
    const auto found = find_page(page);
    if (!found) return 0;
    const DWORD allowed =
        found->is_unicode() ? MB_ERR_INVALID_CHARS : MB_ERR_INVALID_CHARS | MB_PRECOMPOSED;
    if ((flags & ~allowed) != 0) return fail_with(ERROR_INVALID_FLAGS);

    const auto text = whole_text(bytes, size);
    const bool is_strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    return run(out, room, [&](auto& sink) {
        return found->table == nullptr ? from_utf8(text, is_strict, sink)
                                       : from_table(*found->table, text, is_strict, sink);
    });
}

int WideCharToMultiByte(UINT page, DWORD flags, const char16_t* text, int size, char* out, int room,
                        const char* default_char, BOOL* used_default) {
    if (!check_arguments(text, size, out, room)) return 0;
    const auto found = find_page(page);
    if (!found) return 0;
    const bool is_plain = found->is_plain_utf8();
    if (is_plain && (default_char != nullptr || used_default != nullptr)) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    const DWORD allowed =
        found->is_unicode() ? WC_ERR_INVALID_CHARS : WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS;
    if ((flags & ~allowed) != 0) return fail_with(ERROR_INVALID_FLAGS);

    auto units = whole_text(text, size);
    std::u16string composed_text;
    if ((flags & WC_COMPOSITECHECK) != 0 && has_mark(units)) {
        composed_text = composed(units, [&found](char32_t c) { return found->holds(c); });
        units = composed_text;
    }
    auto unmapped = default_bytes(*found, default_char);
    unmapped.is_refused = (flags & WC_ERR_INVALID_CHARS) != 0;
    unmapped.is_untold = used_default == nullptr;
    const int result = run(out, room, [&](auto& sink) {
        return found->table == nullptr
                   ? to_utf8(units, sink, LoneSurrogate{flags, default_char != nullptr, unmapped})
                   : to_table(*found->table, units, unmapped, sink);
    });
    if (used_default != nullptr) *used_default = unmapped.used ? TRUE : FALSE;
    return result;
}
