// Compiled again with every build of the library.
#include "tvutil2/diag/build_date.h"

namespace tvutil2 {

const char16_t* build_date() {
    return u"" __DATE__;
}

}  // namespace tvutil2
