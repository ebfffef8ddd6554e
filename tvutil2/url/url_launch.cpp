#include "tvutil2/url/url_launch.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"
#include "tvutil2/url/url_info.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr const char16_t* kOmbreliaName = u"Ombrelia";
constexpr const char16_t* kPelrinName = u"Pelrin";
constexpr const char16_t* kDovrName = u"Dovr";

struct Scheme {
    const char16_t* name;
    const char16_t* product;
    bool takes_url;  // else the host alone
};

constexpr Scheme kSchemes[] = {
    {u"xdm", kOmbreliaName, false}, {u"xdmcp", kOmbreliaName, false}, {u"ssh", kPelrinName, true},
    {u"telnet", kPelrinName, true}, {u"rlogin", kPelrinName, true},   {u"ftp", kDovrName, true},
    {u"sftp", kDovrName, true},
};

// The whole name: what a comparison passes over would still be written into the URL.
const Scheme* find_scheme(const CString& name) {
    for (const auto& scheme : kSchemes) {
        const bool is_as_long = name.View().size() == std::u16string_view(scheme.name).size();
        if (is_as_long && name.CompareNoCase(scheme.name) == 0) return &scheme;
    }
    return nullptr;
}

// A name or an address, by the characters that one may have. What comes out of a URL as a host
// goes to name servers and into command lines: nothing else is handed on, and no option either.
bool is_host(std::u16string_view text) {
    constexpr std::u16string_view kMarks = u"-._~:[]%";
    const auto is_of_host = [kMarks](char16_t c) {
        if (c >= 0x80) return c > 0x9F && !tvutil2::is_space(c);
        return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') ||
               kMarks.find(c) != std::u16string_view::npos;
    };
    return !text.empty() && text.front() != u'-' &&
           std::all_of(text.begin(), text.end(), is_of_host);
}

// One option and one argument, whatever the record holds.
CString arguments_for(const CUrlInfo& info, const Scheme& scheme) {
    CString argument = info.m_strHost;
    if (scheme.takes_url) info.MakeURL(argument, 0, 1);
    return CString(scheme.takes_url ? u"-url " : u":[0] -query ") +
           tvutil2::quoted_argument(argument.View()).c_str();
}

CString executable_in(const CString& folder, const char16_t* name) {
    CString path = folder;
    AppendPath(path, name);
    return path + u".exe";
}

CString path_beside_executable(const char16_t* name) {
    char16_t own[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    CString path;
    ReplaceFnameOfPath(path, own, name);
    // The host's programs need no extension; the family's have one.
    char16_t extension[256] = {};
    _wsplitpath_s(own, nullptr, 0, nullptr, 0, nullptr, 0, extension, std::size(extension));
    return *extension == 0 ? path + u".exe" : path;
}

// A text value of at most `Size` characters; empty when it is missing or of another type.
template <std::size_t Size>
CString read_text(CRegistry& key, const char16_t* name) {
    char16_t text[Size + 1] = {};
    return key.QueryValue(name, text, Size) != 0 ? CString(text) : CString();
}

// What one installed version says of itself. An empty folder rejects it.
struct Installation {
    CString version;
    CString folder;
};

Installation read_installation(HKEY product_key, const char16_t* product, const char16_t* subkey) {
    CRegistry key;
    if (key.Open(product_key, subkey, 0, KEY_READ) == 0) return {};
    CString version = subkey;
    if (lstrcmpiW(product, kPelrinName) == 0 || lstrcmpiW(product, kDovrName) == 0) {
        version = read_text<32>(key, u"Version");
        if (version.IsEmpty() || lstrcmpW(version, u"1.0") <= 0) return {};
    }
    auto folder = read_text<MAX_PATH>(key, u"Path");
    if (folder.IsEmpty() && lstrcmpiW(product, kOmbreliaName) == 0) {
        CRegistry full;
        if (full.Open(product_key, subkey, 0, KEY_ALL_ACCESS) != 0) {
            folder = read_text<MAX_PATH>(full, nullptr);
        }
    }
    return {version, folder};
}

// The installed version that sorts highest as text and is really there: its number, or 0.
unsigned int find_installation(const char16_t* name, CString& folder) {
    CRegistry product;
    const auto key_name = CString(u"Software\\Tolvarine\\") + name;
    if (product.Open(HKEY_LOCAL_MACHINE, key_name, 0, KEY_READ) == 0) return 0;
    CString best;
    // Version numbers are short: a longer name ends the walk, as any other failure does.
    constexpr DWORD kLongestName = 8;
    char16_t subkey[kLongestName];
    for (DWORD i = 0; product.EnumKey(i, subkey, kLongestName) != 0; ++i) {
        if (lstrcmpW(subkey, best) < 0) continue;
        const auto found = read_installation(product.GetSafeHkey(), name, subkey);
        if (found.folder.IsEmpty() || DoesFolderExist(found.folder) == 0 ||
            DoesFileExist(executable_in(found.folder, name)) == 0) {
            continue;
        }
        best = found.version;
        folder = found.folder;
    }
    return best.IsEmpty() ? 0 : static_cast<unsigned int>(_wtoi(best));
}

}  // namespace

int ExecuteURL(const char16_t* url) {
    CUrlInfo info;
    return info.Parse_URL(url, 1) != 0 ? ExecuteURL(info) : 0;
}

int ExecuteURL(const CUrlInfo& info) {
    const auto* const scheme = find_scheme(info.m_strScheme);
    CString path;
    if (scheme == nullptr || !is_host(info.m_strHost.View())) return 0;
    if (GetProductPath(scheme->product, path) == 0) return 0;
    const auto arguments = arguments_for(info, *scheme);
    auto* const result = ShellExecuteW(nullptr, nullptr, path, arguments, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<std::intptr_t>(result) > 32 ? 1 : 0;
}

unsigned int GetProductPath(const char16_t* name, CString& path) {
    path = path_beside_executable(name);
    if (DoesFileExist(path) != 0) return tvutil2::kMajorVersion;
    path.Empty();
    const auto version = find_installation(name, path);
    if (version == 0) return 0;
    path = executable_in(path, name);
    return DoesFileExist(path) != 0 ? version : 0;
}

CString GetMsgAckTranslation() {
    constexpr unsigned int kAcknowledgment = 14126;
    return MLS_TVUTIL_ID2STR_DLL(tvutil2::resource_instance(), kAcknowledgment);
}
