// Handlers of fatal signals and of std::terminate, which hand the process over to a helper program.
//
// The helper looks at the process from outside while the crashed thread waits for it. Then all
// signals go back to whom they belonged before, and the crash happens once more: to a handler that
// the program had installed earlier, or to the host, which ends the process by the signal. The
// handler allocates nothing and takes no lock. Crashes of other threads meanwhile wait for the
// first one's report; a crash inside the handler ends the process at once.
#pragma once

#include <string>
#include <vector>

namespace tvutil2 {

struct CrashHandOver {
    std::vector<std::string> command;  ///< the helper and its arguments
    /// Called on the crashed thread when the report is written, on the signal's stack; may be null.
    /// What takes longer than ten seconds is given up.
    int (*callback)(void*) = nullptr;
    unsigned longest_report = 30;  ///< seconds; then the helper is killed
    int picture_quality = 0;       ///< of the main window's picture, 1 to 100; 0: none is taken
};

/// Installs the handlers and gives the calling thread, and from now on each that the library
/// starts, a stack of its own for them (base/signal_stack.h), on which a stack overflow is
/// reported, too. On a thread without one an overflow ends the process without a report. Not safe
/// from two threads at once.
void install_crash_handlers(CrashHandOver what);
/// Changes what a crash hands over from now on. What was there stays in memory: a crash on another
/// thread may be reading it.
void exchange_hand_over(CrashHandOver what);
/// Gives the signals back to whom they belonged, but for those that somebody took since.
void remove_crash_handlers();

}  // namespace tvutil2
