// Switches of features that are still being tried out, shared by all products.
#pragma once

#include "tvutil2/framework/strings.h"

/// The switches, as the products read them: "Features.ini" in the user data folder, an integer for
/// each, 0 by default. They are 0 until Load. The instance is made on first use, from any thread;
/// its fields and the file belong to one thread at a time.
class TVUTIL_API CTvExpFeatures {
  public:
    static CTvExpFeatures& GetInstance();

    CTvExpFeatures(const CTvExpFeatures&);
    CTvExpFeatures& operator=(const CTvExpFeatures&);

    /// Sets the switches from the file; a missing one gives 0 for all.
    void Load();
    /// Writes the switches into the file; its other keys stay.
    void Save();

    /// Tells the person that there is nothing to choose at present. Always 1.
    int Configure(unsigned int, unsigned int);
    /// Does nothing.
    void PopupOnce(unsigned int, unsigned int);

    CString m_strPath;
    BOOL m_bCertKey = FALSE;
    BOOL m_bRealCmd = FALSE;
    BOOL m_bPelrinRecentList = FALSE;
    BOOL m_bJumpHost = FALSE;
    BOOL m_bScpCmd = FALSE;
    BOOL m_bDovrRecentList = FALSE;
    BOOL m_bFileFilter = FALSE;
    int m_nReserved = 0;

  protected:
    CTvExpFeatures();
};
