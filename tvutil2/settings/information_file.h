// One INI file, read and written value by value.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

#include <string>

namespace NUtil {

/// Bound once to a file; each call then reads or writes a single value in it, as the platform's
/// private-profile functions do (platform/profile/profile.h), on which all that holds. Nothing is
/// kept in memory and no failure is told: what can't be read gives the fallback. Safe from any
/// thread once it is bound.
class TVUTIL_API CInformationFile {
  public:
    CInformationFile();
    CInformationFile(const CInformationFile&);
    CInformationFile& operator=(const CInformationFile&);
    virtual ~CInformationFile();

    /// The file is `folder`, "\" and `fileName`, whatever `folder` ends in.
    void Initialize(const std::u16string& folder, const std::u16string& fileName);

    /// Text, into `size` units with its zero.
    void ReadInformationFile(const char16_t* section, const char16_t* key, char16_t* buffer,
                             int size, const char16_t* fallback) const;
    /// Text, at most 1023 units.
    void ReadInformationFile(const char16_t* section, const char16_t* key, CString& value,
                             const char16_t* fallback) const;
    void ReadInformationFile(const char16_t* section, const char16_t* key, CString& value,
                             const CString& fallback) const;
    void ReadInformationFile(const char16_t* section, const char16_t* key, int& value,
                             int fallback) const;
    void ReadInformationFile(const char16_t* section, const char16_t* key, unsigned int& value,
                             int fallback) const;
    /// The number at the front of the text's first 15 units, in any notation of C; 0 when there is
    /// none, infinity for one that is too large. `fallback` comes with six decimals, cut to 15
    /// units as well.
    void ReadInformationFile(const char16_t* section, const char16_t* key, float& value,
                             float fallback) const;

    void WriteInformationFile(const char16_t* section, const char16_t* key,
                              const CString& value) const;
    void WriteInformationFile(const char16_t* section, const char16_t* key,
                              const char16_t* value) const;
    void WriteInformationFile(const char16_t* section, const char16_t* key, int value) const;
    /// As a signed number: what is above 2^31 is written as a negative one, and reads back.
    void WriteInformationFile(const char16_t* section, const char16_t* key,
                              unsigned int value) const;
    /// With six decimals.
    void WriteInformationFile(const char16_t* section, const char16_t* key, float value) const;

  private:
    std::u16string path;
};

}  // namespace NUtil
