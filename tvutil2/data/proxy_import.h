// The proxies of version 6 and before, which are keys of the registry, as files.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/settings/registry.h"

#include <vector>

namespace tvutil2 {

class CopyObserver;

struct ProxyRecord {
    DWORD type = 2;
    DWORD port = 1080;
    CString host, user, jump_host;
    CString password;  ///< as it is stored
};

/// The names of the keys in HKCU\Software\Tolvarine\Proxy.
TVUTIL_API std::vector<CString> proxy_names();

/// The values of such a key. What is missing, or of another type, is as above.
[[nodiscard]] ProxyRecord read_proxy(const CRegistry& key);

/// Puts a proxy into "<name>.ini" in `folder`, in one step, beside the entries that the file holds.
/// False with the last error: ERROR_INVALID_NAME for a name that would lead elsewhere, else why the
/// file couldn't be written.
TVUTIL_API bool write_proxy(const ProxyRecord& proxy, const CString& name, const CString& folder);

/// Does that with every proxy, into "Common\Proxy" of a data folder. What fails is passed over; the
/// observer, which may be null, hears of it by the key's path.
void import_proxies(const CString& data_folder, CopyObserver* observer);

}  // namespace tvutil2
