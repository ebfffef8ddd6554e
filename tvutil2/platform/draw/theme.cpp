#include "tvutil2/platform/draw/theme.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

namespace tvutil2 {
namespace {

// As colours are written elsewhere.
constexpr COLORREF rgb(unsigned value) {
    return RGB(value >> 16, value >> 8, value);
}

// clang-format off
constexpr Theme kLight{
    ThemeMode::light,
    {rgb(0xF3F3F3), rgb(0x2F5D86), rgb(0xFFFFFF), rgb(0xF3F3F3), rgb(0xFBFBFB), rgb(0xFFFFFF),
     rgb(0x7A7A7A), rgb(0x1B1B1B), rgb(0x1B1B1B), rgb(0x1B1B1B), rgb(0xC4C4C4), rgb(0xDADADA),
     rgb(0xE0E0E0), rgb(0x0064BD), rgb(0xFFFFFF), rgb(0xF3F3F3), rgb(0xA2A2A2), rgb(0x6A6A6A),
     rgb(0x1B1B1B), rgb(0x6A6A6A), rgb(0xFFFFFF), rgb(0x696969), rgb(0xE6E6E6), rgb(0x1B1B1B),
     rgb(0xFFFFFF), rgb(0xF3F3F3), rgb(0x005FB8), rgb(0xFFFFFF), rgb(0xF3F3F3), rgb(0x0064BD),
     rgb(0xF3F3F3)},
    {.border = rgb(0x868686), .divider = rgb(0xD6D6D6), .face = rgb(0xFDFDFD),
     .hot_face = rgb(0xF6F6F6), .pressed_face = rgb(0xECECEC), .disabled_face = rgb(0xF5F5F5),
     .disabled_border = rgb(0xD2D2D2), .accent = rgb(0x005FB8), .hot_accent = rgb(0x1A6FBF),
     .pressed_accent = rgb(0x0A568F), .accent_text = rgb(0xFFFFFF), .focus = rgb(0x1B1B1B),
     .placeholder = rgb(0x6E6E6E), .hot_row = rgb(0xEEF3F9), .quiet_row = rgb(0xDDDDDD),
     .thumb = rgb(0x8B8B8B), .hot_thumb = rgb(0x5F5F5F), .error = rgb(0xC42B1C),
     .warning = rgb(0xF2B200), .information = rgb(0x005FB8)}};

constexpr Theme kDark{
    ThemeMode::dark,
    {rgb(0x2B2B2B), rgb(0x16324A), rgb(0x2B2B2B), rgb(0x202020), rgb(0x2C2C2C), rgb(0x1C1C1C),
     rgb(0x9A9A9A), rgb(0xF2F2F2), rgb(0xF2F2F2), rgb(0xF2F2F2), rgb(0x4A4A4A), rgb(0x3A3A3A),
     rgb(0x181818), rgb(0x2F74B8), rgb(0xFFFFFF), rgb(0x202020), rgb(0x101010), rgb(0x9B9B9B),
     rgb(0xF2F2F2), rgb(0x9B9B9B), rgb(0x4C4C4C), rgb(0x000000), rgb(0x3A3A3A), rgb(0xF2F2F2),
     rgb(0x2C2C2C), rgb(0x202020), rgb(0x72BDF5), rgb(0x2B2B2B), rgb(0x202020), rgb(0x2F74B8),
     rgb(0x202020)},
    {.border = rgb(0x8C8C8C), .divider = rgb(0x454545), .face = rgb(0x343434),
     .hot_face = rgb(0x3C3C3C), .pressed_face = rgb(0x2C2C2C), .disabled_face = rgb(0x2A2A2A),
     .disabled_border = rgb(0x444444), .accent = rgb(0x5FB8F4), .hot_accent = rgb(0x57A9E0),
     .pressed_accent = rgb(0x4E9ACD), .accent_text = rgb(0x0B0B0B), .focus = rgb(0xFFFFFF),
     .placeholder = rgb(0xA0A0A0), .hot_row = rgb(0x2E3740), .quiet_row = rgb(0x444444),
     .thumb = rgb(0x9A9A9A), .hot_thumb = rgb(0xC8C8C8), .error = rgb(0xE5584B),
     .warning = rgb(0xF2C744), .information = rgb(0x5FB8F4)}};

constexpr Theme kHighContrast{
    ThemeMode::high_contrast,
    {rgb(0x000000), rgb(0x000000), rgb(0x000000), rgb(0x000000), rgb(0x000000), rgb(0x000000),
     rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF),
     rgb(0x000000), rgb(0x1AEBFF), rgb(0x000000), rgb(0x000000), rgb(0xFFFFFF), rgb(0x3FF23F),
     rgb(0xFFFFFF), rgb(0x3FF23F), rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF), rgb(0xFFFFFF),
     rgb(0x000000), rgb(0x000000), rgb(0xFFFF00), rgb(0x000000), rgb(0x000000), rgb(0x1AEBFF),
     rgb(0x000000)},
    {.border = rgb(0xFFFFFF), .divider = rgb(0xFFFFFF), .face = rgb(0x000000),
     .hot_face = rgb(0x2D2D2D), .pressed_face = rgb(0x4A4A4A), .disabled_face = rgb(0x000000),
     .disabled_border = rgb(0x3FF23F), .accent = rgb(0x1AEBFF), .hot_accent = rgb(0x6FF3FF),
     .pressed_accent = rgb(0x00C5D8), .accent_text = rgb(0x000000), .focus = rgb(0xFFFF00),
     .placeholder = rgb(0xFFFFFF), .hot_row = rgb(0x1F1F1F), .quiet_row = rgb(0x404040),
     .thumb = rgb(0xFFFFFF), .hot_thumb = rgb(0x1AEBFF), .error = rgb(0xFF6A5C),
     .warning = rgb(0xFFFF00), .information = rgb(0x1AEBFF)}};
