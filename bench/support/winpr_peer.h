// Objects of WinPR, a portable layer of the same calls. Its header has the same names as ours, so
// it is included by one source.
#pragma once

namespace winpr_peer {

using Object = void*;

Object new_event();
Object new_mutex();
Object new_semaphore();
void set(Object event);
void reset(Object event);
void add(Object semaphore);
void release(Object mutex);
void wait(Object object);
void close(Object object);

}  // namespace winpr_peer
