// Which page narrow text is in when it bears no mark and isn't UTF-8.
#pragma once

#include "tvutil2/platform/codepage/codepage.h"

namespace tvutil2 {

/// The ANSI code page. Where that is UTF-8, text that isn't comes from elsewhere or from earlier
/// times: 1252 then, in which every byte is a character and comes back as the same byte, so that
/// none is lost by whoever reads and writes it.
[[nodiscard]] inline UINT narrow_page() {
    const UINT page = GetACP();
    return page == CP_UTF8 ? 1252 : page;
}

}  // namespace tvutil2
