#include "tvutil2/platform/picture/stream.h"

#include "tvutil2/platform/base/counted.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

class MemoryStream : public tvutil2::Counted<IStream> {
  public:
    MemoryStream(HGLOBAL memory, bool owns)
        : Counted(IID_IStream), m_memory(memory), m_owns(owns), m_size(GlobalSize(memory)) {}

    HRESULT Read(void* buffer, DWORD size, DWORD* read) override {
        if (buffer == nullptr) return E_POINTER;
        const auto left = m_size - std::min<ULONGLONG>(m_place, m_size);
        const auto copied = static_cast<DWORD>(std::min<ULONGLONG>(left, size));
        if (copied != 0) {
            const auto* const bytes = static_cast<const char*>(GlobalLock(m_memory));
            if (bytes == nullptr) return E_FAIL;
            std::memcpy(buffer, bytes + m_place, copied);
            GlobalUnlock(m_memory);
        }
        m_place += copied;
        if (read != nullptr) *read = copied;
        return copied == size ? S_OK : S_FALSE;
    }

    HRESULT Seek(LONGLONG by, DWORD from, ULONGLONG* place) override {
        if (from > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
        const auto start = from == STREAM_SEEK_SET ? 0 : from == STREAM_SEEK_CUR ? m_place : m_size;
        const auto target = start + static_cast<ULONGLONG>(by);
        const bool is_before = by < 0 && target > start;
        const bool is_behind = by > 0 && target < start;
        if (is_before || is_behind) return STG_E_INVALIDFUNCTION;
        m_place = target;
        if (place != nullptr) *place = m_place;
        return S_OK;
    }

    [[nodiscard]] ULONGLONG Size() const override { return m_size; }

  private:
    ~MemoryStream() override {
        if (m_owns) GlobalFree(m_memory);
    }

    HGLOBAL m_memory;
    bool m_owns;
    ULONGLONG m_size;
    ULONGLONG m_place = 0;
};

}  // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL memory, BOOL owns, IStream** stream) {
    if (stream == nullptr) return E_POINTER;
    *stream = nullptr;
    SetLastError(NO_ERROR);
    if (GlobalSize(memory) == 0 && GetLastError() != NO_ERROR) return E_INVALIDARG;
    *stream = new (std::nothrow) MemoryStream(memory, owns != FALSE);
    return *stream == nullptr ? E_OUTOFMEMORY : S_OK;
}
