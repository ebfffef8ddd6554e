#include "tvutil2/platform/window/common_dialogs/folder_alert.h"

#include <sys/inotify.h>

#include <string>
#include <utility>

namespace tvutil2 {
namespace {

// What changes a list of names, sizes and times; a file that is being written counts when it is
// done.
constexpr std::uint32_t kListed = IN_ONLYDIR | IN_MOVE_SELF | IN_CREATE | IN_DELETE |
                                  IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_CLOSE_WRITE;

}  // namespace

FolderAlert::~FolderAlert() {
    auto& hub = InotifyHub::instance();
    const auto guard = hub.locked();
    hub.forget(*this);
}

// By what is open, and not by its path: a look-up might hang, and everybody's watches with it.
void FolderAlert::follow(int folder, std::function<void()> told) {
    auto& hub = InotifyHub::instance();
    const auto guard = hub.locked();
    hub.forget(*this);
    m_told = std::move(told);
    static_cast<void>(hub.watch(*this, "/proc/self/fd/" + std::to_string(folder), kListed));
}

void FolderAlert::tell() {
    if (const auto told = std::exchange(m_told, nullptr)) told();
}

}  // namespace tvutil2
