// Waiting, in a thread with windows, for what comes from outside.
#pragma once

#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"

#include <chrono>
#include <functional>

namespace tests {

/// Lets the loop run until something has come about. False when it doesn't.
inline bool await(const std::function<bool()>& has_come) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const auto timer = SetTimer(nullptr, 0, 10, nullptr);
    bool is_there = has_come();
    MSG message;
    while (!is_there && std::chrono::steady_clock::now() < end &&
           GetMessageW(&message, nullptr, 0, 0)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
        is_there = message.message == WM_TIMER ? has_come() : false;
    }
    KillTimer(nullptr, timer);
    return is_there;
}

}  // namespace tests
