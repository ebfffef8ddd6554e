#include "tvutil2/platform/system/firewall_policy.h"

#include "tvutil2/platform/registry/open_key.h"

#include <atomic>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

constexpr auto kPolicyKey =
    u"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy";
constexpr auto kRulesKey =
    u"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy\\FirewallRules";
constexpr auto kNetworksKey =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkList\\Profiles";

// Nothing for a value that is missing or of another type.
LONG read(const OpenKey& key, const char16_t* name, std::optional<DWORD>& number) {
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    const auto error =
        RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (error == ERROR_SUCCESS && type == REG_DWORD && size == sizeof value) number = value;
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_MORE_DATA) return ERROR_SUCCESS;
    return error;
}

HRESULT result_of(LONG error) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

// The parts that every object has. `Self` names its interface's id as kId.
template <class Self, class Interface>
class Object : public Interface {
  public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT QueryInterface(const IID& id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        const bool is_dispatch = std::is_base_of_v<IDispatch, Interface> && id == IID_IDispatch;
        if (id != IID_IUnknown && id != Self::kId && !is_dispatch) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    DWORD AddRef() override { return ++m_references; }
    DWORD Release() override {
        const DWORD left = --m_references;
        if (left == 0) delete static_cast<Self*>(this);
        return left;
    }

  protected:
    ~Object() = default;

  private:
    std::atomic<DWORD> m_references{1};
};

template <class T>
HRESULT put(T value, T* out) {
    if (out == nullptr) return E_POINTER;
    *out = value;
    return S_OK;
}

HRESULT put_text(const std::u16string& text, BSTR* out) {
    if (out == nullptr) return E_POINTER;
    *out = text.empty() ? nullptr : SysAllocString(text.c_str());
    return *out != nullptr || text.empty() ? S_OK : E_OUTOFMEMORY;
}

class Rule final : public Object<Rule, INetFwRule> {
  public:
    static constexpr IID kId = IID_INetFwRule;

    explicit Rule(FirewallRule rule = {}) : m_rule(std::move(rule)) {}

    HRESULT get_Name(BSTR* name) override { return put_text(m_rule.name, name); }
    HRESULT get_ApplicationName(BSTR* path) override { return put_text(m_rule.application, path); }
    HRESULT get_Protocol(LONG* protocol) override { return put(m_rule.protocol, protocol); }
    HRESULT get_Direction(LONG* direction) override { return put(m_rule.direction, direction); }
    HRESULT get_Enabled(VARIANT_BOOL* enabled) override {
        return put(m_rule.is_enabled ? VARIANT_TRUE : VARIANT_FALSE, enabled);
    }
    HRESULT get_Profiles(LONG* profiles) override { return put(m_rule.profiles, profiles); }
    HRESULT get_Action(LONG* action) override { return put(m_rule.action, action); }

  private:
    FirewallRule m_rule;
};

using RuleList = std::shared_ptr<const std::vector<FirewallRule>>;

class Walk final : public Object<Walk, IEnumVARIANT> {
  public:
    static constexpr IID kId = IID_IEnumVARIANT;

    explicit Walk(RuleList rules) : m_rules(std::move(rules)) {}

