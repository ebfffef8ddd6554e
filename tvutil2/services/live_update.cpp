#include "tvutil2/services/live_update.h"

#include "tvutil2/data/files.h"
#include "tvutil2/diag/app_log.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/guid.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/processes.h"
#include "tvutil2/services/signature.h"
#include "tvutil2/services/update_schedule.h"
#include "tvutil2/settings/registry.h"

#include <iterator>
#include <memory>

namespace {

constexpr int kEnabled = 1;
constexpr unsigned int kInterval = 7;  // days
constexpr const char16_t* kLastCheck = u"LastUpdateCheck";
constexpr const char16_t* kMagicTime = u"MagicTime";
constexpr const char16_t* kUpdateId = u"UpdateID";

SYSTEMTIME local_time() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return now;
}

bool open_key(CRegistry& key, HKEY root, unsigned int code, unsigned int major,
              const char16_t* tail, int create, DWORD access) {
    const auto product = TvGetProductName(code);
    if (product.IsEmpty()) return false;
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\%d%s", product, major, tail);
    return key.Open(root, path, create, access) != 0;
}

bool open_update_key(CRegistry& key, unsigned int code, unsigned int major, int create = 1) {
    return open_key(key, HKEY_CURRENT_USER, code, major, u"\\LiveUpdate", create, KEY_ALL_ACCESS);
}

// All zeros, which is no date, for fewer bytes than a time has.
std::optional<SYSTEMTIME> stored_time(const CRegistry& key, const char16_t* name) {
    SYSTEMTIME time{};
    DWORD size = sizeof time;
    if (key.QueryValue(name, reinterpret_cast<unsigned char*>(&time), &size) == 0) {
        return std::nullopt;
    }
    return size == sizeof time ? time : SYSTEMTIME{};
}

bool store_time(CRegistry& key, const char16_t* name, const SYSTEMTIME& time) {
    return key.SetValue(name, reinterpret_cast<const unsigned char*>(&time), sizeof time) != 0;
}

// The earliest one for what is no date.
FILETIME file_time(const SYSTEMTIME& date) {
    FILETIME time{};
    SystemTimeToFileTime(&date, &time);
    return time;
}

bool is_later(const SYSTEMTIME& a, const SYSTEMTIME& b) {
    const auto left = file_time(a);
    const auto right = file_time(b);
    return CompareFileTime(&left, &right) > 0;
}

// Whether the machine asks for the defaults anew; the user's stamp says then that it was heard.
bool take_reset(unsigned int code, unsigned int major) {
    CRegistry machine;
    if (!open_key(machine, HKEY_LOCAL_MACHINE, code, major, u"", 0, KEY_READ)) return false;
    const auto asked = stored_time(machine, kMagicTime);
    if (!asked) return false;
    CRegistry user;
    if (!open_update_key(user, code, major)) return true;
    const auto heard = stored_time(user, kMagicTime);
    if (heard && !is_later(*asked, *heard)) return false;
    store_time(user, kMagicTime, local_time());
    return true;
}

void start_module(const CString& path, const CString& switches) {
    auto line = path + switches;
    STARTUPINFOW start_up{};
    start_up.cb = sizeof start_up;
    PROCESS_INFORMATION started{};
    if (CreateProcessW(path, line.GetBuffer(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &start_up, &started) != FALSE) {
        CloseHandle(started.hThread);
        CloseHandle(started.hProcess);
    }
}

struct CheckArguments {
    int force;
    int checked;
};

DWORD test_and_start(void* argument) {
    const std::unique_ptr<CheckArguments> check(static_cast<CheckArguments*>(argument));
    const auto path = tvutil2::update_module_path();
    if (TvCheckFileIsTolvarineSigned(path) == 0) return 0;
    start_module(path, tvutil2::update_switches(check->force, check->checked));
    return 0;
}

tvutil2::UpdateCheck run_check(unsigned int code, unsigned int major, int force, int checked,
                               HANDLE& thread) {
    const auto now = local_time();
    __WriteInfoAppLog(1, u"Update check for new version");
    CRegistry key;
    if (!open_update_key(key, code, major)) return tvutil2::UpdateCheck::not_stored;
    const bool was_checked = stored_time(key, kLastCheck).has_value();
    if (!store_time(key, kLastCheck, now)) return tvutil2::UpdateCheck::not_stored;
    TvSetLiveUpdateData(code, major);
    if (!was_checked && force == 0) return tvutil2::UpdateCheck::clock_started;
    __WriteInfoAppLog(1, u"Run Update checker with thread");
    auto arguments = std::make_unique<CheckArguments>(CheckArguments{force, checked});
    thread = CreateThread(nullptr, 0, &test_and_start, arguments.get(), 0, nullptr);
    if (thread != nullptr) static_cast<void>(arguments.release());
    return tvutil2::UpdateCheck::begun;
}

// A value of a URL's query.
CString escaped(const CString& text) {
    constexpr std::string_view kMarks = "-._~";
    CString result;
    for (const char c : tvutil2::to_utf8_lossy(text.View())) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                              (c >= '0' && c <= '9') || kMarks.find(c) != kMarks.npos;
        if (is_plain) {
            result += static_cast<char16_t>(byte);
        } else {
            result.AppendFormat(u"%%%02X", static_cast<unsigned int>(byte));
        }
    }
    return result;
}

