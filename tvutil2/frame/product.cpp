#include "tvutil2/frame/product.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>

namespace {

constexpr const char16_t* kProductNames[] = {
    u"Ombrelia",    u"Pelrin", u"Zemt", u"Wendl", u"Dovr", u"Ombrelia 3D", u"Ombrelia Enterprise",
    u"Pelrin/Dovr",
};

struct NamedCode {
    const char16_t* name;
    unsigned int code;
};

constexpr NamedCode kExecutables[] = {
    {u"Ombrelia", tvutil2::kOmbrelia}, {u"OmbreliaClassic", tvutil2::kOmbrelia},
    {u"Vantrosa", tvutil2::kOmbrelia}, {u"VantrosaCore", tvutil2::kOmbrelia},
    {u"Pelrin", tvutil2::kPelrin},     {u"PelrinCore", tvutil2::kPelrin},
    {u"Dovr", tvutil2::kDovr},         {u"Zemt", tvutil2::kZemt},
    {u"ZemtCore", tvutil2::kZemt},
};

constexpr NamedCode kSiblings[] = {
    {u"Ombrelia.exe", tvutil2::kOmbrelia},
    {u"Pelrin.exe", tvutil2::kPelrin},
    {u"Dovr.exe", tvutil2::kDovr},
    {u"Zemt.exe", tvutil2::kZemt},
};

constexpr NamedCode kPackages[] = {
    {u"Grandline", tvutil2::kOmbreliaEnterprise},
    {u"PelrinPlus", tvutil2::kPelrinDovr},
};

CString versioned(const char16_t* format) {
    CString text;
    text.Format(format, tvutil2::kMajorVersion);
    return text;
}

CString installation_fact(unsigned int code, unsigned int major, const char16_t* value) {
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\%d", kProductNames[code], major);
    CRegistry key;
    key.Open(HKEY_LOCAL_MACHINE, path, 0, KEY_READ);
    return key.GetValue(value, CString());
}

// The decimal number at the front of `text`, which then starts behind it.
std::optional<int> take_number(std::u16string_view& text) {
    while (!text.empty() && tvutil2::is_space(text.front())) text.remove_prefix(1);
    const bool is_negative = text.starts_with(u'-');
    if (is_negative || text.starts_with(u'+')) text.remove_prefix(1);
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    std::int64_t value = 0;
    bool has_digits = false;
    for (; !text.empty() && text.front() >= u'0' && text.front() <= u'9'; text.remove_prefix(1)) {
        has_digits = true;
        value = std::min<std::int64_t>(value * 10 + (text.front() - u'0'), kMost);
    }
    if (!has_digits) return std::nullopt;
    return static_cast<int>(is_negative ? -value : value);
}

// The third of three numbers with dots between them.
std::optional<int> third_field(std::u16string_view version) {
    for (int field = 1; field <= 2; ++field) {
        if (!take_number(version) || !version.starts_with(u'.')) return std::nullopt;
        version.remove_prefix(1);
    }
    return take_number(version);
}

}  // namespace

const CString DOVR_CLASS_NAME = versioned(u"Dovr%d:MainWnd");
const CString PELRIN_CLASS_NAME = versioned(u"Pelrin%d:MainWnd");
const CString VANTROSA_CLASS_NAME = versioned(u"Vantrosa%d:MainWnd");
const CString VANTROSA_CORE_CLASSNAME = versioned(u"Vantrosa%d::Core");
const CString OMBR_CLASS_NAME = versioned(u"Ombrelia%d");
const CString PELRIN_CORE_CLASS_NAME = versioned(u"Pelrin%d::CoreApp");
const CString PELRIN_FM_CLASS_NAME = versioned(u"Pelrin%d::FrameMgr");
const CString VANTROSA_FM_CLASS_NAME = versioned(u"Vantrosa%d::FrameMgr");
const CString PELRIN_VIEWER_CLASS_NAME = versioned(u"Pelrin%d::MainFrame");
const CString VANTROSA_VIEWER_CLASSNAME = versioned(u"Vantrosa%d::MainFrame");
const CString CFM_VERSION = versioned(u"%d");

CString TvGetProductName(unsigned int code) {
    return code < std::size(kProductNames) ? CString(kProductNames[code]) : CString();
}

int TvGetProgramCodeFromInstalled() {
    char16_t path[MAX_PATH] = {};
    char16_t drive[3];
    char16_t folder[256];
    char16_t name[256];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    if (_wsplitpath_s(path, drive, std::size(drive), folder, std::size(folder), name,
                      std::size(name), nullptr, 0) != 0) {
        return 0;
    }
    for (const auto& [executable, code] : kExecutables) {
        if (lstrcmpiW(name, executable) == 0) return static_cast<int>(code);
    }
    for (const auto& [sibling, code] : kSiblings) {
        if (tvutil2::is_found(CString(drive) + folder + sibling)) return static_cast<int>(code);
    }
    return 0;
}

CString TvGetProductVersion(unsigned int code, unsigned int major) {
    return installation_fact(code, major, u"Version");
}

CString TvGetResellerName(unsigned int code, unsigned int major) {
    return installation_fact(code, major, u"Reseller");
}

CString TvGetProductBuildVersion(unsigned int code, unsigned int major) {
    const auto build = third_field(TvGetProductVersion(code, major).View());
    CString text;
    if (build.value_or(0) != 0) text.Format(u"%04d", *build);
    return text;
}

unsigned int TvGetPackageCode(unsigned int code, unsigned int major) {
    const auto package = installation_fact(code, major, u"Package");
    for (const auto& [name, package_code] : kPackages) {
        if (package.CompareNoCase(name) == 0) return package_code;
    }
    return code;
}

unsigned int TvGetPackageType() {
    return 1;
}

int TvChangeDataFolder() {
    return 1;
}
