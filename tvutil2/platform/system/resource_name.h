// What a resource's type and name are.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string_view>

namespace tvutil2 {

/// Text where there is some, else a number.
struct ResourceName {
    std::u16string_view text;
    WORD id = 0;
};

}  // namespace tvutil2