CString stored_id(const CRegistry& key) {
    constexpr DWORD kLongest = 260;
    char16_t id[kLongest + 1] = {};
    return key.QueryValue(kUpdateId, id, kLongest) != 0 ? CString(id) : CString();
}

CString new_id() {
    GUID id{};
    char16_t* text = nullptr;
    if (FAILED(CoCreateGuid(&id)) || UuidToStringW(&id, &text) != RPC_S_OK) return {};
    CString result(text);
    RpcStringFreeW(&text);
    result.Replace(u'-', u'_');
    return result;
}

// Held while an id is made, so that no process of the user gets one that another one replaces. Who
// can't have it in time goes on without.
class IdLock {
  public:
    IdLock() : m_mutex(CreateMutexW(nullptr, FALSE, u"TolvarineUpdateID")) {
        constexpr DWORD kPatience = 2000;
        const auto result =
            m_mutex != nullptr ? WaitForSingleObject(m_mutex, kPatience) : WAIT_FAILED;
        m_is_held = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED_0;
    }
    ~IdLock() {
        if (m_is_held) ReleaseMutex(m_mutex);
        if (m_mutex != nullptr) CloseHandle(m_mutex);
    }
    IdLock(const IdLock&) = delete;
    IdLock& operator=(const IdLock&) = delete;

  private:
    HANDLE m_mutex;
    bool m_is_held = false;
};

CString common_id() {
    constexpr const char16_t* kKey = u"Software\\Tolvarine\\Common\\LiveUpdate";
    CRegistry key;
    if (key.Open(HKEY_CURRENT_USER, kKey, 1, KEY_ALL_ACCESS) == 0 &&
        key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common", 1, KEY_ALL_ACCESS) == 0) {
        return {};
    }
    if (auto id = stored_id(key); !id.IsEmpty()) return id;
    const IdLock lock;
    if (auto id = stored_id(key); !id.IsEmpty()) return id;
    CString former_path;
    former_path.Format(u"Software\\Tolvarine\\Common\\%d\\LiveUpdate", tvutil2::kMajorVersion);
    CRegistry former;
    former.Open(HKEY_CURRENT_USER, former_path, 0, KEY_ALL_ACCESS);
    auto id = stored_id(former);
    if (id.IsEmpty()) id = new_id();
    if (!id.IsEmpty()) key.SetValue(kUpdateId, id);
    return id;
}

}  // namespace

void TvSetLiveUpdate(unsigned int code, unsigned int major, int enable, unsigned int interval) {
    CRegistry key;
    if (!open_update_key(key, code, major)) return;
    key.SetValue(u"EnableLiveUpdate", static_cast<DWORD>(enable));
    key.SetValue(u"LiveUpdateInterval", DWORD{interval});
}

void TvGetLiveUpdateInformation(unsigned int code, unsigned int major, int& enable,
                                unsigned int& interval) {
    enable = kEnabled;
    interval = kInterval;
    if (take_reset(code, major)) TvSetLiveUpdate(code, major, kEnabled, kInterval);
    CRegistry key;
    if (!open_update_key(key, code, major, 0)) return;
    enable = static_cast<int>(key.GetValue(u"EnableLiveUpdate", DWORD{kEnabled}));
    interval = key.GetValue(u"LiveUpdateInterval", DWORD{kInterval});
}

