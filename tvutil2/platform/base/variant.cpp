#include "tvutil2/platform/base/variant.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

BSTR SysAllocString(const char16_t* text) {
    if (text == nullptr) return nullptr;
    const std::size_t size = (std::u16string_view(text).size() + 1) * sizeof(char16_t);
    void* const copy = std::malloc(size);
    return copy != nullptr ? static_cast<BSTR>(std::memcpy(copy, text, size)) : nullptr;
}

void SysFreeString(BSTR text) {
    std::free(text);
}

void VariantInit(VARIANT* value) {
    *value = {VT_EMPTY, {nullptr}};
}

HRESULT VariantClear(VARIANT* value) {
    if (value->vt == VT_UNKNOWN && value->punkVal != nullptr) value->punkVal->Release();
    if (value->vt == VT_DISPATCH && value->pdispVal != nullptr) value->pdispVal->Release();
    VariantInit(value);
    return S_OK;
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD /*flags*/, VARTYPE type) {
    IUnknown* object = nullptr;
    if (source->vt == VT_UNKNOWN) object = source->punkVal;
    if (source->vt == VT_DISPATCH) object = source->pdispVal;
    if (object == nullptr || (type != VT_UNKNOWN && type != VT_DISPATCH)) {
        return DISP_E_TYPEMISMATCH;
    }
    VARIANT changed{type, {nullptr}};
    const auto result =
        type == VT_DISPATCH
            ? object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&changed.pdispVal))
            : object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&changed.punkVal));
    if (FAILED(result)) return DISP_E_TYPEMISMATCH;
    VariantClear(target);
    *target = changed;
    return S_OK;
}
