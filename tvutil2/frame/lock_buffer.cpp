#include "tvutil2/frame/lock_buffer.h"

CLockBuffer::CLockBuffer(const unsigned char* data, unsigned int len)
    : CBuffer(data, len), m_lock(&m_mutex) {}

CLockBuffer::CLockBuffer(const CBuffer& other) : CBuffer(other), m_lock(&m_mutex) {}

CLockBuffer::~CLockBuffer() {
    m_lock.Unlock();
}

void CLockBuffer::Lock() {
    m_lock.Lock(INFINITE);
}

void CLockBuffer::Unlock() {
    m_lock.Unlock();
}
