// A window that can't be used while something asks a question in front of it.
#pragma once

#include "tvutil2/platform/window/quietly.h"
#include "tvutil2/platform/window/show.h"

namespace tvutil2 {

/// It can be used again at the end, whatever becomes of the question, unless it couldn't before.
struct DisabledOwner {
    HWND window;  ///< null when there is nothing to undo

    /// `owner` may be null.
    explicit DisabledOwner(HWND owner) : window(owner) {
        if (window != nullptr && EnableWindow(window, FALSE)) window = nullptr;
    }
    ~DisabledOwner() {
        if (window != nullptr) quietly([this] { EnableWindow(window, TRUE); });
    }
    DisabledOwner(const DisabledOwner&) = delete;
    DisabledOwner& operator=(const DisabledOwner&) = delete;
};

}  // namespace tvutil2
