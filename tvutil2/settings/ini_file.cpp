#include "tvutil2/settings/ini_file.h"

#include "tvutil2/frame/base64.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/settings/ini_reader.h"
#include "tvutil2/settings/ini_writer.h"

#include <memory>

CIniSection::CIniSection() = default;
CIniSection::~CIniSection() = default;

int CIniSection::RemoveKey(const char16_t* key) {
    return m_values.RemoveKey(key);
}

void CIniSection::SetValue(const char16_t* key, int value) {
    CString text;
    text.Format(u"%d", value);
    m_values.SetAt(key, text);
}

void CIniSection::SetValue(const char16_t* key, const char16_t* value) {
    m_values.SetAt(key, value);
}

void CIniSection::SetValue(const char16_t* key, const unsigned char* data, DWORD size) {
    CString text;
    if (data != nullptr && size != 0) CBase64::Encode(data, size, text);
    m_values.SetAt(key, text);
}

int CIniSection::GetValue(const char16_t* key, int fallback) const {
    CString text;
    if (m_values.Lookup(key, text) == FALSE) return fallback;
    const int value = _wtoi(text);
    return value != 0 || text == u"0" ? value : fallback;
}

CString CIniSection::GetValue(const char16_t* key, const char16_t* fallback) const {
    CString text;
    return m_values.Lookup(key, text) != FALSE ? text : CString(fallback);
}

CIniFile::CIniFile(const char16_t* path) {
    if (path != nullptr) Read(path);
}

CIniFile::~CIniFile() {
    DeleteSections();
}

void CIniFile::DeleteSections() {
    sections.ForEach([](std::u16string_view, void* section) {
        const std::unique_ptr<CIniSection> owner(static_cast<CIniSection*>(section));
    });
    sections.RemoveAll();
}

void CIniFile::ClearAll(const char16_t* path) {
    DeleteSections();
    tvutil2::clear_ini(path);
}

void CIniFile::ClearSection(const char16_t* path, const char16_t* section) {
    Read(path);
    const std::unique_ptr<CIniSection> owner(FindSection(section));
    sections.RemoveKey(section);
    Write(path, 1, 0);
}

int CIniFile::Read(const char16_t* path) {
    const auto outcome = tvutil2::read_ini(path, *this);
    if (!outcome.is_open) return 0;
    const bool keeps_its_encoding = unicodeFile != 0 || outcome.is_utf8;
    if (outcome.is_utf16) {
        unicodeFile = 1;
    } else {
        utf8File = outcome.is_utf8 ? 1 : 0;
        if (!keeps_its_encoding && outcome.is_lossless) {
            tvutil2::rewrite_ini(path, *this, outcome.bytes);
        }
    }
    return 1;
}

int CIniFile::Write(const char16_t* path, int unicode, int flush) {
    using tvutil2::IniEncoding;
    const auto utf16 = flush == 1 ? IniEncoding::utf16_on_disk : IniEncoding::utf16;
    const bool is_utf16 = unicode != 0 || unicodeFile != 0;
    return tvutil2::write_ini(path, *this, is_utf16 ? utf16 : IniEncoding::narrow) ? 1 : 0;
}

CIniSection* CIniFile::FindSection(const char16_t* name) {
    return static_cast<CIniSection*>(sections[name]);
}

CIniSection& CIniFile::SectionFor(std::u16string_view name) {
    auto& section = sections.At(name);
    if (section == nullptr) section = std::make_unique<CIniSection>().release();
    return *static_cast<CIniSection*>(section);
}

void CIniFile::RemoveKey(const char16_t* section, const char16_t* key) {
    if (auto* const found = FindSection(section)) found->RemoveKey(key);
}

void CIniFile::SetValue(const char16_t* section, const char16_t* key, int value) {
    SectionFor(CString(section).View()).SetValue(key, value);
}

void CIniFile::SetValue(const char16_t* section, const char16_t* key, const char16_t* value) {
    SectionFor(CString(section).View()).SetValue(key, value);
}

void CIniFile::SetValue(const char16_t* section, const char16_t* key, const unsigned char* data,
                        DWORD size) {
    SectionFor(CString(section).View()).SetValue(key, data, size);
}

int CIniFile::GetValue(const char16_t* section, const char16_t* key, int fallback) {
    const auto* const found = FindSection(section);
    return found != nullptr ? found->GetValue(key, fallback) : fallback;
}

CString CIniFile::GetValue(const char16_t* section, const char16_t* key, const char16_t* fallback) {
    const auto* const found = FindSection(section);
    return found != nullptr ? found->GetValue(key, fallback) : CString(fallback);
}

int CIniFile::IsUTF8NotBom(std::FILE* stream) {
    return tvutil2::begins_utf8([stream] { return std::getc(stream); }) ? 1 : 0;
}
