// Streams of bytes over blocks of memory.
#pragma once

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/global_memory.h"

inline constexpr IID IID_IStream{0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);

/// For one thread at a time.
class IStream : public IUnknown {
  public:
    /// Up to `size` bytes; how many goes to `read` if that isn't null. S_FALSE for less than asked.
    virtual HRESULT Read(void* buffer, DWORD size, DWORD* read) = 0;
    /// The new place goes to `place` if that isn't null. STG_E_INVALIDFUNCTION in front of the
    /// start.
    virtual HRESULT Seek(LONGLONG by, DWORD from, ULONGLONG* place) = 0;
    /// Bytes in all.
    [[nodiscard]] virtual ULONGLONG Size() const = 0;
};

/// A stream that reads a block from its start. With `owns` the last Release frees the block. The
/// block must not be freed while the stream lives. E_INVALIDARG for no block.
TVUTIL_API HRESULT CreateStreamOnHGlobal(HGLOBAL memory, BOOL owns, IStream** stream);
