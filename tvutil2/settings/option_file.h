// An INI document with a current section, and calls that go straight to a file.
#pragma once

#include "tvutil2/settings/ini_file.h"

/// Belongs to one thread at a time, as the document does.
class TVUTIL_API COptionFile : public CIniFile {
  public:
    /// As CIniFile, with no current section.
    COptionFile(const char16_t* path = nullptr);

    using CIniFile::GetValue;
    using CIniFile::SetValue;

    /// Makes `name` the current section, with all that the document holds under it; one that it
    /// doesn't hold is entered empty. Nothing is lost by it, and each later call moves reads and
    /// writes alike.
    void SetSection(const char16_t* name);

    /// In the current section, which is made if it is missing.
    void SetValue(const char16_t* key, int value);
    void SetValue(const char16_t* key, const char16_t* value);
    /// From the current section, by the rules of CIniSection; `fallback` while there is none.
    int GetValue(const char16_t* key, int fallback);
    CString GetValue(const char16_t* key, const char16_t* fallback);

    /// One value of the current section of a private-profile file (platform/profile/profile.h). The
    /// document takes no notice, and a later Write overwrites it. Text comes with at most 4095
    /// units.
    void WriteValue(const char16_t* path, const char16_t* key, int value) const;
    void WriteValue(const char16_t* path, const char16_t* key, const char16_t* value) const;
    int ReadValue(const char16_t* path, const char16_t* key, int fallback) const;
    CString ReadValue(const char16_t* path, const char16_t* key, const char16_t* fallback) const;

    /// Appends "key=value" for each key of the current section, or of `sectionOverride`, to `out`,
    /// and sorts all of `out` by code unit. The number of its elements less 1; 0 for fewer than two
    /// and when there is no such section.
    int EnumOption(CStringArray& out, const char16_t* sectionOverride);

  private:
    [[nodiscard]] CIniSection* Current();

    CString sectionName;
    /// Null until SetSection. Looked up again at each use, for ClearAll, ClearSection and a caller
    /// of `sections` may have taken it away.
    CIniSection* section = nullptr;
};
