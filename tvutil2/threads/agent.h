// Making sure that the key agent runs.
#pragma once

#include "tvutil2/platform/base/export.h"

/// 1 when the agent runs: there is its hidden window (NSingleInstance::CSingleInstance, "HALKET"),
/// which is told to show itself if `show` says so, and gets no arguments; or "Halket", with the
/// running executable's extension and in its folder, was started with them, and has a window that
/// answers or has ended. That is waited for without limit. The file has to have the maker's
/// signature, or with `show` a person, who is asked, has to want it all the same. 0 for every
/// failure. Programs that call this at one time may each start the agent, which runs once by
/// itself.
TVUTIL_API int TvRunHalket(int show, const char16_t* arguments);
