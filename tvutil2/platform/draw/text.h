// Text: measured and drawn.
//
// Text has 16-bit units; what isn't UTF-16 shows as a replacement character. A paragraph runs from
// left to right unless it is asked to be read the other way; what is in it runs as its script
// wants, and forms that languages don't share are those of the calling thread's locale. Lines stand
// at the height of the selected font, also where characters come from another one. A line of more
// than 4096 units is shaped in parts.
//
// Functions fail with ERROR_INVALID_HANDLE for no context and ERROR_MOD_NOT_FOUND where the drawing
// module isn't installed. Lengths in pixels.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/engine.h"

#include <memory>
#include <string_view>

inline constexpr UINT DT_TOP = 0;
inline constexpr UINT DT_LEFT = 0;
inline constexpr UINT DT_CENTER = 0x1;
inline constexpr UINT DT_RIGHT = 0x2;
inline constexpr UINT DT_VCENTER = 0x4;
inline constexpr UINT DT_BOTTOM = 0x8;
inline constexpr UINT DT_WORDBREAK = 0x10;
inline constexpr UINT DT_SINGLELINE = 0x20;
inline constexpr UINT DT_EXPANDTABS = 0x40;
inline constexpr UINT DT_NOCLIP = 0x100;
inline constexpr UINT DT_EXTERNALLEADING = 0x200;
inline constexpr UINT DT_CALCRECT = 0x400;
inline constexpr UINT DT_NOPREFIX = 0x800;
inline constexpr UINT DT_EDITCONTROL = 0x2000;
inline constexpr UINT DT_PATH_ELLIPSIS = 0x4000;
inline constexpr UINT DT_END_ELLIPSIS = 0x8000;
inline constexpr UINT DT_RTLREADING = 0x20000;
inline constexpr UINT DT_WORD_ELLIPSIS = 0x40000;
inline constexpr UINT DT_HIDEPREFIX = 0x100000;
inline constexpr UINT DT_PREFIXONLY = 0x200000;

inline constexpr UINT ETO_OPAQUE = 0x2;
inline constexpr UINT ETO_CLIPPED = 0x4;
inline constexpr UINT ETO_RTLREADING = 0x80;

/// Draws text into a rectangle, `count` units of it or, with -1, up to its zero. "&" underlines the
/// character behind it and "&&" shows as one, unless DT_NOPREFIX; of several, the last counts.
/// Lines end at CR, LF and CR LF, and with DT_WORDBREAK where the rectangle does. DT_VCENTER and
/// DT_BOTTOM are for single lines. An ellipsis stands for what of a line doesn't fit: with
/// DT_PATH_ELLIPSIS in front of the last backslash. DT_CALCRECT draws nothing and sets right and
/// bottom to what the text takes. The result is the height from the rectangle's top to the text's
/// bottom; 0 for an empty text, and on failure.
TVUTIL_API int DrawTextW(HDC context, const char16_t* text, int count, RECT* rect, UINT format);

/// Draws a line at a place that SetTextAlign gives its meaning.
TVUTIL_API BOOL TextOutW(HDC context, int x, int y, const char16_t* text, int count);
/// The same, and may fill a rectangle with the background's colour before and keep the text inside.
/// Distances between characters are the font's: `distances` isn't followed.
TVUTIL_API BOOL ExtTextOutW(HDC context, int x, int y, UINT options, const RECT* rect,
                            const char16_t* text, UINT count, const int* distances);

/// What a line takes.
TVUTIL_API BOOL GetTextExtentPoint32W(HDC context, const char16_t* text, int count, SIZE* size);
TVUTIL_API BOOL GetTextMetricsW(HDC context, TEXTMETRICW* metrics);

namespace tvutil2 {

/// Text in the context's font, for callers that place carets and selections in it. Null on failure.
[[nodiscard]] TVUTIL_API std::shared_ptr<const TextLayout> lay_out_text(HDC context,
                                                                        std::u16string_view text,
                                                                        TextOptions options);
/// `x` is where the line begins, `y` the top of the font's line.
TVUTIL_API bool draw_text_line(HDC context, const TextLayout& layout, int line, int x, int y,
                               COLORREF color);

}  // namespace tvutil2
