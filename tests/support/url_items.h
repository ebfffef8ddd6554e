// The query items of a session URL's record, for comparing.
#pragma once

#include "tvutil2/url/url_info.h"

#include <map>
#include <string>

namespace tests {

using Items = std::map<std::u16string, std::u16string>;

inline Items items_of(const CUrlInfo& info) {
    Items items;
    CString key;
    CString value;
    for (auto position = info.m_mapParams.GetStartPosition(); position != nullptr;) {
        info.m_mapParams.GetNextAssoc(position, key, value);
        items.emplace(key.View(), value.View());
    }
    return items;
}

}  // namespace tests
