// Any record may be written; what is written holds no raw delimiter and comes back.
#include "fuzz/url_law.h"

namespace {

// The next field: everything up to a line feed.
CString take_field(std::u16string_view& rest) {
    const auto end = std::min(rest.find(u'\n'), rest.size());
    const CString field(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return field;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const bool is_wide = (data[0] & 1) != 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 3), size - 3);
    const auto text = is_wide ? fuzz::wide_text(data + 3, size - 3) : fuzz::widened(bytes);
    std::u16string_view rest(text);
    CUrlInfo info;
    info.m_nPort = static_cast<WORD>(data[1] | data[2] << 8U);
    for (auto* const field :
         {&info.m_strScheme, &info.m_strUser, &info.m_strPassword, &info.m_strHost}) {
        *field = take_field(rest);
    }
    if (const auto path = take_field(rest); !path.IsEmpty()) info.m_strPath = u"/" + path;
    while (!rest.empty()) {
        const auto key = take_field(rest);
        info.m_mapParams[key] = take_field(rest);
    }
    CString url;
    info.MakeURL(url, 1, 0);
    info.m_strScheme.Empty();
    fuzz::require(info.MakeURL(url, 1, 0) == 1);
    fuzz::require(url.Find(u'/') == -1 || url.Find(u'/', url.Find(u'/') + 1) == -1);
    fuzz::require(url.Find(u' ') == -1);
    fuzz::require_round_trip(info);
    return 0;
}
