// Private-profile files of any bytes: a value that is set is found, all others stay, and what is
// removed is gone.
#include "tvutil2/platform/profile/profile_text.h"

#include <algorithm>

#include "fuzz/fuzz_input.h"

namespace {

using tvutil2::ProfileText;

// All other entries of the first section of each name are what they were.
void require_others(const ProfileText& before, const ProfileText& after) {
    for (const auto& section : before.sections()) {
        if (&section != before.find(section.name)) continue;
        const auto* const same = after.find(section.name);
        fuzz::require(same != nullptr);
        for (const auto& entry : section.entries) {
            if (&entry != ProfileText::find(section, entry.key)) continue;
            if (before.find(u"s") == &section && &entry == ProfileText::find(section, u"k")) {
                continue;
            }
            const auto* const kept = ProfileText::find(*same, entry.key);
            fuzz::require(kept != nullptr && kept->value == entry.value);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ProfileText text(std::string(reinterpret_cast<const char*>(data), size));
    for (const auto* value : {u"", u"v", u"\u00E4", u"\xD800"}) {
        auto content = text.with_value(u"s", u"k", value);
        // What would have to become UTF-16 and isn't valid is refused.
        fuzz::require(content.has_value() || *value == u'\xD800' || *value == u'\u00E4');
        if (!content) continue;
        const ProfileText changed(std::move(*content));
        const auto* const section = changed.find(u"S");
        fuzz::require(section != nullptr);
        const auto* const entry = ProfileText::find(*section, u"K");
        fuzz::require(entry != nullptr && entry->value == value);
        require_others(text, changed);
        auto shorter = changed.without_key(u"s", u"k");
        if (!shorter) continue;
        const ProfileText without(std::move(*shorter));
        fuzz::require(without.find(u"s") != nullptr &&
                      ProfileText::find(*without.find(u"s"), u"k") == nullptr);
        require_others(text, without);
        auto others = changed.without_section(u"s");
        fuzz::require(!others || ProfileText(std::move(*others)).find(u"s") == nullptr);
    }
    return 0;
}
