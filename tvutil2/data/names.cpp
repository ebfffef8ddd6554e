#include "tvutil2/data/names.h"

#include "tvutil2/data/folder_search.h"
#include "tvutil2/data/text_view.h"
#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <string>
#include <string_view>

using tvutil2::FolderSearch;

namespace {

std::u16string pattern_in(const char16_t* folder, std::u16string_view pattern) {
    std::u16string path(view(folder));
    path += u'\\';
    path += pattern;
    return path;
}

}  // namespace

int WildcardMatch(const char16_t* pattern_text, const char16_t* text_start) {
    const auto pattern = view(pattern_text);
    const auto text = view(text_start);
    constexpr auto kNowhere = std::u16string_view::npos;
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t saved_p = kNowhere;
    std::size_t saved_t = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == text[t] || pattern[p] == u'?')) {
            ++p;
            ++t;
        } else if (p < pattern.size() && pattern[p] == u'*') {
            saved_p = ++p;
            saved_t = t;
        } else if (saved_p == kNowhere) {
            return 0;
        } else if (saved_p == pattern.size()) {
            return 1;  // the "*" at the end takes the rest
        } else {
            p = saved_p;
            t = ++saved_t;
            // Where a character must follow, the next place to try is where it stands.
            if (pattern[p] != u'*' && pattern[p] != u'?') t = text.find(pattern[p], t);
            if (t == kNowhere) return 0;
            saved_t = t;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') ++p;
    return p == pattern.size() ? 1 : 0;
}

int EnumFile(const char16_t* folder, const char16_t* extension,
             int (*callback)(const char16_t* name, long data), long data) {
    std::u16string pattern = u"*.";
    pattern += view(extension);
    const auto cut = pattern.size() - 1;
    FolderSearch search(pattern_in(folder, pattern));
    const bool found = search.has_name();
    for (; search.has_name(); search.next()) {
        std::u16string name(search.name());
        name.resize(name.size() - std::min(name.size(), cut));
        if (callback(name.c_str(), data) == 0) break;
    }
    return found ? 1 : 0;
}

void GetFileNamesInADir(const char16_t* folder, CStringList& out) {
    for (FolderSearch search(pattern_in(folder, u"*.*")); search.has_name(); search.next()) {
        if (search.is_folder()) continue;
        const std::u16string_view name(search.name());
        out.AddTail(CString(name.substr(0, name.rfind(u'.'))));
    }
}

int DoesFolderHave(const char16_t* folder, const char16_t* extension) {
    for (FolderSearch search(pattern_in(folder, u"*.*")); search.has_name(); search.next()) {
        if (search.is_folder()) {
            if (!search.is_dots()) return 1;
            continue;
        }
        const std::u16string_view name(search.name());
        const auto dot = std::min(name.rfind(u'.'), name.size() - 1);
        const auto* tail = search.name() + dot + 1;
        if (_wcsicmp(tail, view(extension).data()) == 0) return 1;
    }
    return 0;
}
