// An application's settings, in the registry or in a private-profile file.
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/app_thread.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/profile/profile.h"
#include "tvutil2/platform/registry/open_key.h"

#include <limits>
#include <optional>
#include <string>

namespace {

// The key of an application, or of a section of it.
class Key {
  public:
    static Key open(const CWinApp& app, const char16_t* section, bool create) {
        std::u16string path = u"Software\\";
        path += app.m_pszRegistryKey;
        path += u'\\';
        path += app.m_pszProfileName != nullptr ? app.m_pszProfileName
                                                : tvutil2::executable_name().c_str();
        if (section != nullptr && *section != 0) path.append(u"\\").append(section);
        Key key;
        const auto error = create
                               ? key.m_key.create(HKEY_CURRENT_USER, path.c_str(), KEY_ALL_ACCESS)
                               : key.m_key.open(HKEY_CURRENT_USER, path.c_str(), KEY_ALL_ACCESS);
        if (error != ERROR_SUCCESS) SetLastError(static_cast<DWORD>(error));
        return key;
    }

    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_key); }
    [[nodiscard]] HKEY get() const { return m_key.get(); }

    // Up to its first zero; a text may grow between the question for its size and its reading.
    [[nodiscard]] std::optional<CString> text(const char16_t* name) const {
        std::u16string value;
        for (;;) {
            DWORD type = REG_NONE;
            auto size = static_cast<DWORD>(value.size() * sizeof(char16_t));
            const auto error = RegQueryValueExW(m_key.get(), name, nullptr, &type,
                                                reinterpret_cast<BYTE*>(value.data()), &size);
            const bool is_short =
                error == ERROR_MORE_DATA || (error == ERROR_SUCCESS && value.empty() && size != 0);
            if (type != REG_SZ || (error != ERROR_SUCCESS && !is_short)) return std::nullopt;
            value.resize((size + 1) / sizeof(char16_t));
            if (!is_short) return CString(value.c_str());
        }
    }

  private:
    tvutil2::OpenKey m_key;
};

BOOL told(LONG error) {
    return error == ERROR_SUCCESS ? TRUE : tvutil2::fail_with(static_cast<DWORD>(error));
}

// A bare name would lie in whatever folder is the current one.
CString profile_file(const CWinApp& app) {
    CString name(app.m_pszProfileName != nullptr ? app.m_pszProfileName
                                                 : (tvutil2::executable_name() + u".INI").c_str());
    if (name.FindOneOf(u"\\/:") >= 0) return name;
    char16_t folder[MAX_PATH] = {};
    if (SHGetFolderPathW(nullptr, CSIDL_APPDATA | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                         folder) < 0) {
        return {};
    }
    return CString(folder) + u'\\' + name;
}

}  // namespace

void CWinApp::SetRegistryKey(const char16_t* key) {
    m_registry_key = key;
    m_profile_name = m_pszAppName != nullptr ? CString(m_pszAppName)
                                             : CString(tvutil2::executable_name().c_str());
    m_pszRegistryKey = m_registry_key.GetString();
    m_pszProfileName = m_profile_name.GetString();
}

void CWinApp::SetRegistryKey(UINT id) {
    CString key;
    if (key.LoadString(id) != 0) SetRegistryKey(key.GetString());
}

UINT CWinApp::GetProfileInt(const char16_t* section, const char16_t* entry, int fallback) {
    const auto missing = static_cast<UINT>(fallback);
    if (section == nullptr || entry == nullptr) return missing;
    if (m_pszRegistryKey == nullptr) {
        return GetPrivateProfileIntW(section, entry, fallback, profile_file(*this).GetString());
    }
    const auto key = Key::open(*this, section, false);
    DWORD value = 0;
    DWORD type = REG_NONE;
    DWORD size = sizeof value;
    const bool is_read =
        key && RegQueryValueExW(key.get(), entry, nullptr, &type, reinterpret_cast<BYTE*>(&value),
                                &size) == ERROR_SUCCESS;
    return is_read && type == REG_DWORD && size == sizeof value ? value : missing;
}

CString CWinApp::GetProfileString(const char16_t* section, const char16_t* entry,
                                  const char16_t* fallback) {
    if (section == nullptr || entry == nullptr) return CString(fallback);
    if (m_pszRegistryKey != nullptr) {
        const auto key = Key::open(*this, section, false);
        return (key ? key.text(entry) : std::nullopt).value_or(CString(fallback));
    }
    const auto file = profile_file(*this);
    for (DWORD size = 4096;; size *= 2) {
        CString text;
        const auto length =
            tvutil2::profile_string(section, entry, fallback,
                                    text.GetBuffer(static_cast<int>(size)), size, file.GetString());
        text.ReleaseBuffer(static_cast<int>(length));
        if (length < size - 1 || size > DWORD{1} << 28) return text;
    }
}

BOOL CWinApp::WriteProfileInt(const char16_t* section, const char16_t* entry, int value) {
    if (section == nullptr || entry == nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    if (m_pszRegistryKey == nullptr) {
        CString text;
        text.Format(u"%d", value);
        return WriteProfileString(section, entry, text.GetString());
    }
    const auto key = Key::open(*this, section, true);
    const auto number = static_cast<DWORD>(value);
    return key ? told(RegSetValueExW(key.get(), entry, 0, REG_DWORD,
                                     reinterpret_cast<const BYTE*>(&number), sizeof number))
               : FALSE;
}

BOOL CWinApp::WriteProfileString(const char16_t* section, const char16_t* entry,
                                 const char16_t* value) {
    // Without a section and an entry, it would be all settings.
    if (section == nullptr || (entry == nullptr && *section == 0)) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    if (m_pszRegistryKey == nullptr) {
        const auto file = profile_file(*this);
        return WritePrivateProfileStringW(section, entry, value, file.GetString());
    }
    if (entry == nullptr) {
        const auto key = Key::open(*this, nullptr, false);
        return key ? told(RegDeleteKeyW(key.get(), section)) : FALSE;
    }
    const auto key = Key::open(*this, section, value != nullptr);
    if (!key) return FALSE;
    if (value == nullptr) return told(RegDeleteValueW(key.get(), entry));
    const auto size = std::char_traits<char16_t>::length(value) + 1;
    if (size > std::numeric_limits<DWORD>::max() / sizeof(char16_t)) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    return told(RegSetValueExW(key.get(), entry, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                               static_cast<DWORD>(size * sizeof(char16_t))));
}
