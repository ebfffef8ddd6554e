#include "tools/tvutil/language_names.h"

#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "tools/tvutil/command.h"

namespace tool {
namespace {

using tvutil2::kLanguages;
using tvutil2::Language;

template <class Test>
const Language* find_language(Test test) {
    const auto* const found = std::find_if(kLanguages.begin(), kLanguages.end(), test);
    return found != kLanguages.end() ? found : nullptr;
}

}  // namespace

std::optional<unsigned int> number_of(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string shown_id(LANGID id) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", unsigned{id});
    return text;
}

std::string shown_name(LANGID id) {
    const auto* const found = find_language([id](const Language& each) { return each.id == id; });
    return found != nullptr ? narrow(found->name) : "";
}

LANGID language_id(const std::string& text) {
    if (const auto number = number_of(text); number && *number > 0 && *number <= 0xFFFF) {
        return static_cast<LANGID>(*number);
    }
    const auto shown = wide(text);
    const auto* const listed = find_language(
        [&shown](const Language& each) { return _wcsicmp(each.name, shown.c_str()) == 0; });
    if (listed != nullptr) return listed->id;
    auto name = text;
    std::replace(name.begin(), name.end(), '-', '_');
    const auto id = tvutil2::language_of(name);
    // What nobody speaks comes back as English.
    const bool is_english = PRIMARYLANGID(id) == 0x09;
    if (!is_english || name.starts_with("en")) return id;
    throw Failure{Exit::usage,
                  text + ": no language; give one like \"de\", \"zh-TW\" or \"0x0407\""};
}

void print_languages(bool as_json) {
    auto json = nlohmann::ordered_json::array();
    for (const auto& language : kLanguages) {
        const auto id = shown_id(language.id);
        const auto name = narrow(language.name);
        const auto suffix = narrow(language.satellite_suffix);
        if (as_json) {
            json.push_back({{"id", id}, {"name", name}, {"satellite", suffix}});
        } else {
            std::string line = id;
            for (const auto& field : {name, suffix}) {
                if (!field.empty()) line.append("\t").append(field);
            }
            print(line);
        }
    }
    if (as_json) print(json);
}

}  // namespace tool
