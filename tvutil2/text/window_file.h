// A file that an object opened for itself: the small blocks that it reads and writes meet the
// system some at a time.
#pragma once

#include "tvutil2/framework/file.h"

#include <memory>

namespace tvutil2 {

/// A CFile that reads ahead and keeps written bytes back. What is kept back goes out when there is
/// no room for more, with Flush and with Close, and those are the calls that throw when it can't. A
/// block whose writing failed isn't tried again.
class WindowFile : public CFile {
  public:
    /// Bytes read ahead. Who opens for reading lets nobody write meanwhile, so it costs nothing.
    static constexpr UINT kAhead = 65536;
    /// Bytes kept back: what a killed process may lose, and no more than standard streams do.
    static constexpr UINT kBack = 8192;

    void Close() override;
    UINT Read(void* buffer, UINT count) override;
    void Write(const void* data, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    [[nodiscard]] ULONGLONG GetLength() const override;
    [[nodiscard]] ULONGLONG GetPosition() const override;
    void Flush() override;

    /// How many objects point to it.
    int holders = 1;

  private:
    char* window();
    void drain();

    std::unique_ptr<char[]> m_window;  ///< bytes read ahead, or bytes kept back
    UINT m_next = 0;                   ///< the first byte read ahead that nobody has taken yet
    UINT m_ahead = 0;                  ///< the end of the bytes read ahead
    UINT m_back = 0;                   ///< bytes kept back
};

}  // namespace tvutil2
