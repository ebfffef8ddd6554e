// What is in a folder, as the rows of a list: those that the person wants to see, in the order
// wanted.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/files/name_pattern.h"
#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

namespace tvutil2 {

enum class FileColumn : std::uint8_t { name, size, changed, type };

struct FileOrder {
    FileColumn column = FileColumn::name;
    bool is_descending = false;
};

class TVUTIL_API FileRows {
  public:
    void clear();
    /// Takes a part of a folder. What it costs goes with the part, and little with what is there.
    void add(std::vector<FolderEntry> entries);
    void show_hidden(bool shows);
    [[nodiscard]] bool shows_hidden() const { return m_shows_hidden; }
    /// Of the files those of one of the patterns; all of them for none.
    void show_files(const std::vector<std::u16string>& patterns);
    void order_by(FileOrder order);
    [[nodiscard]] FileOrder order() const { return m_order; }

    [[nodiscard]] int count() const { return static_cast<int>(m_shown.size()); }
    [[nodiscard]] const FolderEntry& at(int row) const { return m_all[id_of(row)]; }
    [[nodiscard]] const FolderEntry& entry(std::uint32_t id) const { return m_all[id]; }
    /// What a row keeps, wherever it goes.
    [[nodiscard]] std::uint32_t id_of(int row) const {
        return m_shown[static_cast<std::size_t>(row)];
    }
    /// The first row from `from` on, around the end, whose name begins with a text, whatever the
    /// case; -1 for none.
    [[nodiscard]] int find(int from, std::u16string_view beginning) const;

  private:
    [[nodiscard]] bool is_shown(const FolderEntry& entry) const;
    [[nodiscard]] bool comes_before(std::uint32_t a, std::uint32_t b) const;
    void show_from(std::size_t first);
    void show_again();

    std::vector<FolderEntry> m_all;
    std::vector<std::uint32_t> m_shown;
    std::vector<NamePattern> m_patterns;
    bool m_shows_hidden = false;
    FileOrder m_order;
};

/// In upper case; empty for a name without one.
[[nodiscard]] std::u16string extension_of(const FolderEntry& entry);

}  // namespace tvutil2
