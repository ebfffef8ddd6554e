// The installation's ANSI code page, which a process reads once: a test that sets it runs in a
// process of its own.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tests {

/// Enters a page in the machine's settings, by its number as text.
void install_ansi_page(const char16_t* number, DWORD type);
void install_ansi_page(const char16_t* number);

}  // namespace tests
