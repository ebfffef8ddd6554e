#include "tvutil2/platform/window/controls/list_items.h"

#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>

namespace tvutil2 {

int ListItems::add(const char16_t* text, bool is_sorted) {
    ListItem item{text != nullptr ? text : u""};
    if (!is_sorted) {
        all.push_back(std::move(item));
        return count() - 1;
    }
    const auto place =
        std::ranges::upper_bound(all, item, [](const ListItem& a, const ListItem& b) {
            return lstrcmpiW(a.text.c_str(), b.text.c_str()) < 0;
        });
    return static_cast<int>(all.insert(place, std::move(item)) - all.begin());
}

int ListItems::insert(int index, const char16_t* text) {
    if (index == -1) index = count();
    if (index < 0 || index > count()) return -1;
    all.insert(all.begin() + index, {text != nullptr ? text : u""});
    return index;
}

int ListItems::find(int from, std::u16string_view text, bool is_whole) const {
    const auto matches = [&](const std::u16string& item) {
        if (is_whole ? item.size() != text.size() : item.size() < text.size()) return false;
        return std::equal(text.begin(), text.end(), item.begin(),
                          [](char16_t a, char16_t b) { return to_lower(a) == to_lower(b); });
    };
    if (!has(from)) from = -1;
    for (int i = 1; i <= count(); ++i) {
        const int index = (from + i) % count();
        if (matches(at(index).text)) return index;
    }
    return -1;
}

}  // namespace tvutil2
