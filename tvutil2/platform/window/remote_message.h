// A message from another process, on its way to a window's procedure.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/thread_queue.h"

#include <memory>
#include <string>

namespace tvutil2 {

/// With what it points to.
struct RemoteMessage : SentMessage {
    int connection = -1;
    std::uint64_t serial = 0;
    std::weak_ptr<const Descriptor> socket;  ///< the connection's
    std::string data;                        ///< what came along with it
    std::u16string text;
    COPYDATASTRUCT copied{};

    /// Lets the message point to what came along with it; false when that isn't whole.
    [[nodiscard]] bool unpack();
    /// What goes back to the sender.
    [[nodiscard]] std::string answer_bytes() const;
};

}  // namespace tvutil2
