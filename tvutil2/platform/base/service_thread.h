// Threads that the ground floor needs for itself.
#pragma once

#include <functional>

namespace tvutil2 {

/// Starts a thread for the rest of the process's life. It gets no signals: a program's handlers
/// expect to run on the program's own threads. Throws std::system_error when the host has no more
/// threads. A child after a fork doesn't have it.
void start_service_thread(std::function<void()> body);

}  // namespace tvutil2
