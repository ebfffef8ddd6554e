#include "tvutil2/services/firewall.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/system/firewall_policy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

const std::u16string kPolicy =
    u"SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy";
const std::u16string kNetworks =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkList\\Profiles";

void store(const std::u16string& key_name, const char16_t* name, DWORD type, const void* data,
           std::size_t size) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, key_name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              0);
    RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    RegCloseKey(key);
}

void store(const std::u16string& key, const char16_t* name, DWORD number) {
    store(key, name, REG_DWORD, &number, sizeof number);
}

// Rules of a program, in their order; "@" is its path.
void install_rules(const std::vector<std::u16string>& rules, const std::u16string& program) {
    SHDeleteKeyW(HKEY_LOCAL_MACHINE, (kPolicy + u"\\FirewallRules").c_str());
    char16_t name[] = u"a";
    for (auto rule : rules) {
        if (const auto at = rule.find(u'@'); at != std::u16string::npos)
            rule.replace(at, 1, program);
        store(kPolicy + u"\\FirewallRules", name, REG_SZ, rule.data(), rule.size() * 2);
        ++name[0];
    }
}

// A machine on a public and a domain network, with the firewall on in both.
std::u16string install_policy() {
    const auto program = tests::new_folder() + "/Dovr.exe";
    tests::write_file(program, "x");
    store(kNetworks + u"\\{1}", u"Category", 0);
    store(kNetworks + u"\\{2}", u"Category", 2);
    store(kPolicy + u"\\PublicProfile", u"EnableFirewall", 1);
    store(kPolicy + u"\\DomainProfile", u"EnableFirewall", 1);
    return tests::platform_path(program);
}

constexpr auto kBlock = u"v2.30|Action=Block|Active=TRUE|Protocol=6|App=@|";
constexpr auto kAllow = u"v2.30|Action=Allow|Active=TRUE|Protocol=6|App=@|";

TEST(Firewall, FirstEnabledTcpRuleInForceDecides) {
    const auto program = install_policy();
    const std::u16string with_dots = u"v2.30|Action=Block|Active=TRUE|Protocol=6|App=" +
                                     program.substr(0, program.rfind(u'\\')) +
                                     u"\\.\\x\\..\\DOVR.EXE|";
    const struct {
        std::vector<std::u16string> rules;
        bool is_blocked;
    } cases[] = {
        {{}, false},
        {{kBlock}, true},
        {{with_dots}, true},
        {{kAllow, kBlock}, false},
        {{kBlock, kAllow}, true},
        {{u"v2.30|Action=Block|Active=FALSE|Protocol=6|App=@|", kBlock}, false},
        {{u"v2.30|Action=Block|Active=TRUE|Protocol=17|App=@|"}, false},
        {{u"v2.30|Action=Allow|Active=TRUE|Protocol=17|App=@|", kBlock}, true},
        {{u"v2.30|Action=Block|Active=TRUE|App=@|"}, false},  // any protocol isn't TCP
        {{u"v2.30|Action=Block|Active=TRUE|Protocol=6|Profile=Private|App=@|"}, false},
        {{u"v2.30|Action=Allow|Active=TRUE|Protocol=6|Profile=Private|App=@|", kBlock}, true},
        {{u"v2.30|Action=Block|Active=TRUE|Dir=Out|Protocol=6|Profile=Domain|App=@|"}, true},
        {{u"v2.30|Action=Allow|Active=TRUE|Protocol=6|App=C:\\other.exe|", kBlock}, true},
        {{u"v2.30|Action=Allow|Active=TRUE|Protocol=6|", kBlock}, true},  // of no program
        {{u"no rule", u"v2.30|Action=Allow|Active=maybe|Protocol=6|App=@|", kBlock}, true},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        install_rules(cases[i].rules, program);
        EXPECT_EQ(tvutil2::is_blocked_by_firewall(program.c_str()), cases[i].is_blocked)
            << "case " << i;
    }
}

TEST(Firewall, OneProfileWithoutItIsEnough) {
    const auto program = install_policy();
    install_rules({kBlock}, program);
    ASSERT_TRUE(tvutil2::is_blocked_by_firewall(program.c_str()));
    store(kPolicy + u"\\DomainProfile", u"EnableFirewall", 0);
    EXPECT_FALSE(tvutil2::is_blocked_by_firewall(program.c_str()));
    SHDeleteKeyW(HKEY_LOCAL_MACHINE, kNetworks.c_str());  // then the machine is on a public one
    EXPECT_TRUE(tvutil2::is_blocked_by_firewall(program.c_str()));
}

TEST(Firewall, TellsThePersonAndLeavesTheThreadAsItWas) {
    const auto program = install_policy();
    install_rules({kBlock}, program);
    const auto shown = [](const char16_t* path) {
        std::string printed;
        tests::in_child_alone(
            [path] {
                TvCheckFirewallBlocked(path);
                return CoInitializeEx(nullptr, COINIT_MULTITHREADED) == S_OK ? 0 : 1;
            },
            printed);
        return printed;
    };
    EXPECT_NE(shown(program.c_str()).find("Dovr.exe program is blocked by Windows firewall."),
              std::string::npos);
    EXPECT_EQ(shown((program + u"x").c_str()), "");
    EXPECT_EQ(shown(nullptr), "");
}

}  // namespace
