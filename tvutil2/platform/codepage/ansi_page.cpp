#include "tvutil2/platform/codepage/ansi_page.h"

#include "tvutil2/platform/codepage/codepage.h"

namespace tvutil2::codepage {

UINT installed_ansi_page() {
    return CP_UTF8;
}

}  // namespace tvutil2::codepage
