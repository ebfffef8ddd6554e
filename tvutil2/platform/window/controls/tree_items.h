// The items of a tree view. A handle is a number that is never used again, so that one of an item
// that has gone is told from the others.
#pragma once

#include "tvutil2/platform/window/controls/tree_view.h"

#include <map>
#include <string>
#include <vector>

namespace tvutil2 {

struct TreeItem {
    HTREEITEM parent = nullptr;  ///< null for the invisible root's
    std::vector<HTREEITEM> children;
    std::u16string text;
    int image = 0, selected_image = 0;
    LPARAM data = 0;
    bool may_have_children = false;
    bool is_open = false;
    int depth = 0;
};

class TreeItems {
  public:
    static constexpr int kDeepest = 100;
    static constexpr std::size_t kMost = 1000000;

    /// Null for none.
    [[nodiscard]] TreeItem* find(HTREEITEM item);
    [[nodiscard]] std::size_t count() const { return m_items.size() - 1; }
    /// Null where the parent isn't there or that would be too deep or too many.
    HTREEITEM insert(HTREEITEM parent, HTREEITEM after, TreeItem item);
    /// With what is below it: all of these, the deepest first.
    std::vector<std::pair<HTREEITEM, LPARAM>> remove(HTREEITEM item);
    /// A neighbour by TVGN_ number, or null.
    [[nodiscard]] HTREEITEM relative(HTREEITEM item, WPARAM which);
    [[nodiscard]] bool is_below(HTREEITEM item, HTREEITEM outer);
    /// Those that show, from the top.
    [[nodiscard]] const std::vector<HTREEITEM>& shown();
    void changed() { m_is_listed = false; }
    void clear();

  private:
    void list(HTREEITEM parent);

    // The root is the item of null.
    std::map<HTREEITEM, TreeItem> m_items{{nullptr, {}}};
    std::vector<HTREEITEM> m_shown;
    bool m_is_listed = true;
    std::intptr_t m_last = 0;
};

}  // namespace tvutil2
