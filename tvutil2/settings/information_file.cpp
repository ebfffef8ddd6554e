#include "tvutil2/settings/information_file.h"

#include "tvutil2/platform/profile/profile.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>

namespace NUtil {
namespace {

// The number at the front of text, behind white space and a sign, in any notation of C; 0 when
// there is none. A word is the number that "%f" writes as such a word, and no beginning of another.
double number_of(const char16_t* text) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    std::string narrow;
    for (; *text != u'\0'; ++text) narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
    char* end = nullptr;
    const double number = strtod_l(narrow.c_str(), &end, plain);
    const bool is_word = end != narrow.c_str() && (end[-1] < '0' || end[-1] > '9') &&
                         (std::isnan(number) || std::isinf(number));
    return is_word && *end != '\0' ? 0 : number;
}

}  // namespace

CInformationFile::CInformationFile() = default;
CInformationFile::CInformationFile(const CInformationFile&) = default;
CInformationFile& CInformationFile::operator=(const CInformationFile&) = default;
CInformationFile::~CInformationFile() = default;

void CInformationFile::Initialize(const std::u16string& folder, const std::u16string& fileName) {
    path = folder + u"\\" + fileName;
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           char16_t* buffer, int size,
                                           const char16_t* fallback) const {
    if (size <= 0) return;
    tvutil2::profile_string(section, key, fallback, buffer, static_cast<DWORD>(size), path.c_str());
}

void CInformationFile::ReadInformationFile(const char16_t* section, const char16_t* key,
                                           CString& value, const char16_t* fallback) const {
    char16_t buffer[1024];
    tvutil2::profile_string(section, key, fallback, buffer, 1024, path.c_str());
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
    tvutil2::profile_string(section, key, text, buffer, 16, path.c_str());
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
