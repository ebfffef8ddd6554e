#include "tvutil2/settings/information_file.h"

#include "tvutil2/platform/profile/profile.h"

#include <charconv>
#include <cmath>

namespace NUtil {
namespace {

// The number at the front of text, behind white space and a sign; 0 when there is none.
double number_of(const char16_t* text) {
    std::string narrow;
    for (; *text != u'\0'; ++text) narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
    std::string_view rest = narrow;
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\v\f\r"), rest.size()));
    if (rest.starts_with('+') && !rest.starts_with("+-")) rest.remove_prefix(1);
    double number = 0;
    std::from_chars(rest.data(), rest.data() + rest.size(), number);
    return number;
}

}  // namespace

void CInformationFile::Initialize(const std::u16string& folder, const std::u16string& fileName) {
    path = folder + u"\\" + fileName;
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           char16_t* buffer, int size,
                                           const char16_t* fallback) const {
    if (size <= 0) return;
    GetPrivateProfileStringW(section, key, fallback, buffer, static_cast<DWORD>(size),
                             path.c_str());
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           CString& value, const char16_t* fallback) const {
    char16_t buffer[1024];
    GetPrivateProfileStringW(section, key, fallback, buffer, 1024, path.c_str());
    value = buffer;
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           CString& value, const CString& fallback) const {
    ReadInformationFile(section, key, value, fallback.GetString());
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key, int& value,
                                           int fallback) const {
    value = static_cast<int>(GetPrivateProfileIntW(section, key, fallback, path.c_str()));
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           unsigned int& value, int fallback) const {
    value = GetPrivateProfileIntW(section, key, fallback, path.c_str());
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           float& value, float fallback) const {
    CString text;
    text.Format(u"%f", static_cast<double>(fallback));
    char16_t buffer[16];
    GetPrivateProfileStringW(section, key, text, buffer, 16, path.c_str());
    value = static_cast<float>(number_of(buffer));
}

void CInformationFile::WriteInformationFile(const char16_t* section, const char16_t* key,
                                            const CString& value) const {
    WriteInformationFile(section, key, value.GetString());
}

void CInformationFile::WriteInformationFile(const char16_t* section, const char16_t* key,
                                            const char16_t* value) const {
    WritePrivateProfileStringW(section, key, value, path.c_str());
}

void CInformationFile::WriteInformationFile(const char16_t* section, const char16_t* key,
                                            int value) const {
    CString text;
    text.Format(u"%d", value);
    WriteInformationFile(section, key, text);
}

void CInformationFile::WriteInformationFile(const char16_t* section, const char16_t* key,
                                            unsigned int value) const {
    WriteInformationFile(section, key, static_cast<int>(value));
}

void CInformationFile::WriteInformationFile(const char16_t* section, const char16_t* key,
                                            float value) const {
    CString text;
    text.Format(u"%f", static_cast<double>(value));
    WriteInformationFile(section, key, text);
}

}  // namespace NUtil
