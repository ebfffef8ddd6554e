// Icons and bitmaps: loaded, drawn, taken apart.
//
// An icon is a picture with transparency and the size that it is meant to be drawn at. It belongs
// to who made it, until DestroyIcon; the system's own stay. Safe from any thread.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/surface.h"

/// The system's icons, with a null module.
inline const char16_t* const IDI_APPLICATION = MAKEINTRESOURCEW(32512);
inline const char16_t* const IDI_ERROR = MAKEINTRESOURCEW(32513);
inline const char16_t* const IDI_HAND = IDI_ERROR;
inline const char16_t* const IDI_QUESTION = MAKEINTRESOURCEW(32514);
inline const char16_t* const IDI_WARNING = MAKEINTRESOURCEW(32515);
inline const char16_t* const IDI_EXCLAMATION = IDI_WARNING;
inline const char16_t* const IDI_INFORMATION = MAKEINTRESOURCEW(32516);
inline const char16_t* const IDI_ASTERISK = IDI_INFORMATION;

inline constexpr UINT IMAGE_BITMAP = 0;
inline constexpr UINT IMAGE_ICON = 1;
inline constexpr UINT LR_LOADFROMFILE = 0x10;
inline constexpr UINT LR_DEFAULTSIZE = 0x40;
inline constexpr UINT LR_CREATEDIBSECTION = 0x2000;
inline constexpr UINT LR_SHARED = 0x8000;

/// Loads an icon or a bitmap from a module's resources or, with LR_LOADFROMFILE, from a file. An
/// icon gets `width` by `height` pixels; with 0 its own size or, with LR_DEFAULTSIZE, the system's
/// for icons. A bitmap keeps its own size. Null with the error of FindResourceW or of the file,
/// ERROR_INVALID_DATA for what isn't one, ERROR_MOD_NOT_FOUND where the module of pictures or of
/// drawing isn't installed.
TVUTIL_API HANDLE LoadImageW(HINSTANCE module, const char16_t* name, UINT type, int width,
                             int height, UINT flags);
/// At the system's size for icons.
TVUTIL_API HICON LoadIconW(HINSTANCE module, const char16_t* name);
TVUTIL_API HBITMAP LoadBitmapW(HINSTANCE module, const char16_t* name);

TVUTIL_API HICON CopyIcon(HICON icon);
TVUTIL_API BOOL DestroyIcon(HICON icon);

struct ICONINFO {
    BOOL fIcon;
    DWORD xHotspot;
    DWORD yHotspot;
    HBITMAP hbmMask;
    HBITMAP hbmColor;
};
/// Copies of an icon's picture, and of its mask (white where it is transparent); they are the
/// caller's.
TVUTIL_API BOOL GetIconInfo(HICON icon, ICONINFO* info);
/// Black pixels of the mask take the colour of the other bitmap, with its alpha; the rest is
/// transparent.
TVUTIL_API HICON CreateIconIndirect(const ICONINFO* info);

inline constexpr UINT DI_MASK = 0x1;
inline constexpr UINT DI_IMAGE = 0x2;
inline constexpr UINT DI_NORMAL = 0x3;
inline constexpr UINT DI_DEFAULTSIZE = 0x8;
/// Draws an icon, scaled to the size or, with 0, at its own (the system's, with DI_DEFAULTSIZE).
/// With a brush the rectangle is filled before.
TVUTIL_API BOOL DrawIconEx(HDC context, int x, int y, HICON icon, int width, int height, UINT step,
                           HBRUSH brush, UINT flags);
TVUTIL_API BOOL DrawIcon(HDC context, int x, int y, HICON icon);

namespace tvutil2 {

/// An icon of pixels that nobody changes any more; null when the handle table is full.
[[nodiscard]] TVUTIL_API HICON make_icon(std::shared_ptr<const Surface> pixels, SIZE size);
/// An icon's pixels and the size that it is drawn at; null with ERROR_INVALID_HANDLE.
[[nodiscard]] TVUTIL_API std::shared_ptr<const Surface> icon_pixels(HICON icon, SIZE& size);

/// A picture out of a module's resource, of any format that the host decodes. Null as LoadImageW.
[[nodiscard]] TVUTIL_API std::shared_ptr<Surface> load_picture_resource(HINSTANCE module,
                                                                        const char16_t* name,
                                                                        const char16_t* type);
/// The same from a file; the path is the platform's.
[[nodiscard]] TVUTIL_API std::shared_ptr<Surface> load_picture_file(const char16_t* path);

}  // namespace tvutil2
