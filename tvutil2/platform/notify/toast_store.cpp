#include "tvutil2/platform/notify/toast_store.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/registry/open_key.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace tvutil2 {
namespace {

constexpr std::u16string_view kModelIds = u"SOFTWARE\\Classes\\AppUserModelId\\";
constexpr std::u16string_view kClasses = u"SOFTWARE\\Classes\\CLSID\\";
constexpr std::u16string_view kToasts =
    u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Notifications\\Toasts";
constexpr std::size_t kMostShown = 100;

// An open key below the user's hive, or below another one; none where it can't be had.
class Key {
  public:
    Key(const std::u16string& name, DWORD access, bool is_made, HKEY below = HKEY_CURRENT_USER) {
        const auto error = is_made ? m_key.create(below, name.c_str(), access, &m_disposition)
                                   : m_key.open(below, name.c_str(), access);
        if (error != 0) SetLastError(static_cast<DWORD>(error));
    }

    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_key); }
    [[nodiscard]] HKEY get() const { return m_key.get(); }
    [[nodiscard]] bool is_new() const { return m_disposition == REG_CREATED_NEW_KEY; }

    [[nodiscard]] std::u16string text(const char16_t* name) const {
        DWORD type = 0;
        DWORD size = 0;
        if (RegQueryValueExW(m_key.get(), name, nullptr, &type, nullptr, &size) != 0 ||
            type != REG_SZ) {
            return {};
        }
        std::u16string value(size / sizeof(char16_t) + 1, 0);
        size = static_cast<DWORD>(value.size() * sizeof(char16_t));
        if (RegQueryValueExW(m_key.get(), name, nullptr, &type,
                             reinterpret_cast<BYTE*>(value.data()), &size) != 0 ||
            type != REG_SZ) {
            return {};
        }
        value.resize(std::min<std::size_t>(size / sizeof(char16_t), value.find(u'\0')));
        return value;
    }
    [[nodiscard]] bool set_text(const char16_t* name, const std::u16string& value) const {
        return set(name, REG_SZ, value.c_str(), (value.size() + 1) * sizeof(char16_t));
    }
    [[nodiscard]] bool set(const char16_t* name, DWORD type, const void* data,
                           std::size_t size) const {
        const auto error = RegSetValueExW(m_key.get(), name, 0, type,
                                          static_cast<const BYTE*>(data), static_cast<DWORD>(size));
        if (error != 0) SetLastError(static_cast<DWORD>(error));
        return error == 0;
    }
    [[nodiscard]] std::vector<std::u16string> value_names() const {
        std::vector<std::u16string> names;
        char16_t name[64];
        for (DWORD index = 0;; ++index) {
            DWORD count = 64;
            const auto error =
                RegEnumValueW(m_key.get(), index, name, &count, nullptr, nullptr, nullptr, nullptr);
            if (error == static_cast<LONG>(ERROR_MORE_DATA)) continue;  // none of ours
            if (error != 0) return names;
            names.emplace_back(name, count);
        }
    }
    [[nodiscard]] std::vector<std::u16string> sub_keys() const {
        std::vector<std::u16string> names;
        char16_t name[REG_MAX_KEY_NAME + 1];
        for (DWORD index = 0; RegEnumKeyW(m_key.get(), index, name, REG_MAX_KEY_NAME + 1) == 0;
             ++index) {
            names.emplace_back(name);
        }
        return names;
    }

  private:
    OpenKey m_key;
    DWORD m_disposition = 0;
};

std::u16string joined(std::u16string_view a, std::u16string_view b, std::u16string_view c = {}) {
    std::u16string name(a);
    name += b;
    name += c;
    return name;
}

std::u16string toasts_key(const std::u16string& model_id, std::u16string_view tail = {}) {
    auto name = std::u16string(kToasts) + u'\\';
    for (const auto c : model_id) {
        if (c == u'\\') {
            name += u"%5C";
        } else if (c == u'%') {
            name += u"%25";
        } else {
            name += c;
        }
    }
    return name.append(tail);
}

