#include "tvutil2/services/notifications.h"

#include "tvutil2/data/path.h"
#include "tvutil2/platform/base/counted.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/package.h"
#include "tvutil2/platform/registry/registry.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

namespace {

using Windows::ApplicationModel::Package;
using Windows::Data::Xml::Dom::XmlDocument;
using Windows::Data::Xml::Dom::XmlElement;
using Windows::Foundation::Collections::StringMap;
using Windows::UI::Notifications::ToastNotification;
using Windows::UI::Notifications::ToastNotificationHistory;
using Windows::UI::Notifications::ToastNotificationManager;
using Windows::UI::Notifications::ToastNotifier;

using Handler = std::function<void(DesktopNotificationActivatedEventArgsCompat)>;

constexpr std::u16string_view kModelIds = u"SOFTWARE\\Classes\\AppUserModelId\\";
constexpr std::size_t kClassUnits = 16;
constexpr auto kTemplate =
    u"<toast>\t\t<visual>\t\t\t<binding template=\"ToastGeneric\">\t\t\t\t<text></text>"
    u"\t\t\t\t<text></text>\t\t\t\t<image placement=\"appLogoOverride\" hint-crop=\"square\"/>"
    u"\t\t\t\t<image/>\t\t\t</binding>\t\t</visual>\t\t<actions>\t\t\t<action\t\t\t\t"
    u"content=\"%s\"\t\t\t\tactivationType=\"background\"/>\t\t</actions>\t</toast>";

struct State {
    std::u16string model_id;
    Handler handler;
    std::optional<bool> has_identity;
    std::optional<bool> is_contained;
};

// Lives for ever: an activation may come while the process ends.
State& state() {
    static auto* const only = new State;
    return *only;
}

bool has_identity() {
    auto& known = state().has_identity;
    if (!known) {
        DWORD length = 0;
        // Any name at all: there is no room for one.
        const auto result = GetPackageFamilyName(GetCurrentProcess(), &length, nullptr);
        known = result == 0 || result == static_cast<LONG>(ERROR_INSUFFICIENT_BUFFER);
    }
    return *known;
}

bool is_contained() {
    auto& known = state().is_contained;
    if (!known) {
        known = false;
        if (has_identity()) {
            const auto folder = Package::Current().InstalledLocation().Path();
            char16_t path[MAX_PATH] = {};
            GetModuleFileNameW(nullptr, path, MAX_PATH);
            known = std::u16string_view(path).starts_with(folder);
        }
    }
    return *known;
}

void expect_registration() {
    if (!has_identity() && state().model_id.empty()) throw "Must call Register first.";
}

class callback final : public tvutil2::Counted<INotificationActivationCallback> {
  public:
    callback() : Counted(IID_INotificationActivationCallback) {}

    HRESULT Activate(const char16_t* /*model_id*/, const char16_t* arguments,
                     const NOTIFICATION_USER_INPUT_DATA* data, DWORD count) override {
        const auto& handler = state().handler;
        if (!handler) return S_OK;
        StringMap input;
        for (DWORD i = 0; i < count; ++i) input.Insert(data[i].Key, data[i].Value);
        handler({arguments != nullptr ? arguments : u"", std::move(input)});
        return S_OK;
    }
};

class callback_factory final : public tvutil2::Counted<IClassFactory> {
  public:
    callback_factory() : Counted(IID_IClassFactory) {}

    HRESULT CreateInstance(IUnknown* outer, const IID& id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        auto* const made = new callback;
        const auto result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    HRESULT LockServer(BOOL /*lock*/) override { return S_OK; }
};

std::u16string executable_path() {
    std::u16string path(100, 0);
    for (;;) {
        const auto length =
            GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

void write_text(const std::u16string& key, const char16_t* name, const std::u16string& text) {
    RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), name, REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(char16_t)));
}

std::u16string joined(std::initializer_list<std::u16string_view> parts) {
    std::u16string text;
    for (const auto part : parts) text += part;
    return text;
}

std::u16string model_key() {
    return joined({kModelIds, state().model_id});
}

// Other processes are let in with the first handler: until then an activation would be lost.
void register_activator(const std::u16string& class_text) {
    CLSID id;
    tvutil2::check_result(CLSIDFromString(class_text.c_str(), &id));
    auto* const factory = new callback_factory;
    DWORD cookie = 0;
    CoRegisterClassObject(id, factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED,
                          &cookie);
    factory->Release();
    write_text(joined({u"SOFTWARE\\Classes\\CLSID\\", class_text, u"\\LocalServer32"}), nullptr,
               joined({u"\"", executable_path(), u"\" -ToastActivated"}));
}

std::uint32_t hash_of(std::u16string_view text) {
    constexpr std::uint32_t kPrime = 0x01000193;
    std::uint32_t hash = 0x811C9DC5;
    for (const char16_t c : text) {
        hash = (hash ^ (c & 0xFFU)) * kPrime;
        hash = (hash ^ (unsigned{c} >> 8U)) * kPrime;
    }
    return hash;
}

bool is_dash(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::u16string class_id_of_hash(std::uint32_t hash) {
    const auto digits = std::to_string(hash);
    std::u16string id;
    std::size_t next = 0;
    for (std::size_t position = 0; position < 36; ++position) {
        if (is_dash(position)) {
            id += u'-';
        } else {
            id += next < digits.size() ? static_cast<char16_t>(digits[next]) : u'0';
            ++next;
        }
    }
    return id;
}

std::u16string class_id_of_units(std::u16string_view name) {
    CString id;
    for (std::size_t i = 0; i < kClassUnits; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) id += u'-';
        id.AppendFormat(u"%02x", i < name.size() ? unsigned{name[i]} : 0U);
    }
    return std::u16string(id.View());
}

}  // namespace

