// Named options in an INI file or below a registry key, read and written without knowing which.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

class CRegistry;

namespace tvutil2 {

/// "<application data>\<company>\<product>" of the person, with one separator at each join: the
/// file of COptionStorage. A null `company` is left out, a null `product` stands for "setup.ini".
/// Empty when the folder can't be had.
[[nodiscard]] TVUTIL_API CString option_file(const char16_t* company, const char16_t* product);
/// "SOFTWARE\<company>\<product>", its key below HKEY_CURRENT_USER; null parts are left out.
[[nodiscard]] TVUTIL_API CString option_key(const char16_t* company, const char16_t* product);

}  // namespace tvutil2

/// Closed at first, then open on one of both. In a file, each call reads or writes one value by the
/// rules of private-profile files (platform/profile/profile.h), and options of no section lie in
/// the section "Default". In the registry, a section is a sub key of the one that was opened, and
/// options of no section lie in that one.
///
/// A copy is a store of its own, open on the same place and section: on the registry it opens its
/// keys again rather than sharing them, so each store closes what is its own. One whose keys can't
/// be opened again, since they were deleted meanwhile, comes out closed.
///
/// A store belongs to one thread at a time; stores on one place may be used from several threads
/// and processes. A result of type int is non-zero for success. A null text is empty text. Reads
/// give `fallback`, with its blanks, for what isn't there, and a closed store has no options and
/// takes none. Writes give nothing; one that fails leaves the reason as the last error
/// (ERROR_PATH_NOT_FOUND for a folder that isn't there, ERROR_CANTWRITE for a key), and one that is
/// done leaves the last error alone.
class TVUTIL_API COptionStorage {
  public:
    COptionStorage();
    COptionStorage(const COptionStorage& other);
    COptionStorage& operator=(const COptionStorage& other);
    virtual ~COptionStorage();

    /// Opens on a file, without looking whether it is there; the empty path leaves the store
    /// closed. Each of these fails when the store is open already, and leaves it as it is.
    int OpenIniFile(const char16_t* path);
    /// On option_file; fails when there is none. The company's folder isn't made here, and until it
    /// is there nothing gets written.
    int OpenIniFile(const char16_t* company, const char16_t* product);
    /// On the key option_key, which is made if it is missing. Fails when it can't be.
    int OpenRegistry(const char16_t* company, const char16_t* product);
    /// OpenIniFile for 0, else OpenRegistry.
    int Open(const char16_t* company, const char16_t* product, int useRegistry);
    void Close();

    /// Chooses the section of the calls that follow; empty chooses none. In the registry its key is
    /// made if it is missing. When that fails, and when the store is closed, the section stays.
    int SetSection(const char16_t* name);

    /// A number is a REG_DWORD, or decimal text in a file; text is a REG_SZ.
    void SetValue(const char16_t* name, int value);
    void SetValue(const char16_t* name, const char16_t* value);
    /// A REG_DWORD, or the number at the front of a file's text (0 when it begins with none).
    [[nodiscard]] int GetValue(const char16_t* name, int fallback) const;
    /// A REG_SZ of at most 4096 units, up to its first zero, or at most 4095 units of a file's
    /// text.
    [[nodiscard]] CString GetValue(const char16_t* name, const char16_t* fallback) const;

  private:
    [[nodiscard]] bool IsOpen() const;
    [[nodiscard]] const char16_t* FileSection() const;
    void UseKey(CRegistry* key);

    CString filePath;     // empty unless open on a file
    CString sectionName;  // empty: none
    /// What values go to, and what was opened: both null unless open on the registry, both the same
    /// without a section. Owned.
    CRegistry* currentKey = nullptr;
    CRegistry* rootKey = nullptr;
};
