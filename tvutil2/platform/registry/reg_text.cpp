#include "tvutil2/platform/registry/reg_text.h"

#include "tvutil2/platform/registry/open_key.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

struct Root {
    HKEY key;
    std::u16string_view name;
    std::u16string_view short_name;
};

const Root (&roots())[2] {
    static const Root list[] = {{HKEY_CURRENT_USER, u"HKEY_CURRENT_USER", u"HKCU"},
                                {HKEY_LOCAL_MACHINE, u"HKEY_LOCAL_MACHINE", u"HKLM"}};
    return list;
}

bool is_same_word(std::u16string_view text, std::u16string_view upper) {
    const auto same = [](char16_t a, char16_t b) {
        return (a >= u'a' && a <= u'z' ? a - (u'a' - u'A') : a) == b;
    };
    return std::equal(text.begin(), text.end(), upper.begin(), upper.end(), same);
}

bool is_valid_path(std::u16string_view path) {
    DWORD depth = 0;
    for (;;) {
        const auto end = std::min(path.find(u'\\'), path.size());
        if (end == 0 || end > REG_MAX_KEY_NAME || ++depth > REG_MAX_DEPTH) return false;
        if (end == path.size()) return true;
        path.remove_prefix(end + 1);
    }
}

// One call makes REG_MAX_NEW_LEVELS keys at most, and a text may ask for more at once.
LONG make_key(const RegTextKey& wanted, OpenKey& result) {
    std::size_t end = 0;
    for (;;) {
        for (DWORD level = 0; level < REG_MAX_NEW_LEVELS && end != std::u16string::npos; ++level) {
            end = wanted.path.find(u'\\', end + 1);
        }
        const auto part = wanted.path.substr(0, end);
        OpenKey step;
        const LONG error =
            step.create(wanted.root, part.c_str(), KEY_SET_VALUE | KEY_CREATE_SUB_KEY);
        if (error != LONG{ERROR_SUCCESS}) return error;
        if (end != std::u16string::npos) continue;
        result = std::move(step);
        return ERROR_SUCCESS;
    }
}

LONG apply_value(HKEY key, const RegTextValue& value) {
    if (!value.is_deleted) {
        return RegSetValueExW(key, value.name.c_str(), 0, value.type, value.data.data(),
                              static_cast<DWORD>(value.data.size()));
    }
    const LONG error = RegDeleteValueW(key, value.name.c_str());
    return error == LONG{ERROR_FILE_NOT_FOUND} ? LONG{ERROR_SUCCESS} : error;
}

LONG apply_key(const RegTextKey& change) {
    if (change.is_deleted) {
        const LONG error = SHDeleteKeyW(change.root, change.path.c_str());
        return error == LONG{ERROR_FILE_NOT_FOUND} ? LONG{ERROR_SUCCESS} : error;
    }
    OpenKey key;
    LONG error = make_key(change, key);
    for (const auto& value : change.values) {
        if (error != LONG{ERROR_SUCCESS}) break;
        error = apply_value(key.get(), value);
    }
    return error;
}

LONG read_value(HKEY key, DWORD index, RegTextValue& value) {
    value.name.resize(REG_MAX_VALUE_NAME + 1);
    value.data.resize(256);
    for (;;) {
        auto count = static_cast<DWORD>(value.name.size());
        auto size = static_cast<DWORD>(value.data.size());
        const LONG error = RegEnumValueW(key, index, value.name.data(), &count, nullptr,
                                         &value.type, value.data.data(), &size);
        if (error == LONG{ERROR_MORE_DATA} && value.data.size() <= REG_MAX_VALUE_DATA) {
            value.data.resize(std::max<std::size_t>(size, value.data.size() * 2));
            continue;
        }
        if (error != LONG{ERROR_SUCCESS}) return error;
        value.name.resize(count);
        value.name.shrink_to_fit();
        value.data.resize(size);
        value.data.shrink_to_fit();
        return ERROR_SUCCESS;
    }
}

