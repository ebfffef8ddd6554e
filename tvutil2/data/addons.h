// Add-on products of the display suite, as "Addons.ini" lists them.
//
// The file is "Ombrelia\addons\Addons.ini" of the user data folder: "Count" of the section "Info",
// and a section "0", "1", ... for each add-on with the keys "Name", "Identity", "AddonPath",
// "SessionPath", "Label", "Ext", "WndClass" and "OpenInTab" (1 by default). The products write it;
// here it is read, and cleaned of add-ons whose executable has gone. A count that is larger than
// what is there costs nothing.
//
// "Ext" has its dot: ".abc". A product that wrote "abc" is understood by HasOneOfAddonExt; where an
// extension is handed in, it is compared as it is stored.
//
// Values and the list belong to one thread at a time.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/framework/strings.h"

class TVUTIL_API CAddon {
  public:
    CAddon();
    CAddon(const char16_t* name, const char16_t* label, const char16_t* addon_path,
           const char16_t* session_path, const char16_t* ext, const char16_t* identity,
           const char16_t* wnd_class, int open_in_tab);
    CAddon(const CAddon&);
    CAddon& operator=(const CAddon&);

    /// Non-zero for the same identity, compared exactly, whatever else differs.
    int operator==(const CAddon& other) const;

    /// The executable's path, when TvVerifyTolvarineExe lets it run, which may ask the person;
    /// otherwise empty. Nobody should start an add-on by any other path.
    [[nodiscard]] CString GetAddonPathForExecute() const;

    CString m_strName;
    CString m_strLabel;
    CString m_strAddonPath;
    CString m_strSessionPath;
    CString m_strExt;
    CString m_strIdentity;
    CString m_strWndClass;
    int m_nReserved = 0;
    BOOL m_bOpenInTab = FALSE;
};

/// The list of the process. It is empty until something is loaded; what it gave out is good until
/// it is removed.
class TVUTIL_API CAddonManager {
  public:
    static CAddonManager& GetInstance();
    CAddonManager(const CAddonManager&) = delete;
    CAddonManager& operator=(const CAddonManager&) = delete;

    /// TrimIni and, if that worked, Load; the result of the last one called.
    int Initiate();
    [[nodiscard]] CString GetAddonFilePath() const;

    /// Takes the add-ons whose executable has gone out of the file, and closes the gaps. 1, or 0
    /// when there is no file or it can't be written, with the reason as the last error.
    int TrimIni();
    int TrimIni(const char16_t* path);
    /// TrimIni, whose result doesn't count, and then adds the add-ons of the file whose identity
    /// isn't in the list. 1, or 0 when there is no file.
    int Load();
    int Load(const char16_t* path);
    /// The same with the list emptied before.
    int Reload();
    int Reload(const char16_t* path);

    /// Removes an add-on, and its extension once.
    void Remove(const char16_t* identity);
    void RemoveAll();

    /// Identity to CAddon, and the extensions in the order of their loading, one an add-on.
    [[nodiscard]] CMapStringToPtr* GetAddonMap() { return &m_addons; }
    [[nodiscard]] CStringList* GetAddonExts() { return &m_extensions; }

    /// 1 when an add-on has that extension, in its stored form.
    [[nodiscard]] int IsOneOfAddonExt(const char16_t* ext) const;
    /// 1 when an add-on has the extension of that file; 0 for a name without one.
    [[nodiscard]] int HasOneOfAddonExt(const char16_t* path) const;
    /// An add-on with that extension, in its stored form; null for none.
    [[nodiscard]] CAddon* GetAddon(const char16_t* ext) const;

  private:
    CAddonManager();
    ~CAddonManager();

    CMapStringToPtr m_addons{10};
    CStringList m_extensions{10};
};
