#include "tvutil2/platform/base/com.h"

namespace tvutil2 {
namespace {
// Grows while the library is loaded, before any second thread can ask.
constinit const ComClass* g_first = nullptr;
}  // namespace

ComClass::ComClass(const CLSID& class_id, Create create)
    : m_class_id(class_id), m_create(create), m_next(g_first) {
    g_first = this;
}

ComClass::Create ComClass::find(const CLSID& class_id) {
    for (const auto* entry = g_first; entry != nullptr; entry = entry->m_next) {
        if (entry->m_class_id == class_id) return entry->m_create;
    }
    return nullptr;
}

}  // namespace tvutil2

HRESULT CoCreateInstance(const CLSID& class_id, IUnknown* outer, DWORD /*context*/, const IID& id,
                         void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const auto create = tvutil2::ComClass::find(class_id);
    return create != nullptr ? create(id, object) : REGDB_E_CLASSNOTREG;
}

namespace {
thread_local DWORD t_initialised = 0;  // how often
thread_local DWORD t_model = COINIT_MULTITHREADED;
}  // namespace

HRESULT CoInitializeEx(void* reserved, DWORD model) {
    if (reserved != nullptr) return E_INVALIDARG;
    const DWORD wanted = model & COINIT_APARTMENTTHREADED;
    if (t_initialised != 0 && wanted != t_model) return RPC_E_CHANGED_MODE;
    t_model = wanted;
    return t_initialised++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    if (t_initialised != 0) --t_initialised;
}