    HRESULT Next(DWORD count, VARIANT* values, DWORD* fetched) override {
        if (values == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
        DWORD done = 0;
        for (; done < count && m_next < m_rules->size(); ++done) {
            values[done].vt = VT_DISPATCH;
            values[done].pdispVal = new Rule((*m_rules)[m_next++]);
        }
        if (fetched != nullptr) *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }
    HRESULT Skip(DWORD count) override {
        const auto left = m_rules->size() - m_next;
        m_next += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT Reset() override {
        m_next = 0;
        return S_OK;
    }

  private:
    RuleList m_rules;
    std::size_t m_next = 0;
};

class Rules final : public Object<Rules, INetFwRules> {
  public:
    static constexpr IID kId = IID_INetFwRules;

    explicit Rules(RuleList rules) : m_rules(std::move(rules)) {}

    HRESULT get_Count(LONG* count) override {
        return put(static_cast<LONG>(m_rules->size()), count);
    }
    HRESULT get__NewEnum(IUnknown** walk) override {
        if (walk == nullptr) return E_POINTER;
        *walk = new Walk(m_rules);
        return S_OK;
    }

  private:
    RuleList m_rules;
};

// Values that are no text, or whose text is no rule, are passed over.
LONG read_rules(std::vector<FirewallRule>& rules) {
    OpenKey key;
    const auto opened = key.open(HKEY_LOCAL_MACHINE, kRulesKey, KEY_READ);
    if (opened == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
    if (opened != ERROR_SUCCESS) return opened;
    std::vector<char16_t> name(REG_MAX_VALUE_NAME + 1);
    std::vector<char16_t> text(4096);
    for (DWORD index = 0;;) {
        auto name_size = static_cast<DWORD>(name.size());
        auto size = static_cast<DWORD>(text.size() * sizeof(char16_t));
        DWORD type = 0;
        const auto error = RegEnumValueW(key.get(), index, name.data(), &name_size, nullptr, &type,
                                         reinterpret_cast<BYTE*>(text.data()), &size);
        if (error == ERROR_NO_MORE_ITEMS) return ERROR_SUCCESS;
        if (error == ERROR_MORE_DATA && size / sizeof(char16_t) >= text.size()) {
            text.resize(size / sizeof(char16_t) + 1);
            continue;
        }
        if (error != ERROR_SUCCESS) return error;
        ++index;
        std::u16string_view rule_text(text.data(), size / sizeof(char16_t));
        rule_text = rule_text.substr(0, rule_text.find(u'\0'));
        if (type != REG_SZ) continue;
        if (auto rule = firewall_rule(rule_text)) rules.push_back(std::move(*rule));
    }
}

LONG profile_of(DWORD category) {
    constexpr DWORD kPrivate = 1;
    constexpr DWORD kDomain = 2;
    if (category == kPrivate) return NET_FW_PROFILE2_PRIVATE;
    return category == kDomain ? NET_FW_PROFILE2_DOMAIN : NET_FW_PROFILE2_PUBLIC;
}

LONG read_profiles(LONG& profiles) {
    OpenKey networks;
    const auto opened = networks.open(HKEY_LOCAL_MACHINE, kNetworksKey, KEY_READ);
    if (opened != ERROR_SUCCESS && opened != ERROR_FILE_NOT_FOUND) return opened;
    for (DWORD index = 0; opened == ERROR_SUCCESS; ++index) {
        char16_t name[REG_MAX_KEY_NAME + 1];
        const auto error = RegEnumKeyW(networks.get(), index, name, REG_MAX_KEY_NAME + 1);
        if (error == ERROR_NO_MORE_ITEMS) break;
        if (error != ERROR_SUCCESS) return error;
        OpenKey network;
        std::optional<DWORD> category;
        // One that is gone by now is no network any more.
        if (network.open(networks.get(), name, KEY_READ) != ERROR_SUCCESS) continue;
        if (const auto failed = read(network, u"Category", category)) return failed;
        if (category) profiles |= profile_of(*category);
    }
    if (profiles == 0) profiles = NET_FW_PROFILE2_PUBLIC;
    return ERROR_SUCCESS;
}

class Policy final : public Object<Policy, INetFwPolicy2> {
  public:
    static constexpr IID kId = IID_INetFwPolicy2;

    HRESULT get_CurrentProfileTypes(LONG* profiles) override {
        if (profiles == nullptr) return E_POINTER;
        *profiles = 0;
        return result_of(read_profiles(*profiles));
    }

    HRESULT get_FirewallEnabled(LONG profile, VARIANT_BOOL* enabled) override {
        if (enabled == nullptr) return E_POINTER;
        *enabled = VARIANT_FALSE;
        const char16_t* const name = key_name(profile);
        if (name == nullptr) return E_INVALIDARG;
        OpenKey key;
        const auto opened =
            key.open(HKEY_LOCAL_MACHINE, (std::u16string(kPolicyKey) + name).c_str(), KEY_READ);
        if (opened == ERROR_FILE_NOT_FOUND) return S_OK;
        if (opened != ERROR_SUCCESS) return result_of(opened);
        std::optional<DWORD> value;
        if (const auto error = read(key, u"EnableFirewall", value)) return result_of(error);
        if (value.value_or(0) != 0) *enabled = VARIANT_TRUE;
        return S_OK;
    }

    HRESULT get_Rules(INetFwRules** rules) override {
        if (rules == nullptr) return E_POINTER;
        *rules = nullptr;
        std::vector<FirewallRule> found;
        if (const auto error = read_rules(found)) return result_of(error);
        *rules = new Rules(std::make_shared<const std::vector<FirewallRule>>(std::move(found)));
        return S_OK;
    }

  private:
    static const char16_t* key_name(LONG profile) {
        switch (profile) {
            case NET_FW_PROFILE2_DOMAIN:
                return u"\\DomainProfile";
            case NET_FW_PROFILE2_PRIVATE:
                return u"\\StandardProfile";
            case NET_FW_PROFILE2_PUBLIC:
                return u"\\PublicProfile";
            default:
                return nullptr;
        }
    }
};

template <class Class>
HRESULT create(const IID& id, void** object) {
    auto* const made = new Class;
    const auto result = made->QueryInterface(id, object);
    made->Release();
    return result;
}

const ComClass g_policy(CLSID_NetFwPolicy2, create<Policy>);
const ComClass g_rule(CLSID_NetFwRule, create<Rule>);

}  // namespace
}  // namespace tvutil2
