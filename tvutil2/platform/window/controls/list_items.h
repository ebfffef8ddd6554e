// The items of a list box or a combo box.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

struct ListItem {
    std::u16string text;
    std::uintptr_t data = 0;
    bool is_selected = false;  ///< where several can be
};

struct ListItems {
    std::vector<ListItem> all;

    [[nodiscard]] int count() const { return static_cast<int>(all.size()); }
    [[nodiscard]] bool has(int index) const { return index >= 0 && index < count(); }
    [[nodiscard]] ListItem& at(int index) { return all[static_cast<std::size_t>(index)]; }
    [[nodiscard]] const ListItem& at(int index) const {
        return all[static_cast<std::size_t>(index)];
    }
    /// At its place in the order of texts, or behind the last one: where it is.
    int add(const char16_t* text, bool is_sorted);
    /// In front of an item, behind the last one for -1. -1 where that isn't.
    int insert(int index, const char16_t* text);
    void remove(int index) { all.erase(all.begin() + index); }
    /// The first item behind `from`, around the end, that begins with (or is) a text, whatever the
    /// case; -1 for none.
    [[nodiscard]] int find(int from, std::u16string_view text, bool is_whole) const;
};

}  // namespace tvutil2
