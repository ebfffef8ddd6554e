// A firewall rule's text: what comes out of it are values that a rule can have.
#include "tvutil2/platform/system/firewall_rule.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzz::widened({reinterpret_cast<const char*>(data), size});
    const auto rule = tvutil2::firewall_rule(text);
    if (!rule) return 0;
    fuzz::require(text.find(u"|") != std::u16string::npos);
    fuzz::require(rule->protocol >= 0 && rule->protocol <= NET_FW_IP_PROTOCOL_ANY);
    fuzz::require(rule->profiles != 0);
    fuzz::require(rule->action == NET_FW_ACTION_BLOCK || rule->action == NET_FW_ACTION_ALLOW);
    fuzz::require(rule->direction == NET_FW_RULE_DIR_IN || rule->direction == NET_FW_RULE_DIR_OUT);
    fuzz::require(text.find(rule->application) != std::u16string::npos);
    // A rule without its last bar says the same.
    if (text.ends_with(u'|') && !text.ends_with(u"||")) {
        fuzz::require(tvutil2::firewall_rule(text.substr(0, text.size() - 1)).has_value());
    }
    return 0;
}
