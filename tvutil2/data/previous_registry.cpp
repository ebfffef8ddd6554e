// What the running application keeps in the registry, when it is of an earlier version.
#include "tvutil2/data/data_import.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/settings/registry.h"

#include <array>
#include <string_view>

namespace {

// Empty without an application that has both names: half a path would be the key of others.
CString application_key() {
    const auto* const app = AfxGetApp();
    if (app == nullptr) return {};
    const CString company(app->m_pszRegistryKey);
    const CString profile(app->m_pszProfileName);
    if (company.IsEmpty() || profile.IsEmpty()) return {};
    return u"Software\\" + company + u'\\' + profile;
}

// Either part that is newer than the stored one makes it old.
bool is_current(const CString& stored, const CString& major, const CString& minor) {
    int position = 0;
    const auto stored_major = stored.Tokenize(u".", position);
    const auto stored_minor = position >= 0 ? stored.Tokenize(u".", position) : CString();
    return !(major > stored_major) && !(minor > stored_minor);
}

}  // namespace

void TvResetPreviousReg(unsigned int major, unsigned int minor) {
    const auto name = application_key();
    if (!name.View().starts_with(u"Software\\Tolvarine")) return;
    CString major_text;
    CString minor_text;
    major_text.Format(u"%u", major);
    minor_text.Format(u"%04u", minor);
    CRegistry key;
    if (key.Open(HKEY_CURRENT_USER, name, 0, KEY_ALL_ACCESS) != 0) {
        const auto stored = key.GetValue(u"RegVersion", CString());
        if (!stored.IsEmpty() && is_current(stored, major_text, minor_text)) return;
        key.Close();
    }
    SHDeleteKeyW(HKEY_CURRENT_USER, name);
    if (key.Open(HKEY_CURRENT_USER, name, 1, KEY_ALL_ACCESS) != 0) {
        key.SetValue(u"RegVersion", (major_text + u'.' + minor_text).GetString());
    }
}

void TvDeleteRebarState() {
    const auto name = application_key();
    CRegistry key;
    if (name.IsEmpty() ||
        key.Open(HKEY_CURRENT_USER, name + u"\\Workspace", 0, KEY_ALL_ACCESS) == 0) {
        return;
    }
    std::array<char16_t, REG_MAX_KEY_NAME + 1> sub_key{};
    for (DWORD i = 0; key.EnumKey(i, sub_key.data(), DWORD{sub_key.size()}) != 0; ++i) {
        if (!std::u16string_view(sub_key.data()).starts_with(u"Rebar")) continue;
        SHDeleteKeyW(key.GetSafeHkey(), sub_key.data());
        return;
    }
}
