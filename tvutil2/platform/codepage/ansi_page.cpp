#include "tvutil2/platform/codepage/ansi_page.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/registry/machine_setting.h"

namespace tvutil2::codepage {

UINT installed_ansi_page() {
    const auto text = machine_setting(u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", u"ACP");
    const auto number = text ? _wtoi(text->c_str()) : 0;
    if (number <= 0) return CP_UTF8;
    // Every page of the catalogue keeps ASCII, which the library's own texts and formats count on.
    return PageTable::of(static_cast<UINT>(number)) != nullptr ? static_cast<UINT>(number)
                                                               : CP_UTF8;
}

}  // namespace tvutil2::codepage
