// A file that an object opened for itself: the small blocks that it reads meet the system some at a
// time.
#pragma once

#include "tvutil2/framework/file.h"

#include <memory>

namespace tvutil2 {

/// A CFile that reads ahead. What is written goes to the system at once.
class ReadAheadFile : public CFile {
  public:
    /// Bytes read ahead. Who opens for reading lets nobody write meanwhile, so it costs nothing.
    static constexpr UINT kAhead = 65536;

    void Close() override;
    UINT Read(void* buffer, UINT count) override;
    void Write(const void* data, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    [[nodiscard]] ULONGLONG GetPosition() const override;

    /// How many objects point to it.
    int holders = 1;

  private:
    std::unique_ptr<char[]> m_window;
    UINT m_next = 0;   ///< the first byte read ahead that nobody has taken yet
    UINT m_ahead = 0;  ///< the end of the bytes read ahead
};

}  // namespace tvutil2
