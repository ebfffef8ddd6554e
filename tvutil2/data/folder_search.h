// A walk over the names of a folder, for the rooms of this storey.
#pragma once

#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// Owner of a search. It stands on a name, or behind the last one.
class FolderSearch {
  public:
    explicit FolderSearch(const std::u16string& pattern)
        : m_search(FindFirstFileW(pattern.c_str(), &m_data)),
          m_has_name(m_search != INVALID_HANDLE_VALUE) {}
    ~FolderSearch() {
        if (m_search != INVALID_HANDLE_VALUE) FindClose(m_search);
    }
    FolderSearch(const FolderSearch&) = delete;
    FolderSearch& operator=(const FolderSearch&) = delete;

    [[nodiscard]] bool has_name() const { return m_has_name; }
    void next() { m_has_name = FindNextFileW(m_search, &m_data) != FALSE; }

    [[nodiscard]] const char16_t* name() const { return m_data.cFileName; }
    [[nodiscard]] bool is_folder() const {
        return (m_data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    [[nodiscard]] bool is_link() const {
        return (m_data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    }
    /// "." or "..".
    [[nodiscard]] bool is_dots() const {
        const std::u16string_view text(m_data.cFileName);
        return text == u"." || text == u"..";
    }

  private:
    WIN32_FIND_DATAW m_data;
    HANDLE m_search;
    bool m_has_name;
};

}  // namespace tvutil2