std::u16string number_text(DWORD number) {
    return to_utf16_lossy(std::to_string(number));
}

DWORD number_of(const std::u16string& text) {
    const auto digits = to_utf8_lossy(text);
    DWORD number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

// "server, line end, sender, line end, launch".
struct ShownValue {
    std::string server;
    std::string sender;
    std::u16string launch;
};

std::optional<ShownValue> parse_shown(const std::u16string& value) {
    const auto first = value.find(u'\n');
    const auto second = first == value.npos ? first : value.find(u'\n', first + 1);
    if (second == value.npos) return std::nullopt;
    return ShownValue{to_utf8_lossy(value.substr(0, first)),
                      to_utf8_lossy(value.substr(first + 1, second - first - 1)),
                      value.substr(second + 1)};
}

// Less what can't be there any more.
void prune(const Key& shown, const std::string& server) {
    std::vector<DWORD> ids;
    for (const auto& name : shown.value_names()) {
        const auto value = parse_shown(shown.text(name.c_str()));
        if (value && value->server == server) {
            ids.push_back(number_of(name));
        } else {
            RegDeleteValueW(shown.get(), name.c_str());
        }
    }
    if (ids.size() <= kMostShown) return;
    std::sort(ids.begin(), ids.end());
    for (std::size_t i = 0; i < ids.size() - kMostShown; ++i) {
        RegDeleteValueW(shown.get(), number_text(ids[i]).c_str());
    }
}

// Calls `use` with the id and the key of each that has toasts, until it gives true.
template <class Use>
void for_each_id(Use use) {
    const Key all(std::u16string(kToasts), KEY_READ, false);
    if (!all) return;
    for (const auto& name : all.sub_keys()) {
        const Key key(name, KEY_READ, false, all.get());
        if (key && use(key.text(u"Id"), key)) return;
    }
}

}  // namespace

ToastRegistration toast_registration(const std::u16string& model_id) {
    ToastRegistration found;
    const Key key(joined(kModelIds, model_id), KEY_READ, false);
    if (!key) return found;
    found.display_name = key.text(u"DisplayName");
    found.icon = key.text(u"IconUri");
    found.class_text = key.text(u"CustomActivator");
    if (found.class_text.empty()) return found;
    const Key server(joined(kClasses, found.class_text, u"\\LocalServer32"), KEY_READ, false);
    if (server) found.command = server.text(nullptr);
    return found;
}

void note_shown(const ShownToast& toast, const ShownRecord& record) {
    const Key key(toasts_key(record.model_id), KEY_ALL_ACCESS, true);
    if (!key || !key.set_text(u"Id", record.model_id) || !key.set_text(u"Launch", record.launch)) {
        return;
    }
    const Key shown(u"Shown", KEY_ALL_ACCESS, true, key.get());
    if (!shown) return;
    const auto text = to_utf16_lossy(toast.server + "\n" + record.sender + "\n") + record.launch;
    if (shown.set_text(number_text(toast.id).c_str(), text)) prune(shown, toast.server);
}

std::optional<ShownRecord> find_shown(const ShownToast& toast) {
    std::optional<ShownRecord> found;
    for_each_id([&](const std::u16string& model_id, const Key& key) {
        const Key shown(u"Shown", KEY_READ, false, key.get());
        if (!shown) return false;
        auto value = parse_shown(shown.text(number_text(toast.id).c_str()));
        if (!value || value->server != toast.server) return false;
        found = ShownRecord{model_id, std::move(value->launch), std::move(value->sender)};
        return true;
    });
    return found;
}

void forget_shown(const ShownToast& toast) {
    const auto record = find_shown(toast);
    if (!record) return;
    RegDeleteKeyValueW(HKEY_CURRENT_USER, toasts_key(record->model_id, u"\\Shown").c_str(),
                       number_text(toast.id).c_str());
}

