#include "tvutil2/platform/base/com.h"

#include <string_view>

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

namespace {

// The value of hexadecimal digits; false for any other unit.
bool read_hex(std::u16string_view digits, std::uint64_t& value) {
    value = 0;
    for (const auto c : digits) {
        const char16_t lower = c | 0x20U;
        unsigned int digit = 0;
        if (c >= u'0' && c <= u'9') {
            digit = c - unsigned{u'0'};
        } else if (lower >= u'a' && lower <= u'f') {
            digit = lower - unsigned{u'a'} + 10;
        } else {
            return false;
        }
        value = value << 4U | digit;
    }
    return true;
}

}  // namespace

HRESULT CLSIDFromString(const char16_t* text, CLSID* id) {
    if (id == nullptr) return E_INVALIDARG;
    *id = {};
    if (text == nullptr) return S_OK;
    const std::u16string_view view(text);
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    std::uint64_t third = 0;
    std::uint64_t fourth = 0;
    std::uint64_t last = 0;
    if (view.size() != 38 || view[0] != u'{' || view[9] != u'-' || view[14] != u'-' ||
        view[19] != u'-' || view[24] != u'-' || view[37] != u'}' ||
        !read_hex(view.substr(1, 8), first) || !read_hex(view.substr(10, 4), second) ||
        !read_hex(view.substr(15, 4), third) || !read_hex(view.substr(20, 4), fourth) ||
        !read_hex(view.substr(25, 12), last)) {
        return CO_E_CLASSSTRING;
    }
    *id = {static_cast<DWORD>(first), static_cast<WORD>(second), static_cast<WORD>(third), {}};
    const auto tail = fourth << 48U | last;
    for (unsigned int i = 0; i < 8; ++i) {
        id->Data4[i] = static_cast<BYTE>(tail >> (8 * (7 - i)));
    }
    return S_OK;
}

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
