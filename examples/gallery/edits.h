// The library's edit controls, and its choice of a folder.
#pragma once

#include "tvutil2/tvutil2.h"

#include <string>

namespace gallery {

class Edits : public CDialog {
  public:
    Edits() : m_hint(CString(u"Search the sessions")), m_middle(CString(u"In the middle")) {}
    BOOL OnInitDialog() override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;

  private:
    CTvEdit m_plain;
    CFNameEdit m_name;
    CHintEdit m_hint, m_middle;
    CBrowseEdit m_button, m_disabled;
    CBrowseFolderEdit m_folder;
};

/// Folders to choose from, below a host folder; the folder that is theirs.
std::u16string make_folders(const std::string& below);
/// Whether the tree of a dialog shows what is in the folder that is selected.
bool has_read_folder(HWND dialog);
/// Lets the person choose one of them.
void browse_folders(const std::u16string& path);
/// Lets the person choose a file in one of them.
void browse_files(const std::u16string& path);

}  // namespace gallery
