#include "tvutil2/platform/draw/text_lines.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tvutil2 {
namespace {

using Layout = std::shared_ptr<const TextLayout>;

// Where a text may be parted that is too long to be shaped at once: at a blank if there is one, and
// never within a pair.
std::size_t first_part(std::u16string_view text) {
    constexpr auto kMost = Engine::kLongestText;
    if (text.size() <= kMost) return text.size();
    const auto blank = text.substr(0, kMost).rfind(u' ');
    if (blank != std::u16string_view::npos && blank > kMost / 2) return blank + 1;
    const bool is_in_pair = text[kMost] >= 0xDC00 && text[kMost] < 0xE000;
    return is_in_pair ? kMost - 1 : kMost;
}

// What "&" stands for is taken out; `underlined` is the place of the last character that it marked.
std::u16string without_prefixes(std::u16string_view text, int& underlined) {
    std::u16string shown;
    shown.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'&') {
            if (++i == text.size()) break;
            if (text[i] != u'&') underlined = static_cast<int>(shown.size());
        }
        shown += text[i];
    }
    return shown;
}

// A text on its way into a rectangle.
class DrawnText {
  public:
    DrawnText(const Writing& writing, std::u16string_view text, int width, UINT format)
        : m_writing(writing), m_width(std::max(width, 0)), m_format(format) {
        int underlined = -1;
        if ((format & DT_NOPREFIX) == 0 && text.find(u'&') != std::u16string_view::npos) {
            m_own = without_prefixes(text, underlined);
            text = m_own;
        }
        if ((format & DT_HIDEPREFIX) != 0) underlined = -1;
        if ((format & DT_EXPANDTABS) == 0 && text.find(u'\t') != std::u16string_view::npos) {
            if (text.data() != m_own.data()) m_own = text;
            std::ranges::replace(m_own, u'\t', u' ');
            text = m_own;
        }
        add_paragraphs(text, underlined);
    }

    std::vector<TextLine> take_lines() { return std::move(m_lines); }

  private:
    [[nodiscard]] bool has(UINT flag) const { return (m_format & flag) != 0; }

    [[nodiscard]] TextOptions options() const {
        auto options = plain_options();
        options.is_right_to_left = has(DT_RTLREADING);
        options.breaks_words = has(DT_EDITCONTROL);
        if (has(DT_WORDBREAK) && !has(DT_SINGLELINE)) options.wrap_width = m_width;
        return options;
    }
    [[nodiscard]] Ellipsis ellipsis() const {
        if (has(DT_CALCRECT) || (has(DT_WORDBREAK) && !has(DT_SINGLELINE))) return Ellipsis::none;
        if (has(DT_PATH_ELLIPSIS)) return Ellipsis::middle;
        return has(DT_END_ELLIPSIS | DT_WORD_ELLIPSIS) ? Ellipsis::end : Ellipsis::none;
    }

    void add_paragraphs(std::u16string_view text, int underlined) {
        while (true) {
            const auto end =
                has(DT_SINGLELINE) ? std::u16string_view::npos : text.find_first_of(u"\r\n");
            add_paragraph(text.substr(0, end), underlined);
            if (end == std::u16string_view::npos) return;
            const bool is_pair =
                text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n';
            const auto next = end + (is_pair ? 2 : 1);
            underlined -= static_cast<int>(std::min<std::size_t>(next, 0x7FFFFFFF));
            text.remove_prefix(next);
            if (text.empty()) return;
        }
    }

    void add_paragraph(std::u16string_view text, int underlined) {
        auto how = options();
        if (ellipsis() != Ellipsis::none) {
            how.underlined = underlined;
            m_lines.push_back(shortened(text, how));
            return;
        }
        TextLine line;
        bool is_first = true;
        while (is_first || !text.empty()) {
            is_first = false;
            const auto size = first_part(text);
            how.underlined = underlined;
            const auto layout = m_writing.lay_out(text.substr(0, size), how);
            if (how.wrap_width >= 0) {
                add_lines(layout);
            } else {
                append(line, layout);
            }
            underlined -= static_cast<int>(size);
            text.remove_prefix(size);
        }
        if (how.wrap_width < 0) m_lines.push_back(std::move(line));
    }

    void add_lines(const Layout& layout) {
        for (int i = 0; i < layout->line_count(); ++i) {
            m_lines.push_back({{{layout, i, 0}}, layout->line_width(i)});
        }
    }

    static void append(TextLine& line, const Layout& layout) {
        line.pieces.push_back({layout, 0, line.width});
        line.width = plus(line.width, layout->line_width(0));
    }

    TextLine shortened(std::u16string_view text, TextOptions how) {
        const bool is_path = has(DT_PATH_ELLIPSIS);
        how.ellipsis = ellipsis();
        how.ellipsis_width = m_width;
        std::u16string own;
        if (text.size() > Engine::kLongestText) {
            // No line shows so much: its two ends will do.
            constexpr auto kEnd = Engine::kLongestText / 2 - 1;
            own = text.substr(0, kEnd);
            own += u'\u2026';
            if (is_path) own += text.substr(text.size() - kEnd);
            text = own;
        }
        std::u16string path;
        if (is_path) {
            path = shortened_path(text, how);
            text = path;
            how.ellipsis = Ellipsis::end;
        }
        TextLine line;
        append(line, m_writing.lay_out(text, how));
        return line;
    }

    // As much of the front as fits beside the name, which stays whole if it can.
    std::u16string shortened_path(std::u16string_view text, const TextOptions& like) {
        TextOptions how = like;
        how.ellipsis = Ellipsis::none;
        how.underlined = -1;
        const auto fits = [&](std::u16string_view candidate) {
            return m_writing.lay_out(candidate, how)->line_width(0) <= m_width;
        };
        const auto slash = text.find_last_of(u"\\/");
        if (fits(text) || slash == std::u16string_view::npos) return std::u16string(text);
        const auto name = text.substr(slash);
        const auto with_front = [&](std::size_t size) {
            return std::u16string(text.substr(0, size)) + u'\u2026' + std::u16string(name);
        };
        std::size_t least = 0;
        std::size_t most = slash;
        while (least < most) {
            const auto middle = (least + most + 1) / 2;
            if (fits(with_front(middle))) {
                least = middle;
            } else {
                most = middle - 1;
            }
        }
        if (least > 0 && text[least] >= 0xDC00 && text[least] < 0xE000) --least;
        return with_front(least);
    }

    const Writing& m_writing;
    int m_width;
    UINT m_format;
    std::u16string m_own;
    std::vector<TextLine> m_lines;
};

}  // namespace

TextOptions plain_options() {
    TextOptions options;
    options.language = static_cast<LANGID>(GetThreadLocale() & 0xFFFF);
    return options;
}

TextLine line_of(const Writing& writing, std::u16string_view text, const TextOptions& options) {
    TextLine line;
    do {
        const auto size = first_part(text);
        const auto layout = writing.lay_out(text.substr(0, size), options);
        line.pieces.push_back({layout, 0, line.width});
        line.width = plus(line.width, layout->line_width(0));
        text.remove_prefix(size);
    } while (!text.empty());
    return line;
}

std::vector<TextLine> lines_of(const Writing& writing, std::u16string_view text, int width,
                               UINT format) {
    return DrawnText(writing, text, width, format).take_lines();
}

}  // namespace tvutil2
