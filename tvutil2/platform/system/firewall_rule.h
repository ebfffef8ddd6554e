// One rule of the firewall, in the text form that the registry keeps it in.
//
//     v2.30|Action=Block|Active=TRUE|Dir=In|Protocol=6|Profile=Public|App=C:\x\Dovr.exe|Name=Dovr|
//
// The grammar is that of firewall rules in the published Group Policy: Firewall and Advanced
// Security Data Structure ([MS-GPFAS], 2.2.2): a version, then fields, each "key=value|". "Profile"
// may stand several times. What isn't asked for here is passed over.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

inline constexpr LONG NET_FW_PROFILE2_DOMAIN = 1;
inline constexpr LONG NET_FW_PROFILE2_PRIVATE = 2;
inline constexpr LONG NET_FW_PROFILE2_PUBLIC = 4;
inline constexpr LONG NET_FW_PROFILE2_ALL = 0x7FFFFFFF;
inline constexpr LONG NET_FW_IP_PROTOCOL_TCP = 6;
inline constexpr LONG NET_FW_IP_PROTOCOL_UDP = 17;
inline constexpr LONG NET_FW_IP_PROTOCOL_ANY = 256;
inline constexpr LONG NET_FW_ACTION_BLOCK = 0;
inline constexpr LONG NET_FW_ACTION_ALLOW = 1;
inline constexpr LONG NET_FW_RULE_DIR_IN = 1;
inline constexpr LONG NET_FW_RULE_DIR_OUT = 2;

namespace tvutil2 {

struct FirewallRule {
    std::u16string name;
    std::u16string application;              ///< the program's path; empty for any
    LONG protocol = NET_FW_IP_PROTOCOL_ANY;  ///< an IP protocol number, or any
    LONG profiles = NET_FW_PROFILE2_ALL;     ///< NET_FW_PROFILE2_ bits
    LONG action = NET_FW_ACTION_BLOCK;
    LONG direction = NET_FW_RULE_DIR_IN;
    bool is_enabled = false;
};

/// Nothing for a text without a version or an action, with a field that has no "=", or with a value
/// that a field named above can't have: such a rule is as good as none.
[[nodiscard]] TVUTIL_API std::optional<FirewallRule> firewall_rule(std::u16string_view text);

}  // namespace tvutil2
