// The folders of the dialog as items of its tree.
//
// The tree begins with the desktop, below which are the person's places, "this computer" with its
// drives, and what lies on the desktop; or with the folder that the caller wants. A folder's item
// is asked for when it opens, and again at each opening; meanwhile it holds a note. A path is
// selected at once, on the assumption that it is there; what turns out not to be goes again.
#pragma once

#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/window/common_dialogs/folder_icons.h"
#include "tvutil2/platform/window/common_dialogs/folder_questions.h"
#include "tvutil2/platform/window/controls/tree_view.h"

#include <map>
#include <string>
#include <vector>

namespace tvutil2 {

enum class FolderKind : std::uint8_t { folder, file, desktop, computer, note };

struct FolderNode {
    FolderKind kind = FolderKind::folder;
    std::u16string name;
    std::u16string base;      ///< its path, where that isn't its parent's and its name
    bool is_fixed = false;    ///< was there from the beginning, and stays
    bool is_assumed = false;  ///< nobody has seen it yet
    bool has_inside = true;   ///< may hold folders that are worth showing
    HTREEITEM parent = nullptr;
    std::vector<HTREEITEM> children;
    std::uint64_t question = 0;  ///< under way; 0 for none
};

class FolderItems {
  public:
    /// `questions` outlives it.
    FolderItems(HWND tree, FolderQuestions& questions, bool with_files, LANGID language);

    /// Null for the desktop.
    void add_roots(PCIDLIST_ABSOLUTE root);
    /// An item is about to open.
    void open(HTREEITEM item);
    /// An answer to what this asked for; false for another's.
    bool take(const FolderAnswer& answer);
    /// A question that has no answer yet, and may never have one; false for another's.
    bool say_silent(std::uint64_t question);
    /// Asks again for what shows.
    void read_again();
    void show_hidden(bool shows);
    /// F5 asks again, Ctrl+H shows and hides what is hidden; false for any other key.
    bool take_key(WPARAM key);

    // False for what isn't in this tree.
    bool select_path(const std::u16string& path, bool opens = false);
    bool select(PCIDLIST_ABSOLUTE list, bool opens = false);
    /// Shows, and selects, a folder that has just been made.
    HTREEITEM add_made(HTREEITEM parent, const std::u16string& name);
    void rename(HTREEITEM item, const std::u16string& name);

    [[nodiscard]] HTREEITEM selected() const;
    /// Null for none.
    [[nodiscard]] const FolderNode* node(HTREEITEM item) const;
    /// Empty for an item without a path.
    [[nodiscard]] std::u16string path_of(HTREEITEM item) const;
    /// Null for a note.
    [[nodiscard]] ItemList list_of(HTREEITEM item) const;

  private:
    HTREEITEM add(HTREEITEM parent, HTREEITEM after, FolderNode node, FolderIcon icon);
    HTREEITEM add_place(HTREEITEM parent, int folder, const char16_t* name);
    void add_drives(HTREEITEM computer);
    HTREEITEM add_entry(HTREEITEM parent, HTREEITEM after, const FolderEntry& entry);
    void add_note(HTREEITEM parent, const char16_t* text);
    void remove(HTREEITEM item);
    [[nodiscard]] std::vector<HTREEITEM> notes_of(HTREEITEM parent) const;
    void merge(HTREEITEM item, const FolderAnswer& answer);
    void adopt_spelling(HTREEITEM item, const FolderAnswer& answer);
    void tell_of_children(HTREEITEM item);
    void expand(HTREEITEM item);
    [[nodiscard]] bool is_in_view(HTREEITEM item) const;
    [[nodiscard]] HTREEITEM child_of(HTREEITEM parent, const std::u16string& name) const;
    [[nodiscard]] HTREEITEM base_of(const std::u16string& path) const;

    HWND m_tree;
    FolderQuestions& m_disk;
    bool m_with_files;
    bool m_shows_hidden = false;
    LANGID m_language;
    std::map<HTREEITEM, FolderNode> m_nodes;
    std::map<std::uint64_t, HTREEITEM> m_asked;
    std::vector<HTREEITEM> m_bases;  ///< items with a path of their own
};

}  // namespace tvutil2