LONG read_values(HKEY key, std::vector<RegTextValue>& values) {
    for (DWORD index = 0;; ++index) {
        RegTextValue value;
        const LONG error = read_value(key, index, value);
        if (error == LONG{ERROR_NO_MORE_ITEMS}) return ERROR_SUCCESS;
        if (error != LONG{ERROR_SUCCESS}) return error;
        values.push_back(std::move(value));
    }
}

LONG read_sub_keys(HKEY key, std::vector<std::u16string>& names) {
    for (DWORD index = 0;; ++index) {
        char16_t name[REG_MAX_KEY_NAME + 1];
        const LONG error = RegEnumKeyW(key, index, name, REG_MAX_KEY_NAME + 1);
        if (error == LONG{ERROR_NO_MORE_ITEMS}) return ERROR_SUCCESS;
        if (error != LONG{ERROR_SUCCESS}) return error;
        names.emplace_back(name);
    }
}

LONG read_key(RegTextKey& found, std::vector<std::u16string>* names) {
    OpenKey key;
    LONG error = key.open(found.root, found.path.c_str(), KEY_READ);
    if (error == LONG{ERROR_SUCCESS}) error = read_values(key.get(), found.values);
    if (error == LONG{ERROR_SUCCESS} && names != nullptr) error = read_sub_keys(key.get(), *names);
    return error;
}

}  // namespace

bool parse_reg_key_name(std::u16string_view name, HKEY& root, std::u16string& path) {
    const auto end = std::min(name.find(u'\\'), name.size());
    const auto word = name.substr(0, end);
    const auto* const found =
        std::find_if(std::begin(roots()), std::end(roots()), [word](const Root& known) {
            return is_same_word(word, known.name) || is_same_word(word, known.short_name);
        });
    if (found == std::end(roots())) return false;
    auto rest = name.substr(end == name.size() ? end : end + 1);
    if (rest.ends_with(u'\\')) rest.remove_suffix(1);
    if (rest.find(u'\0') != rest.npos || (!rest.empty() && !is_valid_path(rest))) return false;
    root = found->key;
    path = rest;
    return true;
}

std::u16string reg_key_name(HKEY root, std::u16string_view path) {
    std::u16string name(root == HKEY_CURRENT_USER ? roots()[0].name : roots()[1].name);
    if (!path.empty()) name.append(1, u'\\').append(path);
    return name;
}

LONG apply_reg_text(const std::vector<RegTextKey>& keys, std::size_t& failed) {
    for (failed = 0; failed < keys.size(); ++failed) {
        const LONG error = apply_key(keys[failed]);
        if (error != LONG{ERROR_SUCCESS}) return error;
    }
    return ERROR_SUCCESS;
}

LONG read_reg_key(HKEY root, const std::u16string& path, RegTextKey& key) {
    key = {root, path, false, {}};
    return read_key(key, nullptr);
}

LONG read_reg_tree(HKEY root, const std::u16string& path, std::vector<RegTextKey>& keys) {
    keys.clear();
    std::vector<std::u16string> pending{path};
    while (!pending.empty()) {
        RegTextKey found{root, std::move(pending.back()), false, {}};
        pending.pop_back();
        std::vector<std::u16string> names;
        const LONG error = read_key(found, &names);
        const bool is_gone =
            error == LONG{ERROR_FILE_NOT_FOUND} || error == LONG{ERROR_KEY_DELETED};
        if (is_gone && !keys.empty()) continue;
        if (error != LONG{ERROR_SUCCESS}) {
            keys.clear();
            return error;
        }
        const auto prefix = found.path.empty() ? found.path : found.path + u'\\';
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            pending.push_back(prefix + *name);
        }
        keys.push_back(std::move(found));
    }
    return ERROR_SUCCESS;
}

}  // namespace tvutil2
