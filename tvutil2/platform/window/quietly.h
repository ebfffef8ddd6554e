// The end of something that a handler's exception may be passing through.
#pragma once

namespace tvutil2 {

/// For destructors that tell windows: what a handler raises there is dropped, since the exception
/// that is on its way already is the one to be heard.
template <class Action>
void quietly(const Action& action) noexcept {
    try {
        action();
    } catch (...) {  // NOLINT(bugprone-empty-catch)
    }
}

}  // namespace tvutil2
