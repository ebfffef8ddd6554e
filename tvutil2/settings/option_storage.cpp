#include "tvutil2/settings/option_storage.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/profile/profile.h"
#include "tvutil2/settings/registry.h"

#include <memory>
#include <utility>

namespace {

const char16_t* text_of(const char16_t* text) {
    return text != nullptr ? text : u"";
}

// One separator at the join; a component that is null changes nothing, and neither does any that
// is added to an empty path.
void add_component(CString& path, const char16_t* component) {
    if (component == nullptr || path.IsEmpty()) return;
    if (path.Right(1) != u"\\") path += u'\\';
    path += *component == u'\\' ? component + 1 : component;
}

std::unique_ptr<CRegistry> made_below(HKEY parent, const char16_t* name) {
    auto key = std::make_unique<CRegistry>();
    return key->Open(parent, name, 1, KEY_ALL_ACCESS) != 0 ? std::move(key) : nullptr;
}

std::unique_ptr<CRegistry> opened_again(const CRegistry& key) {
    auto again = std::make_unique<CRegistry>();
    return again->Open(key.GetSafeHkey(), u"", 0, KEY_ALL_ACCESS) != 0 ? std::move(again) : nullptr;
}

}  // namespace

CString tvutil2::option_file(const char16_t* company, const char16_t* product) {
    char16_t folder[MAX_PATH];
    if (SHGetFolderPathW(nullptr, CSIDL_APPDATA | CSIDL_FLAG_CREATE, nullptr, 0, folder) < 0) {
        return {};
    }
    CString path(folder);
    add_component(path, company);
    add_component(path, product != nullptr ? product : u"setup.ini");
    return path;
}

CString tvutil2::option_key(const char16_t* company, const char16_t* product) {
    CString path(u"SOFTWARE");
    add_component(path, company);
    add_component(path, product);
    return path;
}

COptionStorage::COptionStorage() = default;

COptionStorage::COptionStorage(const COptionStorage& other)
    : filePath(other.filePath), sectionName(other.sectionName) {
    if (other.currentKey == nullptr) return;
    auto root = opened_again(*other.rootKey);
    const bool has_section = other.currentKey != other.rootKey;
    auto section = has_section ? opened_again(*other.currentKey) : nullptr;
    if (root == nullptr || (has_section && section == nullptr)) {
        sectionName.Empty();
        return;
    }
    rootKey = root.release();
    currentKey = has_section ? section.release() : rootKey;
}

COptionStorage& COptionStorage::operator=(const COptionStorage& other) {
    COptionStorage copy(other);
    std::swap(filePath, copy.filePath);
    std::swap(sectionName, copy.sectionName);
    std::swap(currentKey, copy.currentKey);
    std::swap(rootKey, copy.rootKey);
    return *this;
}

COptionStorage::~COptionStorage() {
    Close();
}

int COptionStorage::OpenIniFile(const char16_t* path) {
    if (IsOpen()) return 0;
    filePath = path;
    sectionName.Empty();
    return 1;
}

int COptionStorage::OpenIniFile(const char16_t* company, const char16_t* product) {
    if (IsOpen()) return 0;
    const auto path = tvutil2::option_file(company, product);
    return path.IsEmpty() ? 0 : OpenIniFile(path.GetString());
}

int COptionStorage::OpenRegistry(const char16_t* company, const char16_t* product) {
    if (IsOpen()) return 0;
    auto key = made_below(HKEY_CURRENT_USER, tvutil2::option_key(company, product));
    if (key == nullptr) return 0;
    rootKey = key.release();
    currentKey = rootKey;
    sectionName.Empty();
    return 1;
}

int COptionStorage::Open(const char16_t* company, const char16_t* product, int useRegistry) {
    return useRegistry == 0 ? OpenIniFile(company, product) : OpenRegistry(company, product);
}

void COptionStorage::Close() {
    UseKey(nullptr);
    const std::unique_ptr<CRegistry> root(std::exchange(rootKey, nullptr));
    filePath.Empty();
    sectionName.Empty();
}

// Makes `key` the one that values go to. The one before is closed, unless it is the root.
void COptionStorage::UseKey(CRegistry* key) {
    std::unique_ptr<CRegistry> before(std::exchange(currentKey, key));
    if (before.get() == rootKey) static_cast<void>(before.release());
}

int COptionStorage::SetSection(const char16_t* name) {
    const CString wanted(name);
    if (wanted == sectionName) return 1;
    if (!IsOpen()) return 0;
    if (rootKey != nullptr) {
        auto* key = rootKey;
        if (!wanted.IsEmpty()) key = made_below(rootKey->GetSafeHkey(), wanted).release();
        if (key == nullptr) return 0;
        UseKey(key);
    }
    sectionName = wanted;
    return 1;
}

bool COptionStorage::IsOpen() const {
    return !filePath.IsEmpty() || currentKey != nullptr;
}

const char16_t* COptionStorage::FileSection() const {
    return sectionName.IsEmpty() ? u"Default" : sectionName.GetString();
}

// A key tells that it can't be written, and not why.
void COptionStorage::SetValue(const char16_t* name, int value) {
    if (currentKey != nullptr) {
        if (currentKey->SetValue(name, static_cast<DWORD>(value)) == 0) {
            SetLastError(ERROR_CANTWRITE);
        }
        return;
    }
    CString text;
    text.Format(u"%d", value);
    SetValue(name, text.GetString());
}

// Null texts would remove the key, or all of the section.
void COptionStorage::SetValue(const char16_t* name, const char16_t* value) {
    if (currentKey != nullptr) {
        if (currentKey->SetValue(name, text_of(value)) == 0) SetLastError(ERROR_CANTWRITE);
    } else if (IsOpen()) {
        WritePrivateProfileStringW(FileSection(), text_of(name), text_of(value), filePath);
    } else {
        SetLastError(ERROR_INVALID_HANDLE);
    }
}

int COptionStorage::GetValue(const char16_t* name, int fallback) const {
    if (currentKey != nullptr) {
        return static_cast<int>(currentKey->GetValue(name, static_cast<DWORD>(fallback)));
    }
    if (!IsOpen()) return fallback;
    return static_cast<int>(
        GetPrivateProfileIntW(FileSection(), text_of(name), fallback, filePath));
}

CString COptionStorage::GetValue(const char16_t* name, const char16_t* fallback) const {
    constexpr DWORD kUnits = 4096;
    char16_t buffer[kUnits + 1];
    if (currentKey != nullptr) {
        return currentKey->QueryValue(name, buffer, kUnits) != 0 ? CString(buffer)
                                                                 : CString(fallback);
    }
    if (!IsOpen()) return CString(fallback);
    tvutil2::profile_string(FileSection(), text_of(name), fallback, buffer, kUnits, filePath);
    return buffer;
}
