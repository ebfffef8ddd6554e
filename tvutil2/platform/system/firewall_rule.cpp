#include "tvutil2/platform/system/firewall_rule.h"

#include <algorithm>

namespace tvutil2 {
namespace {

bool is_digit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

// Keywords of the grammar are ASCII and have no case.
bool is_word(std::u16string_view text, std::u16string_view word) {
    const auto lower = [](char16_t c) {
        return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
    };
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [&](char16_t a, char16_t b) { return lower(a) == lower(b); });
}

struct Word {
    std::u16string_view text;
    LONG value;
};

template <std::size_t count>
bool take_word(std::u16string_view text, const Word (&words)[count], LONG& value) {
    const auto* const found =
        std::find_if(std::begin(words), std::end(words),
                     [&](const Word& word) { return is_word(text, word.text); });
    if (found == std::end(words)) return false;
    value = found->value;
    return true;
}

bool take_protocol(std::u16string_view text, LONG& protocol) {
    if (text.empty() || text.size() > 3 || !std::all_of(text.begin(), text.end(), is_digit)) {
        return false;
    }
    LONG number = 0;
    for (const char16_t digit : text) number = number * 10 + (digit - u'0');
    protocol = number;
    return number <= NET_FW_IP_PROTOCOL_ANY;
}

// "v", a number, a dot, a number.
bool is_version(std::u16string_view text) {
    if (text.empty() || (text[0] != u'v' && text[0] != u'V')) return false;
    const auto dot = text.find(u'.');
    if (dot == std::u16string_view::npos || dot < 2 || dot + 1 == text.size()) return false;
    return std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(dot),
                       is_digit) &&
           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(dot) + 1, text.end(), is_digit);
}

class Reader {
  public:
    // False for a value that the field can't have.
    bool take(std::u16string_view key, std::u16string_view value);
    [[nodiscard]] std::optional<FirewallRule> rule() const {
        return m_has_action ? std::optional(m_rule) : std::nullopt;
    }

  private:
    bool take_profile(std::u16string_view value);

    FirewallRule m_rule;
    bool m_has_action = false;
    bool m_has_profile = false;
};

bool Reader::take_profile(std::u16string_view value) {
    constexpr Word kProfiles[] = {{u"Domain", NET_FW_PROFILE2_DOMAIN},
                                  {u"Private", NET_FW_PROFILE2_PRIVATE},
                                  {u"Public", NET_FW_PROFILE2_PUBLIC}};
    LONG profile = 0;
    if (!take_word(value, kProfiles, profile)) return false;
    m_rule.profiles = m_has_profile ? m_rule.profiles | profile : profile;
    m_has_profile = true;
    return true;
}

bool Reader::take(std::u16string_view key, std::u16string_view value) {
    constexpr Word kActions[] = {{u"Block", NET_FW_ACTION_BLOCK},
                                 {u"Allow", NET_FW_ACTION_ALLOW},
                                 {u"ByPass", NET_FW_ACTION_ALLOW}};
    constexpr Word kDirections[] = {{u"In", NET_FW_RULE_DIR_IN}, {u"Out", NET_FW_RULE_DIR_OUT}};
    constexpr Word kTruths[] = {{u"TRUE", 1}, {u"FALSE", 0}};
    if (is_word(key, u"Action")) {
        m_has_action = true;
        return take_word(value, kActions, m_rule.action);
    }
    if (is_word(key, u"Active")) {
        LONG truth = 0;
        if (!take_word(value, kTruths, truth)) return false;
        m_rule.is_enabled = truth != 0;
        return true;
    }
    if (is_word(key, u"Dir")) return take_word(value, kDirections, m_rule.direction);
    if (is_word(key, u"Protocol")) return take_protocol(value, m_rule.protocol);
    if (is_word(key, u"Profile")) return take_profile(value);
    if (is_word(key, u"App")) m_rule.application = value;
    if (is_word(key, u"Name")) m_rule.name = value;
    return true;
}

}  // namespace

std::optional<FirewallRule> firewall_rule(std::u16string_view text) {
    const auto version = text.substr(0, text.find(u'|'));
    if (version.size() == text.size() || !is_version(version)) return std::nullopt;
    text.remove_prefix(version.size() + 1);
    Reader reader;
    while (!text.empty()) {
        const auto field = text.substr(0, text.find(u'|'));
        text.remove_prefix(std::min(field.size() + 1, text.size()));
        const auto equals = field.find(u'=');
        if (equals == std::u16string_view::npos) return std::nullopt;
        if (!reader.take(field.substr(0, equals), field.substr(equals + 1))) return std::nullopt;
    }
    return reader.rule();
}

}  // namespace tvutil2