// clang-format on

constinit std::atomic<const Theme*> g_theme = &kLight;
constinit std::atomic<UINT> g_dpi = 96;

constinit std::mutex g_font_lock;
const ForkLock g_font_fork_safe(g_font_lock, ForkRank::objects);
constinit char16_t g_family[LF_FACESIZE] = {};

// In pixels at 96 dots an inch.
constexpr int kTextHeight = 12;
constexpr struct {
    int index;
    int length;
} kMetrics[] = {
    {SM_CXVSCROLL, 16},    {SM_CYHSCROLL, 16},    {SM_CYCAPTION, 30},   {SM_CXBORDER, 1},
    {SM_CYBORDER, 1},      {SM_CXDLGFRAME, 1},    {SM_CYDLGFRAME, 1},   {SM_CYVTHUMB, 16},
    {SM_CXHTHUMB, 16},     {SM_CXICON, 32},       {SM_CYICON, 32},      {SM_CXCURSOR, 32},
    {SM_CYCURSOR, 32},     {SM_CYMENU, 26},       {SM_CYVSCROLL, 16},   {SM_CXHSCROLL, 16},
    {SM_CXMIN, 136},       {SM_CYMIN, 39},        {SM_CXSIZE, 44},      {SM_CYSIZE, 30},
    {SM_CXFRAME, 4},       {SM_CYFRAME, 4},       {SM_CXMINTRACK, 136}, {SM_CYMINTRACK, 39},
    {SM_CXDOUBLECLK, 4},   {SM_CYDOUBLECLK, 4},   {SM_CXEDGE, 2},       {SM_CYEDGE, 2},
    {SM_CXSMICON, 16},     {SM_CYSMICON, 16},     {SM_CYSMCAPTION, 24}, {SM_CXSMSIZE, 24},
    {SM_CYSMSIZE, 24},     {SM_CXMENUSIZE, 26},   {SM_CYMENUSIZE, 26},  {SM_CXDRAG, 4},
    {SM_CYDRAG, 4},        {SM_CXMENUCHECK, 16},  {SM_CYMENUCHECK, 16}, {SM_CXFOCUSBORDER, 1},
    {SM_CYFOCUSBORDER, 1}, {SM_CXPADDEDBORDER, 0}};

}  // namespace

const Theme& theme() {
    return *g_theme.load(std::memory_order_relaxed);
}

void set_theme_mode(ThemeMode mode) {
    g_theme = mode == ThemeMode::light  ? &kLight
              : mode == ThemeMode::dark ? &kDark
                                        : &kHighContrast;
}

UINT system_dpi() {
    return g_dpi.load(std::memory_order_relaxed);
}

UINT held_dpi(UINT dpi) {
    return std::clamp<UINT>(dpi, 24, 960);
}

void set_system_dpi(UINT dpi) {
    g_dpi = held_dpi(dpi);
}

void set_interface_font(const char16_t* family) {
    const std::lock_guard guard(g_font_lock);
    const std::u16string_view name = family == nullptr ? u"" : family;
    const auto end =
        std::copy_n(name.begin(), std::min(name.size(), LF_FACESIZE - size_t{1}), g_family);
    *end = 0;
}

LOGFONTW interface_font(UINT dpi) {
    LOGFONTW font{};
    font.lfHeight = -scaled(kTextHeight, dpi);
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    const std::lock_guard guard(g_font_lock);
    std::ranges::copy(g_family, font.lfFaceName);
    return font;
}

int scaled(int length, UINT dpi) {
    const auto result = MulDiv(length, static_cast<int>(dpi), 96);
    return length > 0 ? std::max(result, 1) : result;
}

bool look_metric(int index, UINT dpi, int& value) {
    const auto* const found = std::ranges::find(kMetrics, index, [](auto& m) { return m.index; });
    if (found == std::end(kMetrics)) return false;
    value = scaled(found->length, dpi);
    return true;
}

void fill_nonclient_metrics(UINT dpi, NONCLIENTMETRICSW& metrics) {
    const auto length = [dpi](int index) {
        int value = 0;
        look_metric(index, dpi, value);
        return value;
    };
    const auto font = interface_font(dpi);
    metrics = {.cbSize = metrics.cbSize,
               .iBorderWidth = length(SM_CXBORDER),
               .iScrollWidth = length(SM_CXVSCROLL),
               .iScrollHeight = length(SM_CYHSCROLL),
               .iCaptionWidth = length(SM_CXSIZE),
               .iCaptionHeight = length(SM_CYCAPTION),
               .lfCaptionFont = font,
               .iSmCaptionWidth = length(SM_CXSMSIZE),
               .iSmCaptionHeight = length(SM_CYSMCAPTION),
               .lfSmCaptionFont = font,
               .iMenuWidth = length(SM_CXMENUSIZE),
               .iMenuHeight = length(SM_CYMENU),
               .lfMenuFont = font,
               .lfStatusFont = font,
               .lfMessageFont = font,
               .iPaddedBorderWidth = length(SM_CXPADDEDBORDER)};
}

}  // namespace tvutil2

DWORD GetSysColor(int index) {
    const auto& colors = tvutil2::theme().system;
    return index >= 0 && static_cast<std::size_t>(index) < colors.size()
               ? colors[static_cast<std::size_t>(index)]
               : 0;
}
