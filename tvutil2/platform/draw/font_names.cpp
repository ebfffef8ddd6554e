#include "tvutil2/platform/draw/font_names.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/theme.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tvutil2 {
namespace {

// The families that the platform writes its own dialogs in: here the desktop's.
constexpr std::array kInterface{
    u"MS Shell Dlg", u"MS Shell Dlg 2", u"MS Sans Serif",       u"System",
    u"Segoe UI",     u"Tahoma",         u"Microsoft Sans Serif"};
constexpr std::array kMonospaced{u"Courier",  u"Courier New", u"Consolas", u"Lucida Console",
                                 u"Fixedsys", u"Terminal",    u"MS Gothic"};
constexpr std::array kSerif{u"Times New Roman", u"MS Serif", u"Georgia", u"Cambria"};

template <std::size_t kSize>
bool is_one_of(const std::array<const char16_t*, kSize>& names, const char16_t* face) {
    return std::ranges::any_of(names, [face](auto* name) { return lstrcmpiW(name, face) == 0; });
}

// A comma would begin another family.
std::string family(const char16_t* face) {
    auto name = to_utf8_lossy(face);
    std::erase(name, ',');
    return name;
}

std::string families(const LOGFONTW& record) {
    const auto* face = record.lfFaceName;
    if (*face == u'@') ++face;  // turned for vertical writing
    if (*face == 0 || is_one_of(kInterface, face)) {
        const auto own = family(interface_font(96).lfFaceName);
        return own.empty() ? "sans-serif" : own + ",sans-serif";
    }
    const bool is_monospaced =
        is_one_of(kMonospaced, face) || (record.lfPitchAndFamily & 3) == FIXED_PITCH;
    return family(face) + (is_monospaced             ? ",monospace"
                           : is_one_of(kSerif, face) ? ",serif"
                                                     : ",sans-serif");
}

}  // namespace

FontRequest font_request(const LOGFONTW& record) {
    FontRequest request;
    request.families = families(record);
    const auto height =
        record.lfHeight == 0 ? interface_font(system_dpi()).lfHeight : record.lfHeight;
    request.is_line_height = height > 0;
    request.size = static_cast<int>(std::min<std::int64_t>(
        height < 0 ? -std::int64_t{height} : std::int64_t{height}, Engine::kLargestFont));
    request.weight =
        record.lfWeight == FW_DONTCARE ? FW_NORMAL : std::clamp(record.lfWeight, 100, 1000);
    request.is_italic = record.lfItalic != 0;
    request.is_underlined = record.lfUnderline != 0;
    request.is_struck_out = record.lfStrikeOut != 0;
    return request;
}

}  // namespace tvutil2