std::vector<ShownToast> take_shown(const std::u16string& model_id) {
    std::vector<ShownToast> toasts;
    const Key shown(toasts_key(model_id, u"\\Shown"), KEY_ALL_ACCESS, false);
    if (!shown) return toasts;
    for (const auto& name : shown.value_names()) {
        if (auto value = parse_shown(shown.text(name.c_str()))) {
            toasts.push_back({std::move(value->server), number_of(name)});
        }
        RegDeleteValueW(shown.get(), name.c_str());
    }
    return toasts;
}

std::size_t count_shown(const std::u16string& model_id) {
    const Key shown(toasts_key(model_id, u"\\Shown"), KEY_READ, false);
    return shown ? shown.value_names().size() : 0;
}

std::optional<ShownRecord> latest_of_class(const std::u16string& class_text) {
    std::optional<ShownRecord> found;
    for_each_id([&](const std::u16string& model_id, const Key& key) {
        if (_wcsicmp(toast_registration(model_id).class_text.c_str(), class_text.c_str()) != 0) {
            return false;
        }
        found = ShownRecord{model_id, key.text(u"Launch"), {}};
        return true;
    });
    return found;
}

bool add_scheduled(const std::u16string& model_id, ScheduledToast& toast) {
    const Key key(toasts_key(model_id), KEY_ALL_ACCESS, true);
    if (!key || !key.set_text(u"Id", model_id)) return false;
    const Key scheduled(u"Scheduled", KEY_ALL_ACCESS, true, key.get());
    if (!scheduled) return false;
    const auto ticks = ticks_of(toast.time);
    for (unsigned int number = 0;; ++number) {
        char name[40];
        std::snprintf(name, sizeof name, "%016llx-%08x", static_cast<unsigned long long>(ticks),
                      number);
        toast.key = to_utf16_lossy(name);
        const Key own(toast.key, KEY_ALL_ACCESS, true, scheduled.get());
        if (!own) return false;
        if (!own.is_new()) continue;
        // The time comes last: without it the toast isn't there yet.
        if (own.set_text(u"Xml", toast.xml) && own.set(u"Time", REG_QWORD, &ticks, sizeof ticks)) {
            return true;
        }
        RegDeleteKeyW(scheduled.get(), toast.key.c_str());
        return false;
    }
}

std::vector<ScheduledToast> scheduled_toasts(const std::u16string& model_id) {
    std::vector<ScheduledToast> toasts;
    const Key scheduled(toasts_key(model_id, u"\\Scheduled"), KEY_READ, false);
    if (!scheduled) return toasts;
    for (const auto& name : scheduled.sub_keys()) {
        const Key key(name, KEY_READ, false, scheduled.get());
        std::uint64_t ticks = 0;
        DWORD type = 0;
        DWORD size = sizeof ticks;
        if (!key ||
            RegQueryValueExW(key.get(), u"Time", nullptr, &type, reinterpret_cast<BYTE*>(&ticks),
                             &size) != 0 ||
            type != REG_QWORD || size != sizeof ticks) {
            continue;
        }
        toasts.push_back({name, key.text(u"Xml"), file_time_of(ticks)});
    }
    return toasts;
}

bool take_scheduled(const std::u16string& model_id, const std::u16string& key) {
    return RegDeleteKeyW(HKEY_CURRENT_USER,
                         toasts_key(model_id, u"\\Scheduled\\").append(key).c_str()) == 0;
}

std::vector<std::u16string> ids_with_toasts() {
    std::vector<std::u16string> ids;
    for_each_id([&ids](const std::u16string& model_id, const Key& /*key*/) {
        if (!model_id.empty()) ids.push_back(model_id);
        return false;
    });
    return ids;
}

void forget_toasts_of(const std::u16string& model_id) {
    if (!model_id.empty()) SHDeleteKeyW(HKEY_CURRENT_USER, toasts_key(model_id).c_str());
}

}  // namespace tvutil2
