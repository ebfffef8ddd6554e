#include "tvutil2/services/firewall.h"

#include "tvutil2/data/text.h"
#include "tvutil2/platform/base/com_reference.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/system/firewall_policy.h"

#include <cstdio>
#include <optional>
#include <utility>

namespace {

using tvutil2::ComReference;

constexpr UINT kBlocked = 14103;
constexpr UINT kProgramBlocked = 14104;
constexpr LONG kProfiles[] = {NET_FW_PROFILE2_DOMAIN, NET_FW_PROFILE2_PRIVATE,
                              NET_FW_PROFILE2_PUBLIC};

class OwnedText {
  public:
    OwnedText() = default;
    ~OwnedText() { SysFreeString(m_text); }
    OwnedText(const OwnedText&) = delete;
    OwnedText& operator=(const OwnedText&) = delete;
    BSTR* out() { return &m_text; }
    [[nodiscard]] const char16_t* get() const { return m_text; }

  private:
    BSTR m_text = nullptr;
};

class OwnedVariant {
  public:
    OwnedVariant() { VariantInit(&m_value); }
    ~OwnedVariant() { VariantClear(&m_value); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    VARIANT* get() { return &m_value; }

  private:
    VARIANT m_value{};
};

// For someone who runs the program from a shell.
bool report(const char* what, HRESULT result) {
    std::printf("%s 0x%08x\n", what, static_cast<unsigned int>(result));
    return false;
}

bool create(const CLSID& class_id, const IID& id, void** object) {
    const auto result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, id, object);
    return SUCCEEDED(result) || report("CoCreateInstance()", result);
}

bool is_same_file(const char16_t* a, const char16_t* b) {
    char16_t full_a[MAX_PATH];
    char16_t full_b[MAX_PATH];
    const auto make_full = [](const char16_t* path, char16_t* full) {
        const auto length = GetFullPathNameW(path, MAX_PATH, full, nullptr);
        return length != 0 && length < MAX_PATH;
    };
    return make_full(a, full_a) && make_full(b, full_b) && _wcsicmp(full_a, full_b) == 0;
}

enum class Verdict { next, blocked, free };

// What one rule says about a program in the profiles in force.
Verdict judge(INetFwRule& rule, const char16_t* path, LONG current) {
    OwnedText application;
    LONG protocol = 0;
    if (FAILED(rule.get_ApplicationName(application.out())) ||
        !is_same_file(application.get(), path) || FAILED(rule.get_Protocol(&protocol)) ||
        protocol != NET_FW_IP_PROTOCOL_TCP) {
        return Verdict::next;
    }
    VARIANT_BOOL is_enabled = VARIANT_FALSE;
    if (FAILED(rule.get_Enabled(&is_enabled))) return Verdict::next;
    if (is_enabled != VARIANT_TRUE) return Verdict::free;
    LONG profiles = 0;
    LONG action = 0;
    if (FAILED(rule.get_Profiles(&profiles)) || (profiles & current) == 0 ||
        FAILED(rule.get_Action(&action))) {
        return Verdict::next;
    }
    return action == NET_FW_ACTION_BLOCK ? Verdict::blocked : Verdict::free;
}

bool is_on_everywhere(INetFwPolicy2& policy, LONG current) {
    for (const LONG profile : kProfiles) {
        if ((profile & current) == 0) continue;
        VARIANT_BOOL is_on = VARIANT_FALSE;
        if (FAILED(policy.get_FirewallEnabled(profile, &is_on)) || is_on == VARIANT_FALSE) {
            return false;
        }
    }
    return true;
}

bool is_blocked(INetFwPolicy2& policy, const char16_t* path) {
    LONG current = 0;
    if (FAILED(policy.get_CurrentProfileTypes(&current)) || !is_on_everywhere(policy, current)) {
        return false;
    }
    ComReference<INetFwRules> rules;
    const auto got_rules = policy.get_Rules(rules.out());
    if (FAILED(got_rules)) return report("get_Rules()", got_rules);
    // A system that can't make a rule can't show one either.
    ComReference<INetFwRule> made;
    if (!create(CLSID_NetFwRule, IID_INetFwRule, made.any())) return false;
    LONG count = 0;
    const auto counted = rules->get_Count(&count);
    if (FAILED(counted)) return report("get_Count failed:", counted);
    ComReference<IUnknown> walk_object;
    ComReference<IEnumVARIANT> walk;
    if (FAILED(rules->get__NewEnum(walk_object.out())) ||
        FAILED(walk_object->QueryInterface(IID_IEnumVARIANT, walk.any()))) {
        return false;
    }
    for (;;) {
        OwnedVariant value;
        DWORD fetched = 0;
        ComReference<INetFwRule> rule;
        if (walk->Next(1, value.get(), &fetched) != S_OK ||
            FAILED(VariantChangeType(value.get(), value.get(), 0, VT_DISPATCH)) ||
            FAILED(value.get()->pdispVal->QueryInterface(IID_INetFwRule, rule.any()))) {
            return false;
        }
        const auto verdict = judge(*rule.operator->(), path, current);
        if (verdict != Verdict::next) return verdict == Verdict::blocked;
    }
}

// The calling thread's concurrency model, for the length of a check.
class Apartment {
  public:
    Apartment()
        : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~Apartment() {
        if (SUCCEEDED(m_result)) CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    [[nodiscard]] bool is_usable() const {
        return SUCCEEDED(m_result) || m_result == RPC_E_CHANGED_MODE;
    }

  private:
    HRESULT m_result;
};

}  // namespace

namespace tvutil2 {

bool is_blocked_by_firewall(const char16_t* path) {
    const Apartment apartment;
    if (!apartment.is_usable()) return false;
    ComReference<INetFwPolicy2> policy;
    return create(CLSID_NetFwPolicy2, IID_INetFwPolicy2, policy.any()) &&
           is_blocked(*policy.operator->(), path);
}

}  // namespace tvutil2

void TvCheckFirewallBlocked(const char16_t* path) {
    char16_t own[MAX_PATH];
    const char16_t* program = path;
    if (path != nullptr) {
        if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) return;
    } else {
        const auto length = GetModuleFileNameW(nullptr, own, MAX_PATH);
        if (length == 0 || length == MAX_PATH) return;
        program = own;
    }
    if (!tvutil2::is_blocked_by_firewall(program)) return;
    const CString text =
        path != nullptr ? csFmt(kProgramBlocked, path) : tvutil2::library_string(kBlocked);
    MessageBoxW(nullptr, text, u"Windows Firewall Blocked", MB_ICONWARNING);
}
