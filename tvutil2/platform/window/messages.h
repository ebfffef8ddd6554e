// Messages: a queue for each thread, sending, posting and the loop.
//
// A thread has a queue from its first call here or its first window on. What a thread gets next is
// decided in this order: messages that others send (they are answered inside of the call), posted
// messages, WM_QUIT, input, WM_PAINT, ticks of timers. All functions may be called from any thread;
// they act on the calling thread's queue, or on that of the window's thread. A thread that waits
// sleeps in one system call.
//
// A window of another process of the user is reached as well. Of the messages that point to memory
// WM_SETTEXT, WM_GETTEXT and WM_COPYDATA take along what they point to; the others, and those of
// controls, give ERROR_ACCESS_DENIED. What another process does with a posted message, and whether
// its queue has room, isn't waited for.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr UINT PM_NOYIELD = 2;

inline constexpr DWORD QS_INPUT = 0x07;
inline constexpr DWORD QS_POSTMESSAGE = 0x08;
inline constexpr DWORD QS_PAINT = 0x20;
inline constexpr DWORD QS_SENDMESSAGE = 0x40;

inline constexpr UINT SMTO_NORMAL = 0;
/// The waiting thread answers nobody meanwhile.
inline constexpr UINT SMTO_BLOCK = 1;
inline constexpr UINT SMTO_ABORTIFHUNG = 2;
inline constexpr UINT SMTO_NOTIMEOUTIFNOTHUNG = 8;
inline constexpr UINT SMTO_ERRORONEXIT = 0x20;

/// Posted messages that a queue holds at most.
inline constexpr DWORD kQueueLimit = 10000;

/// Takes the next message, waiting for one: non-zero, 0 for WM_QUIT, or -1 with
/// ERROR_INVALID_WINDOW_HANDLE for a window that is none.
///
/// `window` null takes all of the thread's messages, another one those of this window and its
/// children, and -1 those of no window. `first` and `last` bound the numbers, unless both are 0.
/// WM_QUIT comes whatever the bounds are, once no posted message is left to take.
TVUTIL_API BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);
/// The same without waiting; 0 when there is none. PM_REMOVE takes it out of the queue. A message
/// that was only looked at, or that this call passed over, doesn't wake WaitMessage any more.
TVUTIL_API BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT remove);
/// Sleeps until a message arrives that no call has looked for yet. Messages sent meanwhile are
/// answered.
TVUTIL_API BOOL WaitMessage();
/// Waits for one of up to MAXIMUM_WAIT_OBJECTS - 1 objects, up to a time in milliseconds, or for
/// what `mask` (QS_ flags) says is new in the thread's queue: then WAIT_OBJECT_0 plus `count`. What
/// was sent meanwhile is answered by the next call that looks for messages. `wait_all` must be 0.
/// Other results and errors as WaitForMultipleObjects.
TVUTIL_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                                           DWORD milliseconds, DWORD mask);
/// Posts the characters that a key writes; 0 when the message is no key.
TVUTIL_API BOOL TranslateMessage(const MSG* message);
/// Calls the window's procedure, or a timer's; what that returned. 0 for a window that has gone.
TVUTIL_API LRESULT DispatchMessageW(const MSG* message);

/// A message number, 0xC000 to 0xFFFF, that all processes of the user have for that name, whatever
/// its case. 0 with ERROR_INVALID_PARAMETER for an empty name or one of more than 255 units, with
/// ERROR_NOT_ENOUGH_MEMORY when there are no more numbers, or with why the run-time folder can't be
/// had.
TVUTIL_API UINT RegisterWindowMessageW(const char16_t* name);

/// Puts a message at the end of the queue of the window's thread, or of the calling thread's for
/// null, and returns at once. 0 with ERROR_INVALID_WINDOW_HANDLE; with ERROR_NOT_ENOUGH_QUOTA when
/// kQueueLimit messages wait there; with ERROR_MESSAGE_SYNC_ONLY for a message of the system that
/// points to its caller's memory.
TVUTIL_API BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// The same to a thread of this process. 0 with ERROR_INVALID_THREAD_ID for one without a queue.
TVUTIL_API BOOL PostThreadMessageW(DWORD thread, UINT message, WPARAM wparam, LPARAM lparam);
/// The thread's loop gets one WM_QUIT with the code of the last call, once no posted message is
/// left.
TVUTIL_API void PostQuitMessage(int code);

/// Calls the window's procedure on the window's thread and gives what it returned. A caller on
/// another thread waits for that, and answers what is sent to its own windows meanwhile. 0 with
/// ERROR_INVALID_WINDOW_HANDLE when the window isn't there, or goes away with the message
/// unanswered, and with ERROR_STACK_OVERFLOW when too little stack is left for one more procedure
/// inside of another.
TVUTIL_API LRESULT SendMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// The same with a limit in milliseconds for other threads' windows: 0 with ERROR_TIMEOUT. What
/// wasn't begun by then is withdrawn. SMTO_ABORTIFHUNG, SMTO_NOTIMEOUTIFNOTHUNG and
/// SMTO_ERRORONEXIT change nothing.
TVUTIL_API LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                       UINT flags, UINT milliseconds, std::uintptr_t* result);
/// Sends without waiting for another thread's answer. Errors as PostMessageW.
TVUTIL_API BOOL SendNotifyMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// Non-zero while the thread answers what another thread sends.
TVUTIL_API BOOL InSendMessage();

/// `time` of the message that the thread got last.
TVUTIL_API LONG GetMessageTime();

namespace tvutil2 {

/// As SendMessageW, but the wait ends once `stop` is signalled: a message that its window hasn't
/// begun with by then is taken back. Of a window in another process it waits for the answer.
TVUTIL_API void send_until(HANDLE stop, HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace tvutil2
