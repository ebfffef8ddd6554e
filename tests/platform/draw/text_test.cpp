#include "tvutil2/platform/draw/text.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace tvutil2 {
namespace {

// White paper with black writing.
class Paper {
  public:
    explicit Paper(UINT dpi = 96) : m_surface(Surface::create(400, 120, dpi, 0xFFFFFFFF)) {
        m_dc = lend_dc(m_surface, {}, Region(m_surface->area()));
        auto font = interface_font(dpi);
        m_font = CreateFontIndirectW(&font);
        SelectObject(m_dc, m_font);
        SetBkMode(m_dc, TRANSPARENT);
    }
    ~Paper() {
        return_dc(m_dc);
        DeleteObject(m_font);
    }
    Paper(const Paper&) = delete;
    Paper& operator=(const Paper&) = delete;

    [[nodiscard]] HDC dc() const { return m_dc; }
    // Around all that is written, from `left` on; empty when nothing is.
    [[nodiscard]] RECT ink(int left = 0) const {
        RECT box{};
        for (int y = 0; y < m_surface->height(); ++y) {
            for (int x = left; x < m_surface->width(); ++x) {
                if (m_surface->row(y)[x] == 0xFFFFFFFF) continue;
                const auto before = box;
                const RECT pixel{x, y, x + 1, y + 1};
                UnionRect(&box, &before, &pixel);
            }
        }
        return box;
    }
    int draw(const std::u16string& text, RECT rect, UINT format) const {
        return DrawTextW(m_dc, text.data(), static_cast<int>(text.size()), &rect, format);
    }
    [[nodiscard]] SIZE measure(const std::u16string& text) const {
        SIZE size{};
        GetTextExtentPoint32W(m_dc, text.data(), static_cast<int>(text.size()), &size);
        return size;
    }
    [[nodiscard]] int line() const {
        TEXTMETRICW metrics{};
        GetTextMetricsW(m_dc, &metrics);
        return metrics.tmHeight;
    }

