#include "tvutil2/platform/window/properties.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/window_table.h"

namespace {

constexpr std::size_t kMaxPropertyName = 255;

// The key of a name; empty with ERROR_INVALID_PARAMETER for none. A number has a key that is no
// text.
std::u16string key_of(const char16_t* name) {
    if (name != nullptr && IS_INTRESOURCE(name)) {
        const auto number = reinterpret_cast<std::uintptr_t>(name);
        return {u'\0', static_cast<char16_t>(number)};
    }
    auto key = name != nullptr ? tvutil2::folded_name(name) : std::u16string();
    if (key.size() > kMaxPropertyName) key.clear();
    if (key.empty()) SetLastError(ERROR_INVALID_PARAMETER);
    return key;
}

}  // namespace

BOOL SetPropW(HWND window, const char16_t* name, HANDLE value) {
    auto key = key_of(name);
    if (key.empty()) return FALSE;
    const tvutil2::TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return FALSE;
    record->properties[std::move(key)] = value;
    return TRUE;
}

HANDLE GetPropW(HWND window, const char16_t* name) {
    const auto key = key_of(name);
    if (key.empty()) return nullptr;
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr) return nullptr;
    const auto found = record->properties.find(key);
    return found != record->properties.end() ? found->second : nullptr;
}

HANDLE RemovePropW(HWND window, const char16_t* name) {
    const auto key = key_of(name);
    if (key.empty()) return nullptr;
    const tvutil2::TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return nullptr;
    const auto found = record->properties.find(key);
    if (found == record->properties.end()) return nullptr;
    auto* const value = found->second;
    record->properties.erase(found);
    return value;
}
