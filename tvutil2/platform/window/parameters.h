// What messages carry.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

[[nodiscard]] inline LPARAM as_lparam(const void* pointer) {
    return reinterpret_cast<LPARAM>(pointer);
}

}  // namespace tvutil2
