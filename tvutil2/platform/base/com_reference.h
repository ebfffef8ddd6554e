// Owner of one reference to an object.
#pragma once

namespace tvutil2 {

template <class Interface>
class ComReference {
  public:
    ComReference() = default;
    ~ComReference() {
        if (m_object != nullptr) m_object->Release();
    }
    ComReference(const ComReference&) = delete;
    ComReference& operator=(const ComReference&) = delete;

    Interface* operator->() const { return m_object; }
    /// Where a call is to put the object, once.
    [[nodiscard]] Interface** out() { return &m_object; }
    [[nodiscard]] void** any() { return reinterpret_cast<void**>(&m_object); }

  private:
    Interface* m_object = nullptr;
};

}  // namespace tvutil2