DesktopNotificationActivatedEventArgsCompat::DesktopNotificationActivatedEventArgsCompat(
    std::u16string argument, StringMap user_input)
    : m_argument(std::move(argument)), m_user_input(std::move(user_input)) {}

DesktopNotificationHistoryCompat::DesktopNotificationHistoryCompat(std::u16string model_id,
                                                                   ToastNotificationHistory history)
    : m_model_id(std::move(model_id)), m_history(history) {}

void DesktopNotificationHistoryCompat::Clear() const {
    if (m_model_id.empty()) {
        m_history.Clear();
    } else {
        m_history.Clear(m_model_id);
    }
}

void DesktopNotificationManagerCompat::Register(std::u16string aumid,
                                                const std::u16string& displayName,
                                                const std::u16string& iconPath) {
    if (has_identity()) return;
    state().model_id = std::move(aumid);
    const auto class_text = joined({u"{", tvutil2::class_id_of(state().model_id), u"}"});
    register_activator(class_text);
    const auto key = model_key();
    write_text(key, u"DisplayName", displayName);
    if (!iconPath.empty()) {
        write_text(key, u"IconUri", iconPath);
    } else {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, key.c_str(), u"IconUri");
    }
    write_text(key, u"IconBackgroundColor", iconPath);
    write_text(key, u"CustomActivator", class_text);
}

void DesktopNotificationManagerCompat::OnActivated(Handler handler) {
    expect_registration();
    state().handler = std::move(handler);
    CoResumeClassObjects();
}

ToastNotifier DesktopNotificationManagerCompat::CreateToastNotifier() {
    return has_identity() ? ToastNotificationManager::CreateToastNotifier()
                          : ToastNotificationManager::CreateToastNotifier(state().model_id);
}

DesktopNotificationHistoryCompat DesktopNotificationManagerCompat::History() {
    expect_registration();
    return {state().model_id, ToastNotificationManager::History()};
}

void DesktopNotificationManagerCompat::Uninstall() {
    if (is_contained()) return;
    const auto& model_id = state().model_id;
    if (!has_identity() && !model_id.empty()) {
        const auto notifier = CreateToastNotifier();
        for (const auto& toast : notifier.GetScheduledToastNotifications()) {
            notifier.RemoveFromSchedule(toast);
        }
        History().Clear();
    }
    if (model_id.empty()) return;
    tvutil2::withdraw_toasts(model_id);
    RegDeleteKeyW(HKEY_CURRENT_USER, model_key().c_str());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): products' code is built for this signature
void TVSendToast(CString strTitle, CString strText, CString strButton, CString strImage) {
    CString text;
    text.Format(kTemplate, strButton);
    const XmlDocument document;
    document.LoadXml(text.View());
    document.DocumentElement().SetAttribute(u"launch",
                                            u"action=viewConversation&conversationId=9813");
    document.SelectSingleNode(u"//text[1]").InnerText(strTitle.View());
    document.SelectSingleNode(u"//text[2]").InnerText(strText.View());
    CString image;
    AfxGetModulePath(image, nullptr);
    if (!image.IsEmpty()) {
        image += u'\\';
        image += strImage;
    }
    XmlElement(document.SelectSingleNode(u"//image[1]")).SetAttribute(u"src", image.View());
    XmlElement(document.SelectSingleNode(u"//image[2]")).SetAttribute(u"src", u"");
    XmlElement(document.SelectSingleNode(u"//action[1]"))
        .SetAttribute(u"arguments", u"action=update&conversationId=9813");
    const ToastNotification toast(document);
    DesktopNotificationManagerCompat::CreateToastNotifier().Show(toast);
}

namespace tvutil2 {

std::u16string class_id_of(const std::u16string& model_id) {
    return model_id.size() <= kClassUnits ? class_id_of_units(model_id)
                                          : class_id_of_hash(hash_of(model_id));
}

}  // namespace tvutil2
