#include "tvutil2/framework/object.h"

const CRuntimeClass CObject::classCObject{"CObject", static_cast<int>(sizeof(CObject)), nullptr,
                                          nullptr};

CObject* CRuntimeClass::CreateObject() const {
    return m_pfnCreateObject != nullptr ? m_pfnCreateObject() : nullptr;
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const auto* each = this; each != nullptr;) {
        if (each == base) return TRUE;
        each = each->m_pfnGetBaseClass != nullptr ? each->m_pfnGetBaseClass() : nullptr;
    }
    return FALSE;
}

const CRuntimeClass* CObject::GetRuntimeClass() const {
    return &classCObject;
}
