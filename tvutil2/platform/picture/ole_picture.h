// Pictures as objects: decoded once, drawn at any size.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/picture/stream.h"

#include <span>
#include <vector>

inline constexpr IID IID_IPicture{
    0x7BF80980, 0xBF32, 0x101A, {0x8B, 0xBB, 0x00, 0xAA, 0x00, 0x30, 0x0C, 0xAB}};

inline constexpr short PICTYPE_BITMAP = 1;
inline constexpr HRESULT CTL_E_INVALIDPICTURE = static_cast<HRESULT>(0x800A01E1);

/// A picture's extent is in units of 0.01 mm: its pixels at the system's scale. Any thread may draw
/// it.
class IPicture : public IUnknown {
  public:
    virtual HRESULT get_Type(short* type) = 0;
    virtual HRESULT get_Width(LONG* width) = 0;
    virtual HRESULT get_Height(LONG* height) = 0;
    /// Draws a part of the picture, in its units and counted from its lower edge upwards, into a
    /// rectangle of pixels; the whole of it is 0, height, width, -height. `bounds` isn't looked at.
    /// What is transparent lets through what is there. E_FAIL where drawing fails.
    virtual HRESULT Render(HDC context, LONG x, LONG y, LONG width, LONG height, LONG source_x,
                           LONG source_y, LONG source_width, LONG source_height,
                           const RECT* bounds) = 0;
};

/// Reads `size` bytes of a stream (0: what is left of it) and decodes them: any format that the
/// host decodes. The picture needs the stream no longer. Of a GIF it is the first image at its own
/// size, whatever the screen it stands on. E_POINTER, E_NOINTERFACE, E_OUTOFMEMORY also for a
/// picture that is too large, E_FAIL where the module isn't installed, CTL_E_INVALIDPICTURE for all
/// else.
TVUTIL_API HRESULT OleLoadPicture(IStream* stream, LONG size, BOOL run_mode, const IID& id,
                                  void** picture);

namespace tvutil2 {

/// Makes the logical screen of a GIF as large as its first image, and leaves out what stands behind
/// that, damaged or not. Leaves alone what isn't a GIF and one that has no image.
TVUTIL_API void crop_gif_to_image(std::vector<std::byte>& bytes);

}  // namespace tvutil2
