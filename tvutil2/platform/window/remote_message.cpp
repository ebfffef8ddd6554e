#include "tvutil2/platform/window/remote_message.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/packet.h"

#include <algorithm>
#include <cstring>

namespace tvutil2 {
namespace {

// A text that a procedure fills in for another process has at most so many units.
constexpr std::uint64_t kMaxText = std::uint64_t{1} << 20U;

}  // namespace

bool RemoteMessage::unpack() {
    if (message == WM_SETTEXT) {
        text.resize(data.size() / sizeof(char16_t));
        std::memcpy(text.data(), data.data(), text.size() * sizeof(char16_t));
        lparam = reinterpret_cast<LPARAM>(text.c_str());
    } else if (message == WM_GETTEXT) {
        wparam = std::min<std::uint64_t>(wparam, kMaxText);
        text.resize(wparam + 1);
        lparam = reinterpret_cast<LPARAM>(text.data());
    } else if (message == WM_COPYDATA) {
        if (data.size() < sizeof copied.dwData) return false;
        std::memcpy(&copied.dwData, data.data(), sizeof copied.dwData);
        copied.cbData = static_cast<DWORD>(data.size() - sizeof copied.dwData);
        if (copied.cbData != 0) copied.lpData = data.data() + sizeof copied.dwData;
        lparam = reinterpret_cast<LPARAM>(&copied);
    }
    return true;
}

std::string RemoteMessage::answer_bytes() const {
    PacketAnswer answer;
    answer.error = is_refused ? ERROR_INVALID_WINDOW_HANDLE : ERROR_SUCCESS;
    answer.result = result;
    std::string filled;
    if (!is_refused && message == WM_GETTEXT && !text.empty()) {
        const auto units = std::u16string_view(text.c_str()).size();
        filled.assign(reinterpret_cast<const char*>(text.data()), units * sizeof(char16_t));
    }
    answer.data_size = filled.size();
    return std::string(reinterpret_cast<const char*>(&answer), sizeof answer) + filled;
}

}  // namespace tvutil2