  private:
    std::shared_ptr<Surface> m_surface;
    HDC m_dc;
    HFONT m_font;
};

TEST(Text, IsMeasuredAsItIsDrawn) {
    const Paper paper;
    const RECT wide{10, 10, 390, 110};
    const struct {
        const char16_t* text;
        UINT format;
        int lines;
    } kCases[] = {
        {u"One line", 0, 1},
        {u"One\nTwo\r\nThree\rFour", 0, 4},
        {u"One\nTwo", DT_SINGLELINE, 1},
        {u"One\n", 0, 1},
        {u"\n\nx", 0, 3},
        {u"Words that are broken where the rectangle ends, which takes one more line than not",
         DT_WORDBREAK, 2},
        {u"\u4F60\u597D \u0645\u0631\u062D\u0628\u0627 \xD83D\xDE00", 0, 1},
        {u"lone \xD800 half", 0, 1},
    };
    for (const auto& each : kCases) {
        const std::u16string text = each.text;
        RECT box = wide;
        const auto height = DrawTextW(paper.dc(), text.data(), -1, &box, each.format | DT_CALCRECT);
        EXPECT_EQ(height, each.lines * paper.line());
        EXPECT_EQ(box.bottom - box.top, height);
        EXPECT_LE(box.right, wide.right);
        EXPECT_EQ(paper.draw(text, wide, each.format), height);
    }
    EXPECT_EQ(paper.draw(u"", wide, 0), 0);
    EXPECT_EQ(paper.measure(u"WWWW").cx, 4 * paper.measure(u"W").cx);
}

TEST(Text, StaysInItsRectangle) {
    const RECT rect{50, 20, 130, 40};
    const struct {
        const char16_t* text;
        UINT format;
    } kCases[] = {
        {u"A long text that doesn't fit", DT_SINGLELINE},
        {u"A long text that doesn't fit", DT_SINGLELINE | DT_END_ELLIPSIS | DT_VCENTER},
        {u"C:\\home\\alice\\sessions\\name.ini", DT_SINGLELINE | DT_PATH_ELLIPSIS | DT_NOPREFIX},
        {u"C:\\a name that is by itself too long.ini", DT_SINGLELINE | DT_PATH_ELLIPSIS},
        {u"A long text that doesn't fit", DT_SINGLELINE | DT_RIGHT},
        {u"A text of many words on lines", DT_WORDBREAK | DT_CENTER},
    };
    for (const auto& each : kCases) {
        const Paper paper;
        paper.draw(each.text, rect, each.format);
        const auto ink = paper.ink();
        EXPECT_FALSE(is_empty(ink));
        EXPECT_TRUE(same_rect(common_part(ink, rect), ink)) << ink.left << " " << ink.right;
    }
    const Paper paper;
    paper.draw(u"Overflows to the right", rect, DT_SINGLELINE | DT_NOCLIP);
    EXPECT_GT(paper.ink().right, rect.right);
}

TEST(Text, StandsWhereItIsAligned) {
    const RECT rect{100, 20, 300, 100};
    const auto ink = [&](const char16_t* text, UINT format) {
        const Paper paper;
        paper.draw(text, rect, DT_SINGLELINE | format);
        return paper.ink();
    };
    const auto left = ink(u"HH", 0);
    const auto right = ink(u"HH", DT_RIGHT | DT_BOTTOM);
    const auto middle = ink(u"HH", DT_CENTER | DT_VCENTER);
    EXPECT_LT(left.left - rect.left, 4);
    EXPECT_LT(rect.right - right.right, 4);
    EXPECT_NEAR(middle.left + middle.right, left.left + right.right, 2);
    EXPECT_NEAR(middle.top + middle.bottom, left.top + right.bottom, 1);
    // "&" underlines: ink below the baseline, and no room of its own.
    EXPECT_GT(ink(u"&HH", 0).bottom, left.bottom);
    EXPECT_EQ(ink(u"&HH", DT_HIDEPREFIX).bottom, left.bottom);
    EXPECT_EQ(ink(u"&HH", 0).right, left.right);
    EXPECT_GT(ink(u"&HH", DT_NOPREFIX).right, left.right);
    EXPECT_EQ(ink(u"HH&", 0).right, left.right);
    // Read from the right, what ends a sentence stands at its left.
    EXPECT_LT(ink(u"HH.", DT_RTLREADING | DT_RIGHT).right, ink(u".HH", DT_RIGHT).right + 1);
    EXPECT_NE(ink(u"H!", DT_RTLREADING).left, ink(u"H!", 0).left);
}

TEST(Text, LettersBehindIdeographsStandOnTheSameLine) {
    const auto letter_behind = [](const std::u16string& text) {
        const Paper paper(192);
        // Only the letter is on the paper.
        const auto left = static_cast<int>(-paper.measure(text).cx);
        paper.draw(text + u"  H", {left, 10, 300, 100}, DT_NOCLIP | DT_SINGLELINE);
        return paper.ink();
    };
    const auto alone = letter_behind(u"");
    EXPECT_LT(alone.top, alone.bottom);
    for (const auto* const text : {u"\u672C", u"\u3042", u"\uD55C"}) {
        const auto behind = letter_behind(text);
        EXPECT_EQ(behind.top, alone.top);
        EXPECT_EQ(behind.bottom, alone.bottom);
    }
}

TEST(Text, ContextsPlaceLinesByTheirAlignment) {
    const Paper paper;
    SetTextAlign(paper.dc(), TA_RIGHT | TA_BASELINE);
    EXPECT_TRUE(TextOutW(paper.dc(), 200, 60, u"HH", 2));
    EXPECT_EQ(paper.ink().bottom, 60);
    EXPECT_LE(paper.ink().right, 200);
    SetTextAlign(paper.dc(), TA_UPDATECP);
    POINT end{};
    MoveToEx(paper.dc(), 10, 10, nullptr);
    TextOutW(paper.dc(), 0, 0, u"HH", 2);
    MoveToEx(paper.dc(), 0, 0, &end);
    EXPECT_EQ(end.x, 10 + paper.measure(u"HH").cx);
    const RECT fill{300, 0, 310, 10};
    SetBkColor(paper.dc(), RGB(1, 2, 3));
    EXPECT_TRUE(ExtTextOutW(paper.dc(), 0, 0, ETO_OPAQUE, &fill, nullptr, 0, nullptr));
    EXPECT_EQ(GetPixel(paper.dc(), 309, 9), RGB(1, 2, 3));
}

TEST(Text, FontsKeepWhatTheyWereAskedFor) {
    const Paper paper;
    for (const LONG height : {-8, -12, -40, 9, 17, 60}) {
        LOGFONTW record{};
        record.lfHeight = height;
        record.lfFaceName[0] = u'?';  // a family that nobody has
        const auto font = CreateFontIndirectW(&record);
        SelectObject(paper.dc(), font);
        TEXTMETRICW metrics{};
        ASSERT_TRUE(GetTextMetricsW(paper.dc(), &metrics));
        if (height < 0) {
            EXPECT_EQ(metrics.tmHeight - metrics.tmInternalLeading, -height);
        } else {
            EXPECT_LE(metrics.tmHeight, height);
            EXPECT_GE(metrics.tmHeight, height - 2);
        }
        LOGFONTW read{};
        EXPECT_EQ(GetObjectW(font, sizeof read, &read), static_cast<int>(sizeof read));
        EXPECT_EQ(read.lfHeight, height);
        DeleteObject(font);
    }
    LOGFONTW record{};
    record.lfHeight = -12;
    std::ranges::copy(std::u16string_view(u"Courier New"), record.lfFaceName);
    const auto font = CreateFontIndirectW(&record);
    SelectObject(paper.dc(), font);
    EXPECT_EQ(paper.measure(u"iiii").cx, paper.measure(u"WWWW").cx);
    DeleteObject(font);
}

// e and its accent, a family of emoji, a Hangul syllable of three letters.
TEST(Text, CaretsStandBetweenCharactersAsPeopleSeeThem) {
    const Paper paper;
    const std::u16string text = u"ae\u0301\xD83D\xDC69\u200D\xD83D\xDC67\u1112\u1161\u11ABz";
    const auto layout = lay_out_text(paper.dc(), text, {});
    ASSERT_NE(layout, nullptr);
    std::vector<std::size_t> places{0};
    while (places.back() < text.size()) places.push_back(layout->next_caret(places.back()));
    EXPECT_EQ(places, (std::vector<std::size_t>{0, 1, 3, 8, 11, 12}));
    for (std::size_t i = places.size() - 1; i > 0; --i) {
        EXPECT_EQ(layout->previous_caret(places[i]), places[i - 1]);
        EXPECT_EQ(layout->unit_at(0, layout->x_of(0, places[i])), places[i]);
    }
    EXPECT_EQ(layout->previous_caret(0), 0U);
    EXPECT_EQ(layout->next_caret(text.size()), text.size());
    const auto wrapped = lay_out_text(paper.dc(), u"one two three", {.wrap_width = 30});
    EXPECT_EQ(wrapped->line_count(), 3);
    EXPECT_EQ(wrapped->line_start(2), 8U);
}

// The full stop of a language is its own behind a word of letters, too.
TEST(Text, MarksAreThoseOfTheLanguage) {
    const auto locale = GetThreadLocale();
    SetThreadLocale(0x0404);
    const auto ink_behind = [](const char16_t* first) {
        const Paper paper(192);
        const RECT rect{0, 0, 400, 120};
        paper.draw(first + std::u16string(u"\u3002"), rect, DT_SINGLELINE | DT_NOPREFIX);
        const auto width = paper.measure(first).cx;
        auto ink = paper.ink(width);
        OffsetRect(&ink, -width, 0);
        return ink;
    };
    const auto alone = ink_behind(u"");
    for (const auto* first : {u"\u4E2D", u"H", u"\u300CH\u300D", u"H (1)"}) {
        EXPECT_TRUE(same_rect(ink_behind(first), alone)) << to_utf8_lossy(first);
    }
    SetThreadLocale(locale);
}

TEST(Text, KoreanIsBrokenBetweenItsWords) {
    const Paper paper;
    const std::u16string text =
        u"\uBCC0\uACBD \uB0B4\uC6A9\uC744 \uC801\uC6A9\uD558\uB824\uBA74 "
        u"\uD504\uB85C\uADF8\uB7A8\uC744 \uB2E4\uC2DC "
        u"\uC2DC\uC791\uD574\uC57C \uD569\uB2C8\uB2E4.";
    const auto widest = paper.measure(u"\uD504\uB85C\uADF8\uB7A8\uC744 ").cx + 8;
    for (int width = widest; width < 250; ++width) {
        const auto layout =
            lay_out_text(paper.dc(), text, {.wrap_width = width, .language = 0x0412});
        for (int line = 1; line < layout->line_count(); ++line) {
            EXPECT_EQ(text[layout->line_start(line) - 1], u' ') << width;
        }
    }
    // One that has no room is broken, as in any language.
    const std::u16string word(40, u'\uD504');
    const auto broken = lay_out_text(paper.dc(), word,
                                     {.wrap_width = 100, .breaks_words = true, .language = 0x0412});
    EXPECT_GT(broken->line_count(), 3);
    EXPECT_LE(broken->line_width(0), 100);
}

TEST(Text, AMillionCharactersAreMeasuredInParts) {
    const Paper paper;
    const std::u16string text(1'000'000, u'W');
    EXPECT_EQ(paper.measure(text).cx, 1'000'000 * paper.measure(u"W").cx);
    EXPECT_EQ(paper.draw(text, {0, 0, 100, 20}, DT_SINGLELINE | DT_END_ELLIPSIS), paper.line());
    std::u16string lines;
    for (int i = 0; i < 50'000; ++i) lines += u"x\n";
    RECT box{};
    EXPECT_EQ(
        DrawTextW(paper.dc(), lines.data(), static_cast<int>(lines.size()), &box, DT_CALCRECT),
        50'000 * paper.line());
}

TEST(Text, ThreadsMeasureAlike) {
    const auto wanted = Paper().measure(u"The same text everywhere").cx;
    std::vector<int> found(4);
    std::vector<std::thread> threads;
    for (auto& each : found) {
        threads.emplace_back([&each] { each = Paper().measure(u"The same text everywhere").cx; });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(found, std::vector<int>(4, wanted));
}

// Relative luminance and contrast as in WCAG 2.1, 1.4.3 and 1.4.11.
double luminance(COLORREF color) {
    const auto part = [](BYTE value) {
        const auto c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(GetRValue(color)) + 0.7152 * part(GetGValue(color)) +
           0.0722 * part(GetBValue(color));
}

double contrast(COLORREF a, COLORREF b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

TEST(Theme, TextAndEdgesStandOut) {
    for (const auto mode : {ThemeMode::light, ThemeMode::dark, ThemeMode::high_contrast}) {
        set_theme_mode(mode);
        const auto system = [](int index) { return GetSysColor(index); };
        const auto& p = theme().palette;
        const std::pair<COLORREF, COLORREF> texts[] = {
            {system(COLOR_WINDOWTEXT), system(COLOR_WINDOW)},
            {system(COLOR_BTNTEXT), system(COLOR_BTNFACE)},
            {system(COLOR_BTNTEXT), p.hot_face},
            {system(COLOR_BTNTEXT), p.pressed_face},
            {system(COLOR_WINDOWTEXT), p.hot_row},
            {system(COLOR_WINDOWTEXT), p.quiet_row},
            {system(COLOR_HIGHLIGHTTEXT), system(COLOR_HIGHLIGHT)},
            {system(COLOR_GRAYTEXT), system(COLOR_BTNFACE)},
            {system(COLOR_HOTLIGHT), system(COLOR_BTNFACE)},
            {system(COLOR_MENUTEXT), system(COLOR_MENU)},
            {system(COLOR_INFOTEXT), system(COLOR_INFOBK)},
            {p.accent_text, p.accent},
            {p.accent_text, p.hot_accent},
            {p.accent_text, p.pressed_accent},
            {p.placeholder, system(COLOR_WINDOW)}};
        for (const auto& [ink, paper] : texts) {
            EXPECT_GE(contrast(ink, paper), 4.5) << std::hex << ink << " on " << paper;
        }
        for (const auto edge : {p.border, p.accent, p.focus, p.thumb}) {
            EXPECT_GE(contrast(edge, system(COLOR_BTNFACE)), 3) << std::hex << edge;
            EXPECT_GE(contrast(edge, system(COLOR_WINDOW)), 3) << std::hex << edge;
        }
    }
}

}  // namespace
}  // namespace tvutil2
