// The part of a reference-counted object that all of them share.
#pragma once

#include "tvutil2/platform/base/com.h"

#include <atomic>

namespace tvutil2 {

/// An object with one interface besides IUnknown, born with one reference.
template <class Interface>
class Counted : public Interface {
  public:
    explicit Counted(const IID& id) : m_id(id) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    HRESULT QueryInterface(const IID& id, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool is_known = id == m_id || id == IID_IUnknown;
        *object = is_known ? static_cast<Interface*>(this) : nullptr;
        if (!is_known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    DWORD AddRef() override { return ++m_references; }
    DWORD Release() override {
        const auto left = --m_references;
        if (left == 0) delete this;
        return left;
    }

  protected:
    virtual ~Counted() = default;

  private:
    const IID& m_id;
    std::atomic<DWORD> m_references = 1;
};

}  // namespace tvutil2
