// What can go wrong with a notification.
#pragma once

#include "tvutil2/platform/base/types.h"

/// No session bus, no notification server, or one that died.
inline constexpr HRESULT WPN_E_PLATFORM_UNAVAILABLE = static_cast<HRESULT>(0x803E0105);
/// What isn't XML.
inline constexpr HRESULT WEB_E_INVALID_XML = static_cast<HRESULT>(0x83750002);
inline constexpr HRESULT ELEMENT_NOT_FOUND = static_cast<HRESULT>(0x80070490);
