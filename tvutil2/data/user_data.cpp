#include "tvutil2/data/user_data.h"

#include "tvutil2/data/files.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/registry/open_key.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <string_view>

namespace {

constexpr unsigned int kFolderNotHad = 14136;
constexpr auto kDataKey = u"Software\\Tolvarine\\Common\\8\\UserData";
constexpr auto kDataKeyV5 = u"Software\\Tolvarine\\Common\\5\\UserData";
constexpr auto kPathValue = u"UserDataPath";
constexpr auto kPreviousFolder = u"\\Tolvarine";
constexpr int kReadAndWrite = 6;

/// A path as the interface hands it out: up to 259 units and a zero.
using PathBuffer = std::array<char16_t, MAX_PATH>;

// A key of the user's hive, null when it couldn't be opened.
class Key {
  public:
    static Key open(const char16_t* name) {
        Key key;
        key.m_key.open(HKEY_CURRENT_USER, name, KEY_ALL_ACCESS);
        return key;
    }
    static Key create(const char16_t* name) {
        Key key;
        key.m_key.create(HKEY_CURRENT_USER, name, KEY_ALL_ACCESS);
        return key;
    }

    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_key); }

    // The stored path; empty when there is none. Nothing when there may be one that can't be read
    // now or has no room: it mustn't be taken for missing, since what is missing gets replaced.
    [[nodiscard]] std::optional<CString> stored_path() const {
        std::array<char16_t, MAX_PATH + 1> text{};
        DWORD type = REG_SZ;
        DWORD size = MAX_PATH * sizeof(char16_t);
        const auto error = RegQueryValueExW(m_key.get(), kPathValue, nullptr, &type,
                                            reinterpret_cast<BYTE*>(text.data()), &size);
        if (error == ERROR_FILE_NOT_FOUND) return CString();
        if (error == ERROR_MORE_DATA && type != REG_SZ) return CString();
        if (error != ERROR_SUCCESS) return std::nullopt;
        if (type != REG_SZ) return CString();
        text[size / sizeof(char16_t)] = 0;
        CString path(text.data());
        if (path.GetLength() >= static_cast<int>(MAX_PATH)) return std::nullopt;
        return path;
    }

    // Without its zero, as every text value of the family is stored.
    void store_path(const char16_t* path) const {
        const std::u16string_view text(path);
        RegSetValueExW(m_key.get(), kPathValue, 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(text.data()),
                       static_cast<DWORD>(text.size() * sizeof(char16_t)));
    }

  private:
    tvutil2::OpenKey m_key;
};

// A path that has no room makes `out` empty: cut, it would name another folder.
bool put(std::u16string_view path, char16_t* out) {
    const bool has_room = path.size() < MAX_PATH;
    out[has_room ? path.copy(out, MAX_PATH - 1) : 0] = 0;
    return has_room;
}

std::optional<CString> known_folder(int folder) {
    PathBuffer path;
    if (FAILED(SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path.data()))) {
        return std::nullopt;
    }
    return CString(path.data());
}

CString with_version_folder(const CString& base) {
    return base + u"\\Tolvarine Computer\\" + CFM_VERSION;
}

// What stands in for a data folder that can't be had: a place where the program at hand can go on
// working, closed to other persons since settings may hold secrets.
CString fallback_folder() {
    PathBuffer path;
    const auto length = GetTempPathW(MAX_PATH, path.data());
    if (length == 0 || length >= MAX_PATH) return u"\\temp";
    return CString(path.data()).TrimRight(u'\\');
}

// Common application data, or a folder beside the running executable's.
CString common_base() {
    if (auto folder = known_folder(CSIDL_COMMON_APPDATA)) return *folder;
    constexpr DWORD kLongestPath = 32768;
    CString path;
    const auto length = GetModuleFileNameW(nullptr, path.GetBuffer(kLongestPath), kLongestPath);
    path.ReleaseBuffer(static_cast<int>(std::min(length, kLongestPath)));
    const int separator = path.ReverseFind(u'\\');
    return separator > 0 ? path.Left(separator) + u"Common" : path;
}

// A path that is found once and handed out by address for the life of the process.
class CachedPath {
  public:
    // `find` runs at the first call, and again when `refresh` is set. An empty text isn't kept.
    template <class Find>
    const char16_t* get(bool refresh, Find find) {
        if (!refresh && m_is_filled.load(std::memory_order_acquire)) return m_text.data();
        const std::lock_guard guard(m_lock);
        if (!refresh && m_is_filled.load(std::memory_order_relaxed)) return m_text.data();
        const CString path = find();
        // A refresh that finds what was there writes nothing: other threads may be reading.
        if (path != CString(m_text.data())) put(path.View(), m_text.data());
        m_is_filled.store(m_text[0] != 0, std::memory_order_release);
        return m_text.data();
    }

    std::mutex& lock() { return m_lock; }

  private:
    std::mutex m_lock;
    std::atomic<bool> m_is_filled{false};
    PathBuffer m_text{};
};

constinit CachedPath g_user_data;
constinit CachedPath g_common_data;
constinit CachedPath g_previous_common_data;
constinit CachedPath g_credentials;
constinit CachedPath g_default_data;

