// A stack of their own for a thread's signal handlers, which can run when the thread has used up
// its stack.
#pragma once

#include "tvutil2/platform/base/export.h"

namespace tvutil2 {

/// Gives the calling thread such a stack of 64 KiB, with a guard below it, until the thread ends. A
/// thread that has one already, whoever gave it, keeps that; for want of memory there is none.
TVUTIL_API void give_signal_stack();

/// From now on the threads that the library starts begin with one.
void want_signal_stacks();
/// At the start of such a thread.
void give_signal_stack_if_wanted();

}  // namespace tvutil2
