#include "tvutil2/settings/registry.h"

#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>
#include <utility>

namespace {

constexpr DWORD kNameRoom = 1024;      // units, the zero included
constexpr DWORD kCopiedData = 8192;    // bytes of the largest value that is copied
constexpr DWORD kShortText = 512;      // units that most texts fit in
constexpr DWORD kLongestText = 32768;  // units

/// One for a whole copy: levels may be hundreds, and a stack isn't that deep.
struct CopyBuffer {
    char16_t name[kNameRoom];
    BYTE data[kCopiedData];
};

int is_success(LONG error) {
    return error == ERROR_SUCCESS ? 1 : 0;
}

LONG value_name(HKEY key, DWORD index, char16_t* name, DWORD count, DWORD* type) {
    return RegEnumValueW(key, index, name, &count, nullptr, type, nullptr, nullptr);
}

/// What the value holds, up to the first zero. ERROR_MORE_DATA when `room` is too small for it.
LONG read_text(HKEY key, const char16_t* name, std::span<char16_t> room, CString& text) {
    DWORD type = REG_NONE;
    auto size = static_cast<DWORD>(room.size_bytes());
    const auto error =
        RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(room.data()), &size);
    if (error != ERROR_SUCCESS) return error;
    if (type != REG_SZ) return ERROR_FILE_NOT_FOUND;
    const std::u16string_view units(room.data(), size / sizeof(char16_t));
    text = units.substr(0, units.find(u'\0'));
    return ERROR_SUCCESS;
}

int copy_values(HKEY source, HKEY target, CopyBuffer& buffer) {
    // One unit less than for keys: a longer name ends the copy.
    for (DWORD index = 0;
         value_name(source, index, buffer.name, kNameRoom - 1, nullptr) == ERROR_SUCCESS; ++index) {
        DWORD type = REG_NONE;
        DWORD size = kCopiedData;
        auto error = RegQueryValueExW(source, buffer.name, nullptr, &type, buffer.data, &size);
        if (error == ERROR_SUCCESS) {
            error = RegSetValueExW(target, buffer.name, 0, type, buffer.data, size);
        }
        if (error != ERROR_SUCCESS) return 0;
    }
    return 1;
}

int copy_tree(HKEY source, HKEY target, CopyBuffer& buffer) {
    for (DWORD index = 0; RegEnumKeyW(source, index, buffer.name, kNameRoom) == ERROR_SUCCESS;
         ++index) {
        CRegistry from;
        CRegistry to;
        if (from.Open(source, buffer.name, 1, KEY_ALL_ACCESS) == 0 ||
            to.Open(target, buffer.name, 1, KEY_ALL_ACCESS) == 0 ||
            copy_tree(from.GetSafeHkey(), to.GetSafeHkey(), buffer) == 0) {
            return 0;
        }
    }
    return copy_values(source, target, buffer);
}

// Gives a key the spelling that the last part of a path to it has; the key that is held has none.
int spell_key(HKEY parent, const char16_t* old_name, const char16_t* path) {
    std::u16string_view name = path != nullptr ? path : u"";
    while (name.ends_with(u'\\')) name.remove_suffix(1);
    const CString last(name.substr(name.rfind(u'\\') + 1));
    return last.IsEmpty() ? 1 : is_success(RegRenameKey(parent, old_name, last));
}

template <class Key>
int copy_key(const Key* source, const Key* target) {
    if (source == nullptr || target == nullptr) return 0;
    CopyBuffer buffer;
    return copy_tree(source->GetSafeHkey(), target->GetSafeHkey(), buffer);
}

}  // namespace

namespace tvutil2 {

template <class Self>
RegistryKey<Self>::~RegistryKey() {
    Close();
}

template <class Self>
int RegistryKey<Self>::Attach(HKEY key) {
    if (m_key != nullptr || key == nullptr) return 0;
    m_key = key;
    return 1;
}

template <class Self>
HKEY RegistryKey<Self>::Detach() {
    return std::exchange(m_key, nullptr);
}

template <class Self>
int RegistryKey<Self>::Open(HKEY parent, const char16_t* sub_key, int create, DWORD access) {
    HKEY key = nullptr;
    const auto error = create != 0 ? RegCreateKeyExW(parent, sub_key, 0, nullptr, 0, access,
                                                     nullptr, &key, nullptr)
                                   : RegOpenKeyExW(parent, sub_key, 0, access, &key);
    if (error == ERROR_SUCCESS) m_key = key;
    return is_success(error);
}

template <class Self>
int RegistryKey<Self>::Open(Self* parent, const char16_t* sub_key, int create, DWORD access) {
    return Open(parent != nullptr ? parent->GetSafeHkey() : nullptr, sub_key, create, access);
}

template <class Self>
void RegistryKey<Self>::Close() {
    if (const HKEY key = Detach(); key != nullptr) RegCloseKey(key);
}

// Callers rely on it, so the compiler is kept from concluding that an object is never null.
template <class Self>
HKEY RegistryKey<Self>::GetSafeHkey() const {
    const auto* self = this;
    asm("" : "+r"(self));
    return self != nullptr ? self->m_key : nullptr;
}

template <class Self>
int RegistryKey<Self>::SetValue(const char16_t* name, DWORD value) {
    return is_success(RegSetValueExW(m_key, name, 0, REG_DWORD,
                                     reinterpret_cast<const BYTE*>(&value), sizeof value));
}

template <class Self>
int RegistryKey<Self>::SetValue(const char16_t* name, const char16_t* value) {
    const auto size = static_cast<DWORD>(lstrlenW(value)) * DWORD{sizeof(char16_t)};
    return is_success(
        RegSetValueExW(m_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value), size));
}

