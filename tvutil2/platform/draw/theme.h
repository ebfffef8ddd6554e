// The look: colours, metrics and fonts, in one place.
//
// A theme is a constant record. Which one is in force, and the system's scale, are set by who knows
// what the person prefers (the display's driver, a test); everybody may ask, at any time and from
// any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"

#include <array>

/// A colour of the theme in force by its index (COLOR_...); 0 for a number that isn't one.
TVUTIL_API DWORD GetSysColor(int index);

/// Its brush, which follows the theme and isn't to be deleted; null for a number that isn't one.
TVUTIL_API HBRUSH GetSysColorBrush(int index);

inline constexpr int SM_CXVSCROLL = 2;
inline constexpr int SM_CYHSCROLL = 3;
inline constexpr int SM_CYCAPTION = 4;
inline constexpr int SM_CXBORDER = 5;
inline constexpr int SM_CYBORDER = 6;
inline constexpr int SM_CXDLGFRAME = 7;
inline constexpr int SM_CYDLGFRAME = 8;
inline constexpr int SM_CXFIXEDFRAME = 7;
inline constexpr int SM_CYFIXEDFRAME = 8;
inline constexpr int SM_CYVTHUMB = 9;
inline constexpr int SM_CXHTHUMB = 10;
inline constexpr int SM_CXICON = 11;
inline constexpr int SM_CYICON = 12;
inline constexpr int SM_CXCURSOR = 13;
inline constexpr int SM_CYCURSOR = 14;
inline constexpr int SM_CYMENU = 15;
inline constexpr int SM_CYVSCROLL = 20;
inline constexpr int SM_CXHSCROLL = 21;
inline constexpr int SM_CXMIN = 28;
inline constexpr int SM_CYMIN = 29;
inline constexpr int SM_CXSIZE = 30;
inline constexpr int SM_CYSIZE = 31;
inline constexpr int SM_CXFRAME = 32;
inline constexpr int SM_CYFRAME = 33;
inline constexpr int SM_CXSIZEFRAME = 32;
inline constexpr int SM_CYSIZEFRAME = 33;
inline constexpr int SM_CXMINTRACK = 34;
inline constexpr int SM_CYMINTRACK = 35;
inline constexpr int SM_CXDOUBLECLK = 36;
inline constexpr int SM_CYDOUBLECLK = 37;
inline constexpr int SM_CXEDGE = 45;
inline constexpr int SM_CYEDGE = 46;
inline constexpr int SM_CXSMICON = 49;
inline constexpr int SM_CYSMICON = 50;
inline constexpr int SM_CYSMCAPTION = 51;
inline constexpr int SM_CXSMSIZE = 52;
inline constexpr int SM_CYSMSIZE = 53;
inline constexpr int SM_CXMENUSIZE = 54;
inline constexpr int SM_CYMENUSIZE = 55;
inline constexpr int SM_CXDRAG = 68;
inline constexpr int SM_CYDRAG = 69;
inline constexpr int SM_CXMENUCHECK = 71;
inline constexpr int SM_CYMENUCHECK = 72;
inline constexpr int SM_CXFOCUSBORDER = 83;
inline constexpr int SM_CYFOCUSBORDER = 84;
inline constexpr int SM_CXPADDEDBORDER = 92;

struct NONCLIENTMETRICSW {
    UINT cbSize;
    int iBorderWidth;
    int iScrollWidth;
    int iScrollHeight;
    int iCaptionWidth;
    int iCaptionHeight;
    LOGFONTW lfCaptionFont;
    int iSmCaptionWidth;
    int iSmCaptionHeight;
    LOGFONTW lfSmCaptionFont;
    int iMenuWidth;
    int iMenuHeight;
    LOGFONTW lfMenuFont;
    LOGFONTW lfStatusFont;
    LOGFONTW lfMessageFont;
    int iPaddedBorderWidth;
};

inline constexpr UINT SPI_GETICONTITLELOGFONT = 31;
inline constexpr UINT SPI_GETNONCLIENTMETRICS = 41;

namespace tvutil2 {

enum class ThemeMode : std::uint8_t { light, dark, high_contrast };

/// Colours of controls beyond the system's indices.
struct Palette {
    COLORREF border;   ///< of a control that takes input; at least 3 to 1 against its surroundings
    COLORREF divider;  ///< lines that only part: group boxes, menus, lists
    COLORREF face;     ///< push buttons and drop-down lists
    COLORREF hot_face;
    COLORREF pressed_face;
    COLORREF disabled_face;
    COLORREF disabled_border;
    COLORREF accent;  ///< checked boxes, default buttons, the focused field
    COLORREF hot_accent;
    COLORREF pressed_accent;
    COLORREF accent_text;  ///< on top of the accent
    COLORREF focus;        ///< the ring around what has the focus
    COLORREF placeholder;  ///< hints in empty fields
    COLORREF hot_row;      ///< of lists and menus, under the pointer
    COLORREF quiet_row;    ///< selected, without the focus
    COLORREF thumb;        ///< of scroll bars
    COLORREF hot_thumb;
    COLORREF error, warning, information;  ///< of the signs in messages
};

struct Theme {
    ThemeMode mode;
    std::array<COLORREF, 31> system;
    Palette palette;
};

/// The theme in force. Lives for ever.
[[nodiscard]] TVUTIL_API const Theme& theme();
/// What is painted later looks so; repainting is up to the caller.
TVUTIL_API void set_theme_mode(ThemeMode mode);

/// The system's scale in dots an inch, 96 at first; what a screen without a scale of its own has.
[[nodiscard]] TVUTIL_API UINT system_dpi();
/// Between 24 and 960 (25 to 1000 percent), whatever a desktop says.
[[nodiscard]] UINT held_dpi(UINT dpi);
/// Held as above.
TVUTIL_API void set_system_dpi(UINT dpi);

/// The font family of the person's desktop, UTF-16, up to LF_FACESIZE - 1 units; empty for the
/// host's own choice.
TVUTIL_API void set_interface_font(const char16_t* family);
/// The font that dialogs, menus and messages are written in, for a scale.
[[nodiscard]] TVUTIL_API LOGFONTW interface_font(UINT dpi);

/// A length of the theme at 96 dots an inch, for a scale; never less than 1 for one above 0.
[[nodiscard]] TVUTIL_API int scaled(int length, UINT dpi);

/// A metric (SM_...) for a scale; false when it isn't one of the look.
TVUTIL_API bool look_metric(int index, UINT dpi, int& value);

/// Fills in everything but cbSize.
TVUTIL_API void fill_nonclient_metrics(UINT dpi, NONCLIENTMETRICSW& metrics);

}  // namespace tvutil2
