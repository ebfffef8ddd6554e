// "tvutil firewall": the firewall's rules, and what they mean for a program.
#include "tvutil2/services/firewall.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/system/firewall_policy.h"

#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

struct Release {
    template <class Interface>
    void operator()(Interface* object) const {
        object->Release();
    }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Release>;

void expect(HRESULT result, const char* what) {
    if (FAILED(result)) {
        throw Failure{Exit::failed, tool::error_text(what, static_cast<DWORD>(result) & 0xFFFF)};
    }
}

std::string taken(BSTR text) {
    auto result = text != nullptr ? tool::narrow(text) : std::string();
    SysFreeString(text);
    return result;
}

nlohmann::ordered_json names_of(LONG profiles) {
    auto names = nlohmann::ordered_json::array();
    if ((profiles & NET_FW_PROFILE2_DOMAIN) != 0) names.emplace_back("domain");
    if ((profiles & NET_FW_PROFILE2_PRIVATE) != 0) names.emplace_back("private");
    if ((profiles & NET_FW_PROFILE2_PUBLIC) != 0) names.emplace_back("public");
    return names;
}

nlohmann::ordered_json describe(INetFwRule& rule) {
    BSTR name = nullptr;
    BSTR application = nullptr;
    LONG protocol = 0;
    LONG profiles = 0;
    LONG action = 0;
    LONG direction = 0;
    VARIANT_BOOL is_enabled = VARIANT_FALSE;
    expect(rule.get_Name(&name), "name");
    expect(rule.get_ApplicationName(&application), "program");
    rule.get_Protocol(&protocol);
    rule.get_Profiles(&profiles);
    rule.get_Action(&action);
    rule.get_Direction(&direction);
    rule.get_Enabled(&is_enabled);
    return {{"name", taken(name)},
            {"program", taken(application)},
            {"protocol", protocol},
            {"direction", direction == NET_FW_RULE_DIR_OUT ? "out" : "in"},
            {"profiles", names_of(profiles)},
            {"action", action == NET_FW_ACTION_BLOCK ? "block" : "allow"},
            {"enabled", is_enabled == VARIANT_TRUE}};
}

nlohmann::ordered_json rules_of(INetFwPolicy2& policy) {
    INetFwRules* rules = nullptr;
    expect(policy.get_Rules(&rules), "rules");
    const Held<INetFwRules> held_rules(rules);
    IUnknown* object = nullptr;
    expect(rules->get__NewEnum(&object), "rules");
    const Held<IUnknown> held_object(object);
    IEnumVARIANT* walk = nullptr;
    expect(object->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&walk)), "rules");
    const Held<IEnumVARIANT> held_walk(walk);
    auto list = nlohmann::ordered_json::array();
    VARIANT value;
    VariantInit(&value);
    while (walk->Next(1, &value, nullptr) == S_OK) {
        INetFwRule* rule = nullptr;
        expect(value.pdispVal->QueryInterface(IID_INetFwRule, reinterpret_cast<void**>(&rule)),
               "rule");
        const Held<INetFwRule> held_rule(rule);
        VariantClear(&value);
        list.push_back(describe(*rule));
    }
    return list;
}

nlohmann::ordered_json firewall() {
    INetFwPolicy2* policy = nullptr;
    expect(CoCreateInstance(CLSID_NetFwPolicy2, nullptr, CLSCTX_INPROC_SERVER, IID_INetFwPolicy2,
                            reinterpret_cast<void**>(&policy)),
           "firewall");
    const Held<INetFwPolicy2> held(policy);
    LONG current = 0;
    expect(policy->get_CurrentProfileTypes(&current), "profiles");
    LONG enabled = 0;
    for (const LONG profile :
         {NET_FW_PROFILE2_DOMAIN, NET_FW_PROFILE2_PRIVATE, NET_FW_PROFILE2_PUBLIC}) {
        VARIANT_BOOL is_on = VARIANT_FALSE;
        expect(policy->get_FirewallEnabled(profile, &is_on), "profiles");
        if (is_on == VARIANT_TRUE) enabled |= profile;
    }
    return {
        {"current", names_of(current)}, {"on", names_of(enabled)}, {"rules", rules_of(*policy)}};
}

std::string joined(const nlohmann::ordered_json& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : ", ") + name.get<std::string>();
    return text.empty() ? "none" : text;
}

void list(bool json) {
    const auto all = firewall();
    if (json) return tool::print(all);
    tool::print("profiles in force: " + joined(all["current"]));
    tool::print("firewall on in: " + joined(all["on"]));
    for (const auto& rule : all["rules"]) {
        const auto program = rule["program"].get<std::string>();
        tool::print((rule["enabled"] ? "" : "(off) ") + rule["action"].get<std::string>() + ' ' +
                    rule["direction"].get<std::string>() + " protocol " +
                    std::to_string(rule["protocol"].get<int>()) + " in " +
                    joined(rule["profiles"]) + ": " + (program.empty() ? "any program" : program));
    }
}

void check(const std::string& file, bool json) {
    const auto path = tool::wide(file);
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        throw Failure{Exit::failed, tool::error_text(file, GetLastError())};
    }
    const bool is_blocked = tvutil2::is_blocked_by_firewall(path.c_str());
    if (is_blocked) tool::exit_with(Exit::no);
    if (json) return tool::print({{"program", file}, {"blocked", is_blocked}});
    tool::print(std::string_view(is_blocked ? "blocked" : "not blocked"));
}

const tool::Command g_command([](CLI::App& app) {
    auto* const firewall = app.add_subcommand("firewall", "Rules of the firewall");
    firewall->require_subcommand(1);
    const auto json = std::make_shared<bool>(false);
    const auto file = std::make_shared<std::string>();
    auto* const check_command = firewall->add_subcommand(
        "check", "Whether a program may use the network; exit code 1 when it is blocked");
    check_command->add_option("FILE", *file, "The program")->required();
    tool::add_json_flag(*check_command, *json);
    check_command->callback([file, json] { check(*file, *json); });
    auto* const list_command = firewall->add_subcommand("list", "Profiles and rules");
    tool::add_json_flag(*list_command, *json);
    list_command->callback([json] { list(*json); });
});

}  // namespace
