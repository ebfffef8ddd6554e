#include "tvutil2/text/window_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tvutil2 {

void WindowFile::drain() {
    if (m_back != 0) CFile::Write(m_window.get(), std::exchange(m_back, 0));
}

void WindowFile::Close() {
    try {
        drain();
    } catch (...) {
        CFile::Close();
        throw;
    }
    m_next = m_ahead = 0;
    CFile::Close();
}

char* WindowFile::window() {
    static_assert(kBack <= kAhead);
    if (!m_window) m_window = std::make_unique_for_overwrite<char[]>(kAhead);
    return m_window.get();
}

UINT WindowFile::Read(void* buffer, UINT count) {
    drain();
    UINT taken = 0;
    while (taken != count) {
        if (m_next == m_ahead) {
            m_next = 0;
            m_ahead = CFile::Read(window(), kAhead);
            if (m_ahead == 0) break;
        }
        const auto part = std::min(count - taken, m_ahead - m_next);
        std::memcpy(static_cast<char*>(buffer) + taken, m_window.get() + m_next, part);
        m_next += part;
        taken += part;
    }
    return taken;
}

void WindowFile::Write(const void* data, UINT count) {
    if (m_next != m_ahead) Seek(0, current);
    if (count > kBack - m_back) drain();
    if (count > kBack) {
        CFile::Write(data, count);
        return;
    }
    std::memcpy(window() + m_back, data, count);
    m_back += count;
}

ULONGLONG WindowFile::Seek(LONGLONG offset, UINT from) {
    drain();
    const auto unread = std::exchange(m_ahead, 0) - std::exchange(m_next, 0);
    return CFile::Seek(from == current ? offset - unread : offset, from);
}

ULONGLONG WindowFile::GetLength() const {
    const auto length = CFile::GetLength();
    return m_back == 0 ? length : std::max(length, GetPosition());
}

ULONGLONG WindowFile::GetPosition() const {
    return CFile::GetPosition() - (m_ahead - m_next) + m_back;
}

void WindowFile::Flush() {
    drain();
    CFile::Flush();
}

}  // namespace tvutil2
