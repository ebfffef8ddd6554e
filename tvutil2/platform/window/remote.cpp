#include "tvutil2/platform/window/remote.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/packet.h"
#include "tvutil2/platform/window/process_place.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window_table.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tvutil2 {
namespace {

std::uint64_t number_of(HWND window) {
    return reinterpret_cast<std::uintptr_t>(window);
}

// Bytes to another process that is slow, or halted: as much as goes at once, and more as it takes
// it, while the thread answers what is sent to it.
class Conversation {
  public:
    Conversation(Descriptor connection, bool is_deaf, DWORD milliseconds)
        : m_connection(std::move(connection)),
          m_is_deaf(is_deaf),
          m_limit(milliseconds),
          m_start(GetTickCount()) {}

    bool write(std::string_view bytes) {
        while (!bytes.empty()) {
            const auto size = ::send(m_connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (size > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(size));
            } else if (!wait_after_failure(true)) {
                return false;
            }
        }
        return true;
    }

    bool read(void* target, std::size_t size) {
        auto* place = static_cast<char*>(target);
        while (size > 0) {
            const auto got = ::recv(m_connection.get(), place, size, 0);
            if (got > 0) {
                place += got;
                size -= static_cast<std::size_t>(got);
            } else if (got == 0 || !wait_after_failure(false)) {
                if (got == 0) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
                return false;
            }
        }
        return true;
    }

  private:
    // False when it isn't just a matter of waiting, or the time is over.
    bool wait_after_failure(bool writes) {
        if (errno == EINTR) return true;
        // What the last error says when the other side has gone: so has the window.
        if (errno != EAGAIN) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
        auto left = m_limit;
        if (m_limit != INFINITE) {
            const auto passed = GetTickCount() - m_start;
            left = passed < m_limit ? m_limit - passed : 0;
        }
        return ThreadQueue::current().wait_for_connection(m_connection.get(), writes, m_is_deaf,
                                                          left) ||
               fail_with(ERROR_TIMEOUT);
    }

    Descriptor m_connection;
    bool m_is_deaf;
    DWORD m_limit;
    DWORD m_start;
};

// The bytes that a message points to.
std::string data_of(UINT message, LPARAM lparam) {
    if (message == WM_SETTEXT && lparam != 0) {
        const std::u16string_view text(reinterpret_cast<const char16_t*>(lparam));
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
    }
    if (message == WM_COPYDATA && lparam != 0) {
        const auto& given = *reinterpret_cast<const COPYDATASTRUCT*>(lparam);
        std::string bytes(reinterpret_cast<const char*>(&given.dwData), sizeof given.dwData);
        if (given.lpData != nullptr) {
            bytes.append(static_cast<const char*>(given.lpData), given.cbData);
        }
        return bytes;
    }
    return {};
}

std::string packet_of(PacketKind kind, HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                      const std::string& data) {
    const Packet packet{Packet::kMark,
                        kind,
                        number_of(window),
                        message,
                        static_cast<DWORD>(data.size()),
                        wparam,
                        goes_along(message) ? 0 : lparam};
    std::string bytes(reinterpret_cast<const char*>(&packet), sizeof packet);
    return bytes += data;
}

// The text that came back for WM_GETTEXT, into the caller's buffer.
bool take_text(Conversation& conversation, const PacketAnswer& answer, WPARAM size,
               char16_t* buffer, LRESULT& result) {
    std::u16string text(answer.data_size / sizeof(char16_t), u'\0');
    if (!conversation.read(text.data(), text.size() * sizeof(char16_t))) return false;
    if (size == 0 || buffer == nullptr) return true;
    const auto length = text.copy(buffer, size - 1);
    buffer[length] = 0;
    result = static_cast<LRESULT>(length);
    return true;
}

}  // namespace

bool is_remote(HWND window) {
    const auto process = WindowTable::process_of(window);
    return process != 0 && process <= 0x7FFFFF && process != WindowTable::instance().process();
}

std::optional<ListedWindow> find_remote(HWND window) {
    auto windows = windows_of_process(WindowTable::process_of(window));
    const auto found = std::find_if(
        windows.begin(), windows.end(),
        [window](const ListedWindow& each) { return each.handle == number_of(window); });
    if (found != windows.end()) return std::move(*found);
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return std::nullopt;
}

std::vector<ListedWindow> remote_windows() {
    std::vector<ListedWindow> all;
    for (const auto process : processes_with_windows()) {
        for (auto& window : windows_of_process(process)) all.push_back(std::move(window));
    }
    return all;
}

DWORD post_remote(HWND window, UINT message, WPARAM wparam, LPARAM lparam, bool is_notice) {
    if (points_to_memory(message)) return ERROR_MESSAGE_SYNC_ONLY;
    if (stays_in_process(message)) return ERROR_ACCESS_DENIED;
    if (!find_remote(window)) return ERROR_INVALID_WINDOW_HANDLE;
    const auto connection = connect_to_process(WindowTable::process_of(window));
    if (!connection) return GetLastError();
    const auto kind = is_notice ? PacketKind::notify : PacketKind::post;
    const auto bytes = packet_of(kind, window, message, wparam, lparam, {});
    // A new connection has room for it.
    const auto size = ::send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return size == static_cast<ssize_t>(bytes.size()) ? ERROR_SUCCESS : ERROR_INVALID_WINDOW_HANDLE;
}

bool send_remote(HWND window, UINT message, WPARAM wparam, LPARAM lparam, bool is_deaf,
                 DWORD milliseconds, LRESULT& result) {
    if (stays_in_process(message)) return fail_with(ERROR_ACCESS_DENIED);
    const auto data = data_of(message, lparam);
    if (data.size() > kMaxPacketData) return fail_with(ERROR_INVALID_PARAMETER);
    if (!find_remote(window)) return false;
    auto connection = connect_to_process(WindowTable::process_of(window));
    if (!connection) return false;
    Conversation conversation(std::move(connection), is_deaf, milliseconds);
    PacketAnswer answer;
    if (!conversation.write(packet_of(PacketKind::send, window, message, wparam, lparam, data)) ||
        !conversation.read(&answer, sizeof answer)) {
        return false;
    }
    if (answer.mark != Packet::kMark || answer.data_size > kMaxPacketData) {
        return fail_with(ERROR_INVALID_DATA);
    }
    if (answer.error != ERROR_SUCCESS) return fail_with(answer.error);
    result = static_cast<LRESULT>(answer.result);
    return message != WM_GETTEXT ||
           take_text(conversation, answer, wparam, reinterpret_cast<char16_t*>(lparam), result);
}

}  // namespace tvutil2
