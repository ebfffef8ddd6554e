#include "tvutil2/text/read_ahead_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tvutil2 {

void ReadAheadFile::Close() {
    m_next = m_ahead = 0;
    CFile::Close();
}

UINT ReadAheadFile::Read(void* buffer, UINT count) {
    UINT taken = 0;
    while (taken != count) {
        if (m_next == m_ahead) {
            if (!m_window) m_window = std::make_unique_for_overwrite<char[]>(kAhead);
            m_next = m_ahead = 0;
            m_ahead = CFile::Read(m_window.get(), kAhead);
            if (m_ahead == 0) break;
        }
        const auto part = std::min(count - taken, m_ahead - m_next);
        std::memcpy(static_cast<char*>(buffer) + taken, m_window.get() + m_next, part);
        m_next += part;
        taken += part;
    }
    return taken;
}

void ReadAheadFile::Write(const void* data, UINT count) {
    if (m_next != m_ahead) Seek(0, current);
    CFile::Write(data, count);
}

ULONGLONG ReadAheadFile::Seek(LONGLONG offset, UINT from) {
    const auto unread = std::exchange(m_ahead, 0) - std::exchange(m_next, 0);
    return CFile::Seek(from == current ? offset - unread : offset, from);
}

ULONGLONG ReadAheadFile::GetPosition() const {
    return CFile::GetPosition() - (m_ahead - m_next);
}

}  // namespace tvutil2
