#include "tvutil2/platform/trust/trust_module.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/process/own_module.h"

namespace tvutil2 {

const TrustModule* trust_module() {
    static const TrustModule* const module = []() -> const TrustModule* {
        auto* const open =
            reinterpret_cast<OpenTrustModule*>(own_module_function("trust", kOpenTrustModule));
        return open != nullptr ? open() : nullptr;
    }();
    if (module == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
    return module;
}

}  // namespace tvutil2