int TvCheckLiveUpdate(unsigned int code, unsigned int major, int force, int checked) {
    HANDLE thread = nullptr;
    tvutil2::check_live_update(code, major, force, checked, thread);
    if (thread != nullptr) CloseHandle(thread);
    return 0;
}

int TvForceLiveUpdate(unsigned int code, unsigned int major) {
    const auto path = tvutil2::update_module_path();
    if (TvIsExistUpdateChecker() == 0 || TvCheckFileIsTolvarineSigned(path) == 0) return 0;
    TvSetLiveUpdateData(code, major);
    start_module(path, u" /force");
    return 1;
}

int TvIsUpdateIntervalPassed(unsigned int code, unsigned int major, unsigned int interval) {
    if (interval == 0) return 1;
    CRegistry key;
    if (!open_update_key(key, code, major)) return 1;
    const auto now = local_time();
    const auto last = stored_time(key, kLastCheck);
    if (!last) return 1;
    using tvutil2::schedule_seconds;
    return tvutil2::is_other_period(schedule_seconds(*last), schedule_seconds(now), interval) ? 1
                                                                                              : 0;
}

void TvSetLastUpdateCheck(unsigned int code, unsigned int major) {
    CRegistry key;
    if (open_update_key(key, code, major)) store_time(key, kLastCheck, local_time());
}

void TvSetLiveUpdateData(unsigned int code, unsigned int major) {
    CRegistry product;
    if (open_key(product, HKEY_CURRENT_USER, code, major, u"", 1, KEY_ALL_ACCESS)) {
        product.SetValue(u"Version", TvGetProductVersion(code, major));
        product.SetValue(u"Reseller", TvGetResellerName(code, major));
    }
    CRegistry key;
    if (!open_update_key(key, code, major)) return;
    key.SetValue(u"LiveUpdateData", tvutil2::update_record(code, major, 1));
    key.SetValue(u"LiveUpdateDataE", tvutil2::update_record(code, major, 2));
    key.SetValue(u"LiveUpdateHistoryData", tvutil2::update_record(code, major, 8));
}

int TvIsExistUpdateChecker() {
    const auto path = tvutil2::update_module_path();
    return !path.IsEmpty() && DoesFileExist(path) != 0 ? 1 : 0;
}

const char16_t* TvCommonGUID() {
    static CString id;
    id = common_id();
    return id;
}

namespace tvutil2 {

UpdateCheck check_live_update(unsigned int code, unsigned int major, int force, int checked,
                              HANDLE& thread) {
    thread = nullptr;
    __WriteDebugAppLog(1, u"Check Live Update : %d", force);
    if (TvIsExistUpdateChecker() == 0) {
        __WriteDebugAppLog(1, u"Live Update Module Not Found");
        return UpdateCheck::no_module;
    }
    int enable = 0;
    unsigned int interval = 0;
    TvGetLiveUpdateInformation(code, major, enable, interval);
    const bool is_due =
        force != 0 || (enable != 0 && TvIsUpdateIntervalPassed(code, major, interval) != 0);
    return is_due ? run_check(code, major, force, checked, thread) : UpdateCheck::not_due;
}

std::optional<SYSTEMTIME> last_update_check(unsigned int code, unsigned int major) {
    CRegistry key;
    if (!open_update_key(key, code, major, 0)) return std::nullopt;
    return stored_time(key, kLastCheck);
}

CString update_module_path() {
    char16_t own[MAX_PATH] = {};
    char16_t drive[3] = {};
    char16_t folder[256] = {};
    const auto length = GetModuleFileNameW(nullptr, own, MAX_PATH);
    if (length == 0 || length >= MAX_PATH ||
        _wsplitpath_s(own, drive, std::size(drive), folder, std::size(folder), nullptr, 0, nullptr,
                      0) != 0) {
        return {};
    }
    return CString(drive) + folder + u"LiveUpdate.exe";
}

CString update_record(unsigned int code, unsigned int major, unsigned int kind) {
    CString record;
    if (TvGetProductName(code).IsEmpty()) return record;
    record.Format(u"kind=%u&product=%u&major=%u&package=%u&version=%s&reseller=%s", kind, code,
                  major, TvGetPackageCode(code, major), escaped(TvGetProductVersion(code, major)),
                  escaped(TvGetResellerName(code, major)));
    return record;
}

}  // namespace tvutil2
