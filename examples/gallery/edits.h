// The library's edit controls.
#pragma once

#include "tvutil2/tvutil2.h"

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

}  // namespace gallery
