#include "tvutil2/services/environment.h"

#include "tvutil2/frame/buffer.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/file.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/account.h"
#include "tvutil2/platform/registry/open_key.h"
#include "tvutil2/platform/system/error_text.h"
#include "tvutil2/platform/system/os_version.h"
#include "tvutil2/platform/system/version_info.h"

#include <array>
#include <cstring>
#include <mutex>
#include <optional>

namespace {

constexpr auto kFactsKey = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

// Empty where a value is missing.
struct Facts {
    CString product, build, display;
};

std::optional<CString> fact(HKEY key, const char16_t* name) {
    std::array<char16_t, 1024> text{};
    DWORD type = 0;
    DWORD size = sizeof text;
    const auto error =
        RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
    const bool is_text = error == ERROR_SUCCESS && (type == REG_SZ || type == REG_EXPAND_SZ);
    const std::size_t units = size / sizeof(char16_t);
    if (!is_text || size % sizeof(char16_t) != 0 || units == 0 || text[units - 1] != 0) {
        return std::nullopt;
    }
    return text.data();
}

// Nothing when the registry can't be read. The host's where the key has no facts: it may be there
// for the sake of keys below it, such as those of the networks.
std::optional<Facts> facts() {
    tvutil2::OpenKey key;
    const auto error = key.open(HKEY_LOCAL_MACHINE, kFactsKey, KEY_READ);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return std::nullopt;
    const bool is_there = error == ERROR_SUCCESS;
    const auto read = [&](const char16_t* name) {
        return is_there ? fact(key.get(), name) : std::nullopt;
    };
    const auto product = read(u"ProductName");
    const auto build = read(u"CurrentBuildNumber");
    const auto display = read(u"DisplayVersion");
    if (product || build || display) {
        return Facts{product.value_or(CString()), build.value_or(CString()),
                     display.value_or(CString())};
    }
    const auto host = tvutil2::host_facts();
    return Facts{host.product.c_str(), host.build.c_str(), {}};
}

// A name that is asked for until the system tells it, and then kept.
class KeptName {
  public:
    CString get(BOOL (*ask)(char16_t*, DWORD*)) {
        const std::lock_guard guard(m_lock);
        if (m_name.IsEmpty()) {
            constexpr DWORD kRoom = 32767;
            DWORD size = kRoom;
            CString name;
            const BOOL is_known = ask(name.GetBuffer(kRoom), &size);
            name.ReleaseBuffer();
            if (is_known != FALSE) m_name = name.GetString();
        }
        return m_name;
    }

  private:
    std::mutex m_lock;
    CString m_name;
};

// The machine that an executable is for; 0 when the file isn't one or can't be read.
WORD machine_of(const CString& path) {
    constexpr std::size_t kDosHeader = 64;
    constexpr std::size_t kPeHeaders = 248;
    constexpr std::size_t kMachine = 4;
    CFile file;
    if (file.Open(path, CFile::modeRead | CFile::shareDenyNone) == FALSE) return 0;
    try {
        std::array<unsigned char, kPeHeaders> bytes{};
        if (file.Read(bytes.data(), kDosHeader) != kDosHeader) return 0;
        DWORD offset = 0;
        std::memcpy(&offset, bytes.data() + kDosHeader - sizeof offset, sizeof offset);
        file.Seek(offset, CFile::begin);
        if (file.Read(bytes.data(), kPeHeaders) != kPeHeaders) return 0;
        WORD machine = 0;
        std::memcpy(&machine, bytes.data() + kMachine, sizeof machine);
        return machine;
    } catch (const CFileException&) {
        return 0;
    }
}

}  // namespace

CString TvGetOSFriendlyName() {
    constexpr int kFirstOf11 = 22000;
    const auto found = facts();
    CString name;
    if (!found) return name;
    if (_wtoi(found->build) >= kFirstOf11) {
        name.Format(u"Windows 11 %s Build %s", found->display, found->build);
        return name;
    }
    name.Format(u"%s Build %s", found->product, found->build);
    if (!found->display.IsEmpty()) name += u" " + found->display;
    return name;
}

unsigned int TvGetOSBuildVersion() {
    const auto found = facts();
    return found ? static_cast<unsigned int>(_wtoi(found->build)) : 0;
}

int TvIsWindows10OrGreater() {
    constexpr DWORD kNumbers = VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR;
    OSVERSIONINFOEXW asked{};
    asked.dwOSVersionInfoSize = sizeof asked;
    asked.dwMajorVersion = 10;
    return VerifyVersionInfoW(&asked, kNumbers,
                              VerSetConditionMask(0, kNumbers, VER_GREATER_EQUAL));
}

CString TvGetComputerName() {
    static KeptName name;
    return name.get(GetComputerNameW);
}

CString TvGetUserName() {
    static KeptName name;
    return name.get(GetUserNameW);
}

int TvGetFileVersion(const char16_t* path, CString& version) {
    const DWORD size = GetFileVersionInfoSizeW(path, nullptr);
    if (size == 0) return 0;
    CBuffer block;
    auto* const start = block.AppendSpace(size);
    void* value = nullptr;
    UINT value_size = 0;
    if (GetFileVersionInfoW(path, 0, size, start) == FALSE ||
        VerQueryValueW(start, u"\\", &value, &value_size) == FALSE) {
        return 0;
    }
    VS_FIXEDFILEINFO info{};
    if (value_size > sizeof info ||
        value_size < offsetof(VS_FIXEDFILEINFO, dwFileVersionLS) + sizeof(DWORD)) {
        return 0;
    }
    std::memcpy(&info, value, value_size);
    version.Format(u"%d.%d.%d.%d", HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                   HIWORD(info.dwFileVersionLS), LOWORD(info.dwFileVersionLS));
    return 1;
}

void GetLastErrorString(CString& text, DWORD error) {
    constexpr DWORD kNeutralLanguage = 0x0400;
    if (error == 0) return;
    char16_t* found = nullptr;
    if (FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                           FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, error, kNeutralLanguage, reinterpret_cast<char16_t*>(&found), 0,
                       nullptr) == 0) {
        return;
    }
    text = found;
    LocalFree(reinterpret_cast<HLOCAL>(found));
}

int TvCheckMiddlewareValid(const CString& path) {
    constexpr WORD kX86 = 0x014C;
    AfxMessageBox(machine_of(path) == kX86 ? u"The middleware is not architecure matching."
                                           : u"The middleware is not appropriate.");
    return 0;
}
