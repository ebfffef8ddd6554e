// CLockBuffer: a CBuffer with a mutex beside it.
#pragma once

#include "tvutil2/frame/buffer.h"
#include "tvutil2/framework/sync.h"

/// The lock is advisory: no operation of CBuffer takes it. Who shares the object puts Lock and
/// Unlock around what it does with it.
class TVUTIL_API CLockBuffer : public CBuffer {
  public:
    CLockBuffer(const unsigned char* data = nullptr, unsigned int len = 0);
    CLockBuffer(const CBuffer& other);
    /// Gives the lock back before anything else.
    ~CLockBuffer() override;

    /// Waits without a time limit.
    void Lock();
    void Unlock();

  private:
    CMutex m_mutex;
    CSingleLock m_lock;
};
