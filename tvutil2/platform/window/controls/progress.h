// The class "msctls_progress32": how far something is.
#pragma once

#include "tvutil2/platform/base/types.h"

inline const char16_t* const PROGRESS_CLASSW = u"msctls_progress32";

inline constexpr DWORD PBS_SMOOTH = 0x1;
inline constexpr DWORD PBS_VERTICAL = 0x4;
/// How far isn't known; PBM_SETMARQUEE lets it move.
inline constexpr DWORD PBS_MARQUEE = 0x8;

inline constexpr UINT PBM_SETRANGE = 0x401;
inline constexpr UINT PBM_SETPOS = 0x402;
inline constexpr UINT PBM_DELTAPOS = 0x403;
inline constexpr UINT PBM_SETSTEP = 0x404;
inline constexpr UINT PBM_STEPIT = 0x405;
inline constexpr UINT PBM_SETRANGE32 = 0x406;
inline constexpr UINT PBM_GETRANGE = 0x407;
inline constexpr UINT PBM_GETPOS = 0x408;
inline constexpr UINT PBM_SETMARQUEE = 0x40A;
