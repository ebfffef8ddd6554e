// What holds of a record that was read: written and read again it is the same.
#pragma once

#include "tvutil2/url/url_info.h"

#include <map>
#include <string>

#include "fuzz/fuzz_input.h"
#include "tests/support/url_items.h"

namespace fuzz {

using tests::Items;
using tests::items_of;

/// Keys that reading stores twice, or that set another one: which spelling or value came last isn't
/// in the record, so the law leaves such records out.
inline bool has_keys_with_an_order(const Items& items) {
    std::map<std::u16string, int> spellings;
    bool sets_method = false;
    for (const auto& [key, value] : items) {
        CString lower(key.c_str());
        lower.MakeLower();
        ++spellings[std::u16string(lower.View())];
        sets_method = sets_method || lower == u"userkey" || lower == u"agent";
    }
    for (const auto& [key, count] : spellings) {
        if (count > 1) return true;
    }
    return sets_method;
}

/// The scheme is written as it is: it must not bring delimiters, or a default port, of its own.
inline bool has_plain_scheme(const CUrlInfo& info) {
    CString lower(info.m_strScheme);
    lower.MakeLower();
    for (const char16_t c : lower.View()) {
        if (c == 0 || c > 0x7E ||
            std::u16string_view(u" %&+/:=?@").find(c) != std::u16string_view::npos) {
            return false;
        }
    }
    return lower.Compare(u"rdp") != 0 || info.m_nPort != 0;
}

/// Writes the record and reads it back; two rounds, since a secret is the ANSI page's after one.
inline void require_round_trip(const CUrlInfo& info) {
    if (info.m_strHost.IsEmpty() || !has_plain_scheme(info)) return;
    CString url;
    require(info.MakeURL(url, 0, 1) == 1);
    CUrlInfo first;
    require(first.Parse_URL(url, 1) == 1);
    CString lower(info.m_strScheme);
    lower.MakeLower();
    require(first.m_strScheme == lower);
    require(first.m_strUser == info.m_strUser);
    require(first.m_strHost == info.m_strHost);
    require(first.m_nPort == info.m_nPort);
    require(first.m_strPath == info.m_strPath);
    if (has_keys_with_an_order(items_of(info))) return;
    CString again;
    require(first.MakeURL(again, 0, 1) == 1);
    CUrlInfo second;
    require(second.Parse_URL(again, 1) == 1);
    require(second.m_strPassword == first.m_strPassword);
    if (!has_keys_with_an_order(items_of(first))) require(items_of(second) == items_of(first));
}

}  // namespace fuzz
