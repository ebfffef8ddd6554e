#include "tvutil2/platform/system/firewall_rule.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr LONG kDomainAndPublic = NET_FW_PROFILE2_DOMAIN | NET_FW_PROFILE2_PUBLIC;

TEST(FirewallRule, IsReadFromItsText) {
    const auto rule = tvutil2::firewall_rule(
        u"v2.30|Action=Block|Active=TRUE|Dir=Out|Protocol=6|Profile=Domain|Profile=Public|"
        u"LPort=22|App=C:\\x y\\Dovr.exe|Name=a=b|Desc=|");
    ASSERT_TRUE(rule);
    EXPECT_EQ(rule->application, u"C:\\x y\\Dovr.exe");
    EXPECT_EQ(rule->name, u"a=b");
    EXPECT_EQ(rule->protocol, 6);
    EXPECT_EQ(rule->profiles, kDomainAndPublic);
    EXPECT_EQ(rule->action, NET_FW_ACTION_BLOCK);
    EXPECT_EQ(rule->direction, NET_FW_RULE_DIR_OUT);
    EXPECT_TRUE(rule->is_enabled);
}

TEST(FirewallRule, IsRefusedWhereItDoesNotFollowTheGrammar) {
    const struct {
        const char16_t* text;
        bool is_rule;
    } cases[] = {
        {u"v2.0|Action=allow|", true},
        {u"V2.0|ACTION=ByPass|", true},
        {u"v2.0|Action=Allow", true},
        {u"", false},
        {u"v2.0", false},
        {u"v2.0|", false},
        {u"v2.0|Active=TRUE|", false},  // no action
        {u"v.0|Action=Allow|", false},
        {u"v2.|Action=Allow|", false},
        {u"v2x.0|Action=Allow|", false},
        {u"2.0|Action=Allow|", false},
        {u"v2.0|Action=Allow|Active|", false},
        {u"v2.0|Action=Allow|Active=yes|", false},
        {u"v2.0|Action=Allow||", false},
        {u"v2.0|Action=Perhaps|", false},
        {u"v2.0|Action=Allow|Dir=Up|", false},
        {u"v2.0|Action=Allow|Protocol=|", false},
        {u"v2.0|Action=Allow|Protocol=6x|", false},
        {u"v2.0|Action=Allow|Protocol=257|", false},
        {u"v2.0|Action=Allow|Protocol=99999999999|", false},
        {u"v2.0|Action=Allow|Profile=Home|", false},
    };
    for (const auto& [text, is_rule] : cases) {
        EXPECT_EQ(tvutil2::firewall_rule(text).has_value(), is_rule)
            << testing::PrintToString(std::u16string(text));
    }
    const auto bare = tvutil2::firewall_rule(u"v2.0|Action=Block|");
    EXPECT_EQ(bare->profiles, NET_FW_PROFILE2_ALL);
    EXPECT_EQ(bare->protocol, NET_FW_IP_PROTOCOL_ANY);
    EXPECT_FALSE(bare->is_enabled);
}

}  // namespace
