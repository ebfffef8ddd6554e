#include "tvutil2/data/proxy_import.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/folder_copy.h"
#include "tvutil2/settings/ini_file.h"
#include "tvutil2/settings/ini_reader.h"
#include "tvutil2/settings/ini_writer.h"

#include <array>

namespace tvutil2 {
namespace {

constexpr auto kProxyKey = u"Software\\Tolvarine\\Proxy";
constexpr auto kSection = u"SECTION";

}  // namespace

std::vector<CString> proxy_names() {
    CRegistry key;
    std::vector<CString> names;
    key.Open(HKEY_CURRENT_USER, kProxyKey, 0, KEY_READ);
    std::array<char16_t, REG_MAX_KEY_NAME + 1> name{};
    for (DWORD i = 0; key.EnumKey(i, name.data(), DWORD{name.size()}) != 0; ++i) {
        names.emplace_back(name.data());
    }
    return names;
}

ProxyRecord read_proxy(const CRegistry& key) {
    const CString empty;
    ProxyRecord proxy;
    proxy.type = key.GetValue(u"Type", proxy.type);
    proxy.host = key.GetValue(u"Host", empty);
    proxy.port = key.GetValue(u"Port", proxy.port);
    proxy.user = key.GetValue(u"UserName", empty);
    proxy.jump_host = key.GetValue(u"Proxy", empty);
    proxy.password = key.GetValue(u"Password", empty);
    return proxy;
}

bool write_proxy(const ProxyRecord& proxy, const CString& name, const CString& folder) {
    if (name.IsEmpty() || name.FindOneOf(u"\\/") >= 0) return fail_with(ERROR_INVALID_NAME);
    CString file = folder;
    AppendPath(file, name + u".ini");
    CIniFile document;
    read_ini(file, document);
    document.SetValue(kSection, u"TYPE", static_cast<int>(proxy.type));
    document.SetValue(kSection, u"HOST", proxy.host);
    document.SetValue(kSection, u"PORT", static_cast<int>(proxy.port));
    document.SetValue(kSection, u"USERNAME", proxy.user);
    document.SetValue(kSection, u"JUMPHOST", proxy.jump_host);
    document.SetValue(kSection, u"PASSWORD", proxy.password);
    return replace_ini(file, document);
}

void import_proxies(const CString& data_folder, CopyObserver* observer) {
    CString folder = data_folder;
    AppendPath(folder, u"Common\\Proxy");
    ensure_private_folder(folder);
    CRegistry proxies;
    if (proxies.Open(HKEY_CURRENT_USER, kProxyKey, 1, KEY_ALL_ACCESS) == 0) return;
    for (const auto& name : proxy_names()) {
        CRegistry proxy;
        const bool is_written = proxy.Open(&proxies, name, 0, KEY_ALL_ACCESS) != 0 &&
                                write_proxy(read_proxy(proxy), name, folder);
        const auto error = GetLastError();
        if (observer == nullptr) continue;
        if (is_written) {
            observer->copied();
        } else {
            const auto path = CString(u"HKCU\\") + kProxyKey + u'\\' + name;
            observer->failed(path, error);
        }
    }
}

}  // namespace tvutil2
