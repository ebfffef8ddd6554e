// The list of places at the side of the dialog for files.
#pragma once

#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/common_dialogs/folder_entry.h"
#include "tvutil2/platform/window/window_types.h"

namespace tvutil2 {

class FilePlaces {
  public:
    FilePlaces(HWND list, HIMAGELIST icons, LANGID language);

    [[nodiscard]] HWND window() const { return m_list; }
    void take(std::vector<FolderPlace> places);
    /// The place that the person is at; empty for none.
    [[nodiscard]] std::u16string selected() const;
    /// Where files lie that nobody has said anything else about; empty while that isn't known.
    [[nodiscard]] std::u16string usual() const;
    /// Selects the place that a folder is, if it is one.
    void follow(const std::u16string& folder);
    void arrange() const;
    void show_icons(HIMAGELIST icons) const;
    [[nodiscard]] bool is_filling() const { return m_is_filling; }

  private:
    void select(int index);

    HWND m_list;
    LANGID m_language;
    std::vector<FolderPlace> m_places;
    bool m_is_filling = false;
};

}  // namespace tvutil2