// Credentials lie below the user's data, and are asked for first.
const tvutil2::ForkLock g_fork_safe[] = {
    {g_credentials.lock(), tvutil2::ForkRank::caller},
    {g_user_data.lock(), tvutil2::ForkRank::caller},
    {g_common_data.lock(), tvutil2::ForkRank::caller},
    {g_previous_common_data.lock(), tvutil2::ForkRank::caller},
    {g_default_data.lock(), tvutil2::ForkRank::caller},
};

int previous_folder_exists(const char16_t* folder, const char16_t* product) {
    if (*folder == 0) return 0;
    return product == nullptr ? DoesFolderExist(folder)
                              : DoesFolderExist(CString(folder) + u"\\" + product);
}

}  // namespace

int TvGetUserDataPath(char16_t* out) {
    if (out == nullptr) return 0;
    *out = 0;
    const auto key = Key::create(kDataKey);
    if (!key) return 0;
    const auto stored = key.stored_path();
    if (!stored) return 0;
    if (!stored->IsEmpty()) {
        put(stored->View(), out);
    } else if (const auto documents = known_folder(CSIDL_PERSONAL)) {
        if (put(with_version_folder(*documents).View(), out)) key.store_path(out);
    }
    // What exists may be a file: that is no folder to keep data in.
    return *out != 0 && tvutil2::ensure_private_folder(out) != 0 ? DoesFolderExist(out) : 0;
}

const char16_t* GetUserDataFolderPath(int refresh) {
    return g_user_data.get(refresh != 0, [] {
        PathBuffer path;
        CString folder =
            TvGetUserDataPath(path.data()) != 0 ? CString(path.data()) : fallback_folder();
        tvutil2::ensure_private_folder(folder);
        return folder;
    });
}

const char16_t* GetCommonDataFolderPath() {
    return g_common_data.get(false, [] {
        auto folder = with_version_folder(common_base());
        EnsureFolderExistRecursive(folder);
        return folder;
    });
}

const char16_t* GetPreviousCommonDataFolderPath() {
    return g_previous_common_data.get(false, [] {
        auto folder = common_base() + kPreviousFolder;
        EnsureFolderExist(folder);
        return folder;
    });
}

const char16_t* TvGetCredentialPath() {
    return g_credentials.get(false, [] {
        auto folder = GetUserDataFolderPath(0) + CString(u"\\Common\\Credential");
        if (folder.GetLength() < static_cast<int>(MAX_PATH)) tvutil2::ensure_private_folder(folder);
        return folder;
    });
}

const char16_t* TvGetDefaultDataPath() {
    const auto* path = g_default_data.get(false, [] {
        const auto documents = known_folder(CSIDL_PERSONAL);
        if (!documents || _waccess(*documents, kReadAndWrite) != 0) return CString();
        return with_version_folder(*documents);
    });
    return *path != 0 ? path : nullptr;
}

int TvGetUserDataPathV5(char16_t* out, const char16_t* product) {
    if (out == nullptr) return 0;
    *out = 0;
    const auto key = Key::open(kDataKeyV5);
    if (!key) return 0;
    const auto stored = key.stored_path();
    if (!stored) return 0;
    if (!stored->IsEmpty() && DoesFolderExist(*stored) != 0) {
        if (_waccess(*stored, kReadAndWrite) == 0) put(stored->View(), out);
    } else if (const auto documents = known_folder(CSIDL_PERSONAL)) {
        put(documents->View(), out);
        if (_waccess(out, kReadAndWrite) == 0 && put((*documents + kPreviousFolder).View(), out)) {
            key.store_path(out);
        }
    }
    return previous_folder_exists(out, product);
}

int TvGetUserDataPathV4(char16_t* out, const char16_t* product) {
    if (out == nullptr) return 0;
    *out = 0;
    const auto settings = known_folder(CSIDL_APPDATA);
    if (!settings) return 0;
    put((*settings + kPreviousFolder).View(), out);
    return previous_folder_exists(out, product);
}

int TvExsistPreviousUserData(unsigned int version, const char16_t* product) {
    if (product == nullptr) return 0;
    CString name(product);
    if (name == u"Enterprise") name = u"Ombrelia Enterprise";
    CString key;
    if (version == 5) {
        key.Format(u"Software\\Tolvarine\\%s\\5\\Language", name);
        if (Key::open(key)) return 1;
    }
    key.Format(u"Software\\Tolvarine\\%s\\%u", name, version);
    return Key::open(key) ? 1 : 0;
}

int TvIsValidDataFolder() {
    PathBuffer path;
    if (TvGetUserDataPath(path.data()) != 0) return 1;
    CString question;
    question.Format(MLS_TVUTIL_ID2STR_DLL(tvutil2::resource_instance(), kFolderNotHad),
                    path.data());
    return AfxMessageBox(question, MB_YESNO) == IDYES ? 0 : 1;
}

CString TvGetQCmdRootPath() {
    CString stored;
    if (const auto key = Key::create(kDataKey)) stored = key.stored_path().value_or(CString());
    return stored + u"\\Pelrin\\QuickButton Files";
}
