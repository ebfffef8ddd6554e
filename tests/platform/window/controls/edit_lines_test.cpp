#include "tvutil2/platform/window/controls/edit_lines.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/window/controls/text_breaks.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using tvutil2::EditText;

// Rows that follow changes are those that the text would have from the start.
TEST(EditLines, FollowChanges) {
    auto* const context = CreateCompatibleDC(nullptr);
    std::minstd_rand random(3);
    const auto number = [&](std::size_t below) { return std::size_t{random()} % below; };
    constexpr std::u16string_view kPieces[] = {
        u"word ", u"\r\n", u"\r", u"\n", u"verylongword", u"e\u0301", u" ", u"\u05D0\u05D1 "};
    for (const int width : {-1, 60, 300}) {
        for (const bool is_one_line : {false, true}) {
            if (is_one_line && width >= 0) continue;
            SCOPED_TRACE(width);
            const tvutil2::RowFont font{context, false, 0, width};
            tvutil2::EditLines lines;
            EditText text;
            text.set(std::u16string(is_one_line ? 3000 : 700, u'x'));
            lines.reset(text.text(), font, is_one_line);
            for (int i = 0; i < 80; ++i) {
                const auto start = number(text.size() + 1);
                const auto length = number(4) == 0 ? number(1500) : number(8);
                text.select(start, std::min(text.size(), start + length));
                std::u16string by;
                for (auto n = number(4); n > 0; --n) by += kPieces[number(std::size(kPieces))];
                if (number(20) == 0) by += std::u16string(1200, u'y');
                const auto change = text.replace(by, EditText::Kind::other);
                lines.change(text.text(), font, change);
                tvutil2::EditLines fresh;
                fresh.reset(text.text(), font, is_one_line);
                ASSERT_EQ(lines.count(), fresh.count()) << i;
                for (std::size_t row = 0; row < fresh.count(); ++row) {
                    ASSERT_EQ(lines.row(row), fresh.row(row)) << i << " " << row;
                }
                const auto at = number(text.size() + 1);
                ASSERT_LT(lines.place_at(text.text(), font, lines.row_of(at), 20), text.size() + 1);
            }
        }
    }
    DeleteDC(context);
}

// No row is wider than it may be, and none ends before it must.
TEST(EditLines, WrapBehindTheLastWordThatFits) {
    auto* const context = CreateCompatibleDC(nullptr);
    const auto width_of = [&](std::u16string_view text) {
        if (text.ends_with(u' ') || text.ends_with(u'\t')) text.remove_suffix(1);
        tvutil2::TextOptions options;
        options.tab_width = 40;
        const auto layout = tvutil2::lay_out_text(context, text, options);
        return layout->line_width(0);
    };
    const struct {
        std::u16string_view text;
        bool has_words;  // and may be parted between them alone
    } cases[] = {
        {u"Some words of a sentence that is long enough for quite a few rows of text", true},
        {u"tabs\tmay\tstand\tbetween words,\tand each\tgoes on to\tits next stop", true},
        {u"\u0421\u043B\u043E\u0432\u0430 \u0438\u0437 e\u0301 \u05D0\u05D1\u05D2 \u05D3\u05D4 "
         u"mixed",
         true},
        {u"\u65E5\u672C\u8A9E\u306F\u8A9E\u306E\u9593\u306B\u7A7A\u767D\u304C\u306A\u3044\u3002",
         false},
        {u"Donaudampfschifffahrtsgesellschaft\U0001F468\u200D\U0001F469e\u0301!", false},
    };
    for (const int width : {60, 100}) {
        for (const auto& [text, has_words] : cases) {
            SCOPED_TRACE(testing::Message() << &text - &cases[0].text << " in " << width);
            const tvutil2::RowFont font{context, false, 40, width};
            tvutil2::EditLines lines;
            lines.reset(text, font, false);
            ASSERT_GT(lines.count(), 1U);
            for (std::size_t i = 0; i < lines.count(); ++i) {
                const auto row = lines.row(i);
                EXPECT_LE(width_of(text.substr(row.start, row.end - row.start)), width);
                if (i + 1 == lines.count()) continue;
                const auto blank = text.find_first_of(u" \t", row.end);
                const auto next = has_words ? std::min(blank, text.size())
                                            : tvutil2::next_character(text, row.end);
                // What may not begin a row takes its neighbour along.
                const auto slack = has_words || text[next] != u'\u3002' ? 0 : 14;
                EXPECT_GT(width_of(text.substr(row.start, next - row.start)) + slack, width);
            }
        }
    }
    DeleteDC(context);
}

}  // namespace