template <class Self>
int RegistryKey<Self>::SetValue(const char16_t* name, const unsigned char* data, DWORD size) {
    return is_success(RegSetValueExW(m_key, name, 0, REG_BINARY, data, size));
}

template <class Self>
int RegistryKey<Self>::QueryValue(const char16_t* name, DWORD& value) const {
    DWORD type = REG_NONE;
    DWORD number = 0;
    DWORD size = sizeof number;
    const auto error =
        RegQueryValueExW(m_key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
    if (error != ERROR_SUCCESS || type != REG_DWORD) return 0;
    value = number;
    return 1;
}

template <class Self>
int RegistryKey<Self>::QueryValue(const char16_t* name, char16_t* text, DWORD count) const {
    if (text == nullptr) return 0;
    DWORD type = REG_NONE;
    DWORD size = std::min<DWORD>(count, REG_MAX_VALUE_DATA / sizeof(char16_t)) * sizeof(char16_t);
    const auto error =
        RegQueryValueExW(m_key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    if (error != ERROR_SUCCESS || type != REG_SZ) return 0;
    text[size / sizeof(char16_t)] = u'\0';
    return 1;
}

template <class Self>
int RegistryKey<Self>::QueryValue(const char16_t* name, unsigned char* data, DWORD* size) const {
    DWORD type = REG_NONE;
    const auto error = RegQueryValueExW(m_key, name, nullptr, &type, data, size);
    return error == ERROR_SUCCESS && type == REG_BINARY ? 1 : 0;
}

template <class Self>
CString RegistryKey<Self>::GetValue(const char16_t* name, const CString& fallback) const {
    CString text;
    char16_t few[kShortText];
    auto error = read_text(m_key, name, few, text);
    if (error == ERROR_MORE_DATA) {
        const std::unique_ptr<char16_t[]> many(new (std::nothrow) char16_t[kLongestText]);
        if (many == nullptr) return fallback;
        error = read_text(m_key, name, {many.get(), kLongestText}, text);
    }
    if (error != ERROR_SUCCESS) return fallback;
    return text;
}

template <class Self>
DWORD RegistryKey<Self>::GetValue(const char16_t* name, DWORD fallback) const {
    DWORD value = fallback;
    QueryValue(name, value);
    return value;
}

template <class Self>
int RegistryKey<Self>::EnumKey(DWORD index, char16_t* name, DWORD count) const {
    return is_success(RegEnumKeyW(m_key, index, name, count));
}

template <class Self>
int RegistryKey<Self>::EnumValue(DWORD index, char16_t* name, DWORD count) const {
    return is_success(value_name(m_key, index, name, count, nullptr));
}

template <class Self>
int RegistryKey<Self>::DeleteValue(const char16_t* name) {
    return is_success(RegDeleteValueW(m_key, name));
}

template <class Self>
int RegistryKey<Self>::DeleteAllValues() {
    char16_t name[kNameRoom];
    for (DWORD index = 0; EnumValue(index, name, kNameRoom) != 0;) {
        if (DeleteValue(name) == 0) ++index;
    }
    return 1;
}

template <class Self>
int RegistryKey<Self>::DeleteKey(const char16_t* sub_key, int leaf_only) {
    if (m_key == nullptr) return 0;
    return is_success(leaf_only != 0 ? RegDeleteKeyW(m_key, sub_key)
                                     : SHDeleteKeyW(m_key, sub_key));
}

template <class Self>
int RegistryKey<Self>::RenameKey(const char16_t* old_name, const char16_t* new_name) {
    Self source;
    Self target;
    if (source.Open(m_key, old_name, 0, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS) == 0 ||
        target.Open(m_key, new_name, 1, KEY_SET_VALUE | KEY_CREATE_SUB_KEY) == 0) {
        return 0;
    }
    if (tvutil2::is_same_key(source.GetSafeHkey(), target.GetSafeHkey())) {
        return spell_key(m_key, old_name, new_name);
    }
    if (copy_key(&source, &target) == 0) return 0;
    SHDeleteKeyW(m_key, old_name);
    return 1;
}

}  // namespace tvutil2

template class tvutil2::RegistryKey<CRegistry>;
template class tvutil2::RegistryKey<NUtil::CRegistry>;

int CRegistry::EnumValueWithType(DWORD index, char16_t* name, DWORD count, DWORD* type) const {
    return is_success(value_name(GetSafeHkey(), index, name, count, type));
}

int CRegistry::DeleteTree(const char16_t* sub_key) {
    return DeleteKey(sub_key, 0);
}

LONG CRegistry::QueryInfoKey(char16_t* class_name, DWORD* class_count, DWORD* reserved,
                             DWORD* sub_keys, DWORD* longest_sub_key, DWORD* longest_class,
                             DWORD* values, DWORD* longest_value_name, DWORD* longest_data,
                             DWORD* security_size, FILETIME* last_write) const {
    return RegQueryInfoKeyW(GetSafeHkey(), class_name, class_count, reserved, sub_keys,
                            longest_sub_key, longest_class, values, longest_value_name,
                            longest_data, security_size, last_write);
}

int RegRecursiveCopy(CRegistry* source, CRegistry* target) {
    return copy_key(source, target);
}

int NUtil::CRegistry::RegRecursiveCopy(CRegistry* source, CRegistry* target) {
    return copy_key(source, target);
}

CPelrinRegistry::CPelrinRegistry(const char16_t* sub_key) {
    if (sub_key != nullptr) Open(sub_key);
}

int CPelrinRegistry::Open(const char16_t* sub_key) {
    CString path;
    path.Format(u"%s\\%s", u"Software\\Tolvarine\\Pelrin\\8", sub_key != nullptr ? sub_key : u"");
    return CRegistry::Open(HKEY_CURRENT_USER, path, 1, KEY_ALL_ACCESS);
}
