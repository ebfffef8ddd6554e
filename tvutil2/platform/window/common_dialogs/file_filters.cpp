#include "tvutil2/platform/window/common_dialogs/file_filters.h"

#include "tvutil2/platform/files/name_pattern.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tvutil2 {
namespace {

std::vector<std::u16string> patterns_in(std::u16string_view text) {
    std::vector<std::u16string> patterns;
    while (!text.empty()) {
        const auto end = std::min(text.find(u';'), text.size());
        if (end > 0) patterns.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return patterns;
}

}  // namespace

std::vector<FileQuestion::Filter> filters_in(const char16_t* text) {
    std::vector<FileQuestion::Filter> filters;
    while (text != nullptr && *text != 0) {
        const std::u16string name = text;
        text += name.size() + 1;
        const std::u16string patterns = text;
        text += patterns.empty() ? 0 : patterns.size() + 1;
        filters.push_back({name, patterns_in(patterns)});
    }
    return filters;
}

std::u16string extension_under(const FileQuestion& question, std::size_t filter) {
    if (filter >= question.filters.size() || question.filters[filter].patterns.empty()) return {};
    const auto& pattern = question.filters[filter].patterns[0];
    auto extension = pattern.starts_with(u"*.") ? pattern.substr(2) : u"";
    return NamePattern::has_wildcards(extension) ? u"" : extension;
}

}  // namespace tvutil2
