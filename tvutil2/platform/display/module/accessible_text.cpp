#include "tvutil2/platform/display/module/accessible_text.h"

#include "tvutil2/platform/display/module/desktop_look.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// There is one kind of object with a text.
AccessibleText (*g_text_of)(gpointer) = nullptr;
void (*g_put_text)(gpointer, std::u16string) = nullptr;

std::u32string characters_of(const std::u16string& text) {
    const auto bytes = utf8_of(text);
    glong count = 0;
    auto* const characters =
        g_utf8_to_ucs4_fast(bytes.data(), static_cast<glong>(bytes.size()), &count);
    std::u32string result(characters, characters + count);
    g_free(characters);
    return result;
}

char* utf8_copy(const std::u32string& text, std::size_t begin, std::size_t end) {
    std::string bytes;
    for (auto i = begin; i < end; ++i) {
        char one[6];
        bytes.append(one, static_cast<std::size_t>(g_unichar_to_utf8(text[i], one)));
    }
    return g_strndup(bytes.data(), bytes.size());
}

int caret_of(const AccessibleText& text) {
    const auto units = std::clamp<std::size_t>(static_cast<std::size_t>(std::max(text.caret, 0)), 0,
                                               text.text.size());
    return static_cast<int>(characters_of(text.text.substr(0, units)).size());
}

// An end of -1 is the text's.
char* get_text(AtkText* object, gint begin, gint end) {
    const auto all = characters_of(g_text_of(object).text);
    const auto size = static_cast<gint>(all.size());
    const auto last = end < 0 ? size : std::min(end, size);
    const auto first = std::clamp(begin, 0, last);
    return utf8_copy(all, static_cast<std::size_t>(first), static_cast<std::size_t>(last));
}

struct Span {
    std::size_t begin, end;
};

bool is_space(char32_t character) {
    return g_unichar_isspace(character) != FALSE;
}

// The character, word or line at an offset; sentences and paragraphs are lines here.
Span span_at(const std::u32string& all, std::size_t at, AtkTextGranularity kind) {
    Span span{at, std::min(at + 1, all.size())};
    if (kind == ATK_TEXT_GRANULARITY_CHAR) return span;
    const auto parts = [&](std::size_t i) {
        return kind == ATK_TEXT_GRANULARITY_WORD ? is_space(all[i]) : all[i] == U'\n';
    };
    while (span.begin > 0 && !parts(span.begin - 1)) --span.begin;
    span.end = at;
    while (span.end < all.size() && !parts(span.end)) ++span.end;
    return span;
}

char* get_string_at(AtkText* object, gint offset, AtkTextGranularity kind, gint* begin, gint* end) {
    const auto all = characters_of(g_text_of(object).text);
    if (offset < 0 || static_cast<std::size_t>(offset) > all.size()) return nullptr;
    const auto span = span_at(all, static_cast<std::size_t>(offset), kind);
    *begin = static_cast<gint>(span.begin);
    *end = static_cast<gint>(span.end);
    return utf8_copy(all, span.begin, span.end);
}

void tell(AtkObject* object, const char* signal, const std::u32string& text, Span span) {
    if (span.begin == span.end) return;
    auto* const bytes = utf8_copy(text, span.begin, span.end);
    g_signal_emit_by_name(object, signal, static_cast<gint>(span.begin),
                          static_cast<gint>(span.end - span.begin), bytes);
    g_free(bytes);
}

// An end of -1 is the text's.
void replace(gpointer object, gint begin, gint end, const std::u16string& by) {
    const auto all = characters_of(g_text_of(object).text);
    const auto size = static_cast<gint>(all.size());
    const auto last = end < 0 ? size : std::min(end, size);
    const auto first = std::clamp(begin, 0, last);
    const auto piece = [&](gint from, gint to) {
        auto* const bytes =
            utf8_copy(all, static_cast<std::size_t>(from), static_cast<std::size_t>(to));
        auto text = utf16_of(bytes);
        g_free(bytes);
        return text;
    };
    g_put_text(object, piece(0, first) + by + piece(last, size));
}

}  // namespace

void fill_text(AtkTextIface& table, AccessibleText (*text_of)(gpointer object)) {
    g_text_of = text_of;
    table.get_text = get_text;
    table.get_string_at_offset = get_string_at;
    table.get_character_count = [](AtkText* object) {
        return static_cast<gint>(characters_of(g_text_of(object).text).size());
    };
    table.get_character_at_offset = [](AtkText* object, gint offset) -> gunichar {
        const auto all = characters_of(g_text_of(object).text);
        const auto at = static_cast<std::size_t>(std::max(offset, 0));
        return at < all.size() ? all[at] : 0;
    };
    table.get_caret_offset = [](AtkText* object) { return caret_of(g_text_of(object)); };
}

void fill_editable_text(AtkEditableTextIface& table, AccessibleText (*text_of)(gpointer object),
                        void (*put_text)(gpointer object, std::u16string text)) {
    g_text_of = text_of;
    g_put_text = put_text;
    table.set_text_contents = [](AtkEditableText* object, const gchar* text) {
        g_put_text(object, utf16_of(text));
    };
    table.insert_text = [](AtkEditableText* object, const gchar* text, gint length, gint* at) {
        const std::string bytes(text, length < 0 ? std::char_traits<char>::length(text)
                                                 : static_cast<std::size_t>(length));
        const auto fresh = utf16_of(bytes.c_str());
        replace(object, *at, *at, fresh);
        *at += static_cast<gint>(characters_of(fresh).size());
    };
    table.delete_text = [](AtkEditableText* object, gint begin, gint end) {
        replace(object, begin, end, {});
    };
}

// What is the same at both ends has stayed.
void tell_text_change(AtkObject* object, const AccessibleText& before, const AccessibleText& now) {
    if (before.text != now.text) {
        const auto old = characters_of(before.text);
        const auto fresh = characters_of(now.text);
        const auto both = std::min(old.size(), fresh.size());
        std::size_t head = 0;
        while (head < both && old[head] == fresh[head]) ++head;
        std::size_t tail = 0;
        while (tail < both - head && old[old.size() - 1 - tail] == fresh[fresh.size() - 1 - tail]) {
            ++tail;
        }
        tell(object, "text-remove", old, {head, old.size() - tail});
        tell(object, "text-insert", fresh, {head, fresh.size() - tail});
    }
    if (before.text != now.text || before.caret != now.caret) {
        g_signal_emit_by_name(object, "text-caret-moved", caret_of(now));
    }
}

}  // namespace tvutil2
