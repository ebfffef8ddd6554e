// How a command ends when it can't do what was asked.
#pragma once

#include <string>

namespace tool {

/// The program's exit codes. Scripts may rely on them; --help shows them.
enum class Exit : int {
    success = 0,
    no = 1,       ///< the answer is no: it isn't there, it doesn't match
    usage = 2,    ///< the command line is wrong
    refused = 3,  ///< the input is malformed, or was refused
    failed = 4,   ///< the system couldn't do it
    lossy = 5,    ///< text is lost, or would be
};

/// Ends a command: one clear line on standard error, and the code.
struct Failure {
    Exit code;
    std::string message;
};

}  // namespace tool
