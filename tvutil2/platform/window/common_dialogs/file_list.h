// The list of a folder's files: rows in a list view that asks for what it shows.
#pragma once

#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/common_dialogs/file_rows.h"
#include "tvutil2/platform/window/controls/list_view.h"

#include <set>

namespace tvutil2 {

class FileList {
  public:
    /// A list view with LVS_OWNERDATA.
    FileList(HWND list, HIMAGELIST icons, LANGID language);

    [[nodiscard]] HWND window() const { return m_list; }
    /// The column of names has what the others leave of the list's width.
    void fit_names();
    /// Another folder is about to be read. What is of these names is selected when it comes.
    void begin(std::set<std::u16string> selects = {});
    /// The same folder is about to be read anew: the rows stay until all of it has come, and then
    /// those that are there still stay selected, or those of the names are.
    void begin_again(std::set<std::u16string> selects = {});
    /// A part of it.
    void take(FolderAnswer answer);
    /// In the place of rows, while there are none.
    void say(std::u16string note);
    void show_hidden(bool shows);
    [[nodiscard]] bool shows_hidden() const { return m_rows.shows_hidden(); }
    void show_files(const std::vector<std::u16string>& patterns);

    /// What the list view tells. False for what isn't the list's own affair; a selection that has
    /// changed is the dialog's.
    bool notified(NMHDR& header);
    /// Icons of another size.
    void show_icons(HIMAGELIST icons) const;
    /// Lets the person change the name of who has the focus; `is_editing` while that goes on.
    void edit_name() const;
    [[nodiscard]] bool is_editing() const;
    /// A character for who looks for a name.
    void type(char16_t character);
    void select_all();

    [[nodiscard]] std::vector<const FolderEntry*> selected() const;
    /// Null for none.
    [[nodiscard]] const FolderEntry* focused() const;
    /// Names of files and folders that begin with a text, in the list's order, `most` at most.
    [[nodiscard]] std::vector<std::u16string> names_like(std::u16string_view beginning,
                                                         std::size_t most) const;
    /// The selection changes by what happens here, and by nobody's doing.
    [[nodiscard]] bool is_filling() const { return m_is_filling; }

  private:
    struct Selection;
    [[nodiscard]] Selection replace_rows(const Selection& before);
    /// The order's mark is in a title.
    [[nodiscard]] std::u16string title_of(std::size_t column) const;
    void title_columns() const;
    void describe(LVITEMW& asked);
    [[nodiscard]] std::u16string text_of_row(int row, int column) const;
    void order_by(FileColumn column);
    [[nodiscard]] Selection selection() const;
    /// The rows are others now; who was selected is again.
    void show(const Selection& before);
    void set_state(int row, UINT state) const;
    [[nodiscard]] bool has(int row) const { return row >= 0 && row < m_rows.count(); }

    HWND m_list;
    LANGID m_language;
    FileRows m_rows;
    std::u16string m_note;  ///< in the place of rows, while there are none
    std::u16string m_shown_text;
    std::set<std::u16string> m_selects;
    bool m_is_again = false;
    std::vector<FolderEntry> m_fresh;  ///< of a folder that is read anew
    bool m_is_filling = false;
    int m_names_width = 0;  ///< as it was fitted
    std::u16string m_typed;
    DWORD m_typed_at = 0;
};

}  // namespace tvutil2
