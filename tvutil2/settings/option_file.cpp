#include "tvutil2/settings/option_file.h"

#include "tvutil2/platform/profile/profile.h"

#include <algorithm>
#include <vector>

COptionFile::COptionFile(const char16_t* path) : CIniFile(path) {}

void COptionFile::SetSection(const char16_t* name) {
    sectionName = name;
    section = &SectionFor(sectionName.View());
}

CIniSection* COptionFile::Current() {
    if (section == nullptr) return nullptr;
    void* found = nullptr;
    sections.Lookup(sectionName, found);
    return static_cast<CIniSection*>(found);
}

void COptionFile::SetValue(const char16_t* key, int value) {
    SectionFor(sectionName.View()).SetValue(key, value);
}

void COptionFile::SetValue(const char16_t* key, const char16_t* value) {
    SectionFor(sectionName.View()).SetValue(key, value);
}

int COptionFile::GetValue(const char16_t* key, int fallback) {
    const auto* const current = Current();
    return current != nullptr ? current->GetValue(key, fallback) : fallback;
}

CString COptionFile::GetValue(const char16_t* key, const char16_t* fallback) {
    const auto* const current = Current();
    return current != nullptr ? current->GetValue(key, fallback) : CString(fallback);
}

void COptionFile::WriteValue(const char16_t* path, const char16_t* key, int value) const {
    CString text;
    text.Format(u"%d", value);
    WriteValue(path, key, text);
}

void COptionFile::WriteValue(const char16_t* path, const char16_t* key,
                             const char16_t* value) const {
    WritePrivateProfileStringW(sectionName, key, value, path);
}

int COptionFile::ReadValue(const char16_t* path, const char16_t* key, int fallback) const {
    return static_cast<int>(GetPrivateProfileIntW(sectionName, key, fallback, path));
}

CString COptionFile::ReadValue(const char16_t* path, const char16_t* key,
                               const char16_t* fallback) const {
    char16_t buffer[4096];
    tvutil2::profile_string(sectionName, key, fallback, buffer, 4096, path);
    return buffer;
}

int COptionFile::EnumOption(CStringArray& out, const char16_t* sectionOverride) {
    const auto* listed = Current();
    if (sectionOverride != nullptr) {
        listed = &SectionFor(std::u16string_view(sectionOverride));
    }
    if (listed == nullptr) return 0;
    listed->Values().ForEach([&out](std::u16string_view key, std::u16string_view value) {
        CString line(key);
        line += u'=';
        line += value;
        out.Add(std::move(line));
    });
    if (out.IsEmpty()) return 0;
    std::sort(&out[0], &out[0] + out.GetSize(),
              [](const CString& a, const CString& b) { return a.Compare(b) < 0; });
    return out.GetSize() - 1;
}
