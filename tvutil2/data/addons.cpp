#include "tvutil2/data/addons.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/data/session_folders.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/services/signature.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr auto kInfo = u"Info";
constexpr auto kCount = u"Count";

// In the order in which they are written.
constexpr struct {
    const char16_t* key;
    CString CAddon::*value;
} kTexts[] = {
    {u"Name", &CAddon::m_strName},           {u"Identity", &CAddon::m_strIdentity},
    {u"AddonPath", &CAddon::m_strAddonPath}, {u"SessionPath", &CAddon::m_strSessionPath},
    {u"Label", &CAddon::m_strLabel},         {u"Ext", &CAddon::m_strExt},
    {u"WndClass", &CAddon::m_strWndClass},
};
constexpr auto kOpenInTab = u"OpenInTab";

CString section_of(int index) {
    CString name;
    name.Format(u"%d", index);
    return name;
}

// The indexes below the count that have a section, in their order: never more than the file holds.
std::vector<int> entries_of(CIniFile& file) {
    const int count = file.GetValue(kInfo, kCount, 0);
    std::vector<int> entries;
    file.sections.ForEach([&](std::u16string_view name, void* section) {
        const CString text(name.data(), static_cast<int>(name.size()));
        const int index = _wtoi(text);
        if (section != nullptr && index >= 0 && index < count && text == section_of(index)) {
            entries.push_back(index);
        }
    });
    std::sort(entries.begin(), entries.end());
    return entries;
}

CAddon read_entry(CIniFile& file, const CString& section) {
    CAddon addon;
    for (const auto& [key, value] : kTexts) addon.*value = file.GetValue(section, key, u"");
    addon.m_bOpenInTab = file.GetValue(section, kOpenInTab, 1);
    return addon;
}

void write_entry(CIniFile& file, const CString& section, const CAddon& addon) {
    for (const auto& [key, value] : kTexts) file.SetValue(section, key, addon.*value);
    file.SetValue(section, kOpenInTab, addon.m_bOpenInTab);
}

void remove_section(CIniFile& file, const CString& name) {
    void* section = nullptr;
    if (file.sections.Lookup(name, section) == FALSE) return;
    const std::unique_ptr<CIniSection> owner(static_cast<CIniSection*>(section));
    file.sections.RemoveKey(name);
}

}  // namespace

CAddon::CAddon() = default;
CAddon::CAddon(const CAddon&) = default;
CAddon& CAddon::operator=(const CAddon&) = default;

CAddon::CAddon(const char16_t* name, const char16_t* label, const char16_t* addon_path,
               const char16_t* session_path, const char16_t* ext, const char16_t* identity,
               const char16_t* wnd_class, int open_in_tab)
    : m_strName(name),
      m_strLabel(label),
      m_strAddonPath(addon_path),
      m_strSessionPath(session_path),
      m_strExt(ext),
      m_strIdentity(identity),
      m_strWndClass(wnd_class),
      m_bOpenInTab(open_in_tab) {}

int CAddon::operator==(const CAddon& other) const {
    return m_strIdentity == other.m_strIdentity ? 1 : 0;
}

CString CAddon::GetAddonPathForExecute() const {
    return TvVerifyTolvarineExe(m_strAddonPath, FALSE) != 0 ? m_strAddonPath : CString();
}

CAddonManager::CAddonManager() = default;

CAddonManager::~CAddonManager() {
    RemoveAll();
}

CAddonManager& CAddonManager::GetInstance() {
    static CAddonManager instance;
    return instance;
}

CString CAddonManager::GetAddonFilePath() const {
    auto path = AfxGetOmbrAddonCommonPath();
    AppendPath(path, u"Addons.ini");
    return path;
}

int CAddonManager::Initiate() {
    const int trimmed = TrimIni();
    return trimmed != 0 ? Load() : trimmed;
}

int CAddonManager::TrimIni() {
    return TrimIni(GetAddonFilePath());
}
int CAddonManager::Load() {
    return Load(GetAddonFilePath());
}
int CAddonManager::Reload() {
    return Reload(GetAddonFilePath());
}

int CAddonManager::TrimIni(const char16_t* path) {
    if (DoesFileExist(path) == 0) return 0;
    CIniFile file;
    // A file that can't be read isn't overwritten with an empty list.
    if (file.Read(path) == 0) return 0;
    int kept = 0;
    for (const int index : entries_of(file)) {
        const auto section = section_of(index);
        const auto addon = read_entry(file, section);
        if (DoesFileExist(addon.m_strAddonPath) != 0) {
            write_entry(file, section_of(kept++), addon);
        } else {
            remove_section(file, section);
        }
    }
    file.SetValue(kInfo, kCount, kept);
    return file.Write(path, 1, 0);
}

int CAddonManager::Load(const char16_t* path) {
    if (DoesFileExist(path) == 0) return 0;
    TrimIni(path);
    CIniFile file(path);
    for (const int index : entries_of(file)) {
        auto addon = read_entry(file, section_of(index));
        void* present = nullptr;
        if (m_addons.Lookup(addon.m_strIdentity, present) != FALSE) continue;
        if (addon.m_strLabel == u"Ombrelia RDP") addon.m_strLabel = u"RDP";
        auto owner = std::make_unique<CAddon>(addon);
        m_extensions.AddTail(addon.m_strExt);
        m_addons.SetAt(addon.m_strIdentity, owner.get());
        static_cast<void>(owner.release());
    }
    return 1;
}

int CAddonManager::Reload(const char16_t* path) {
    RemoveAll();
    return Load(path);
}

void CAddonManager::Remove(const char16_t* identity) {
    for (auto position = m_addons.GetStartPosition(); position != nullptr;) {
        CString key;
        void* value = nullptr;
        m_addons.GetNextAssoc(position, key, value);
        auto* const addon = static_cast<CAddon*>(value);
        if (addon->m_strIdentity != identity) continue;
        const std::unique_ptr<CAddon> owner(addon);
        const auto ext = m_extensions.Find(addon->m_strExt);
        if (ext != nullptr) m_extensions.RemoveAt(ext);
        m_addons.RemoveKey(key);
    }
}

void CAddonManager::RemoveAll() {
    m_addons.ForEach([](std::u16string_view, void* addon) {
        const std::unique_ptr<CAddon> owner(static_cast<CAddon*>(addon));
    });
    m_addons.RemoveAll();
    m_extensions.RemoveAll();
}

int CAddonManager::IsOneOfAddonExt(const char16_t* ext) const {
    return m_extensions.Find(ext) != nullptr ? 1 : 0;
}

int CAddonManager::HasOneOfAddonExt(const char16_t* path) const {
    char16_t ext[256] = {};
    if (_wsplitpath_s(path, nullptr, 0, nullptr, 0, nullptr, 0, ext, std::size(ext)) != 0 ||
        ext[0] == u'\0' || ext[1] == u'\0') {
        return 0;
    }
    return IsOneOfAddonExt(ext) != 0 || IsOneOfAddonExt(ext + 1) != 0 ? 1 : 0;
}

CAddon* CAddonManager::GetAddon(const char16_t* ext) const {
    CAddon* found = nullptr;
    m_addons.ForEach([&](std::u16string_view, void* value) {
        auto* const addon = static_cast<CAddon*>(value);
        if (found == nullptr && addon->m_strExt == ext) found = addon;
    });
    return found;
}
