// Paragraphs that a thread has asked for lately: what is measured is drawn next, and drawn again
// later.
#pragma once

#include "tvutil2/platform/draw/engine.h"

#include <list>
#include <unordered_map>

namespace tvutil2 {

class RecentLayouts {
  public:
    static constexpr std::size_t kLongest = 160;  ///< units of a text that is worth keeping
    static constexpr std::size_t kMost = 512;

    struct Query {
        const Font* font;
        std::u16string_view text;
        const TextOptions* options;
    };

    /// Null where it isn't kept. Then there is room for it: what nobody asked for longest has gone,
    /// and its memory serves the next one while the processor still has it at hand.
    [[nodiscard]] std::shared_ptr<const TextLayout> find(const Query& query);
    void add(const std::shared_ptr<const Font>& font, const Query& query,
             const std::shared_ptr<const TextLayout>& layout);

  private:
    struct Entry {
        std::shared_ptr<const Font> font;
        std::u16string text;
        TextOptions options;
        std::shared_ptr<const TextLayout> layout;
        [[nodiscard]] Query query() const { return {font.get(), text, &options}; }
    };
    struct Hash {
        std::size_t operator()(const Query& query) const;
    };
    struct Equal {
        bool operator()(const Query& a, const Query& b) const;
    };

    std::list<Entry> m_entries;  // the latest first
    // What they ask for stands in the entries.
    std::unordered_map<Query, std::list<Entry>::iterator, Hash, Equal> m_places;
};

}  // namespace tvutil2
