#include "tvutil2/platform/process/console.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/utf.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>

using tvutil2::fail_with;

namespace {

class ConsoleInput : public tvutil2::HandleObject {
  public:
    static constexpr auto kHandleKind = tvutil2::HandleKind::console;
    explicit ConsoleInput(tvutil2::Descriptor terminal)
        : HandleObject(kHandleKind), m_terminal(std::move(terminal)) {}
    [[nodiscard]] int descriptor() const { return m_terminal.get(); }

  private:
    tvutil2::Descriptor m_terminal;
};

constinit std::mutex g_handler_lock;
HANDLE g_input = nullptr;  // with the lock

// The terminal that a process is controlled from (proc(5), stat): 0 for none.
bool terminal_of(DWORD process, dev_t& terminal) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    if (!std::getline(file, text)) return false;
    // The program's name, in parentheses, may hold anything.
    std::istringstream rest(text.substr(text.rfind(')') + 1));
    std::string state;
    long parent = 0;
    long group = 0;
    long session = 0;
    unsigned number = 0;
    if (!(rest >> state >> parent >> group >> session >> number)) return false;
    terminal = makedev((number >> 8) & 0xFFF, (number & 0xFF) | ((number >> 12) & 0xFFF00));
    return true;
}

std::string file_of(dev_t terminal) {
    constexpr unsigned kFirstPts = 136;
    constexpr unsigned kLastPts = 143;
    constexpr unsigned kVirtual = 4;
    const auto major_number = major(terminal);
    const auto minor_number = minor(terminal);
    if (major_number >= kFirstPts && major_number <= kLastPts) {
        return "/dev/pts/" + std::to_string((major_number - kFirstPts) * 256 + minor_number);
    }
    return major_number == kVirtual ? "/dev/tty" + std::to_string(minor_number) : std::string{};
}

bool type(int terminal, char16_t character, char16_t& high) {
    const bool is_high = (character & 0xFC00) == 0xD800;
    if (is_high) return high = character, true;
    std::u16string text;
    if (high != 0) text += std::exchange(high, char16_t{0});
    text += character;
    for (const auto byte : tvutil2::to_utf8_lossy(text)) {
        if (ioctl(terminal, TIOCSTI, &byte) != 0) return false;
    }
    return true;
}

}  // namespace

BOOL AttachConsole(DWORD process) {
    const std::lock_guard guard(g_handler_lock);
    if (g_input != nullptr) return fail_with(ERROR_ACCESS_DENIED);
    dev_t terminal = 0;
    if (!terminal_of(process, terminal)) return fail_with(ERROR_INVALID_PARAMETER);
    const auto file = file_of(terminal);
    if (file.empty()) return fail_with(ERROR_INVALID_HANDLE);
    tvutil2::Descriptor opened(open(file.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!opened) {
        return fail_with(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_INVALID_HANDLE);
    }
    g_input = tvutil2::make_handle<HANDLE>(std::make_shared<ConsoleInput>(std::move(opened)));
    return g_input != nullptr ? TRUE : FALSE;
}

BOOL FreeConsole() {
    const std::lock_guard guard(g_handler_lock);
    if (g_input == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    tvutil2::close_handle_of<ConsoleInput>(std::exchange(g_input, nullptr));
    return TRUE;
}

HANDLE GetStdHandle(DWORD which) {
    const std::lock_guard guard(g_handler_lock);
    if (which != STD_INPUT_HANDLE || g_input == nullptr) {
        return fail_with(ERROR_INVALID_HANDLE), nullptr;
    }
    return g_input;
}

BOOL WriteConsoleInputW(HANDLE input, const INPUT_RECORD* records, DWORD count, DWORD* written) {
    *written = 0;
    const auto console = tvutil2::object_of<ConsoleInput>(input);
    if (!console) return FALSE;
    char16_t high = 0;
    for (DWORD i = 0; i < count; ++i) {
        const auto& key = records[i].Event.KeyEvent;
        const bool types =
            records[i].EventType == KEY_EVENT && key.bKeyDown != 0 && key.uChar.UnicodeChar != 0;
        if (types && !type(console->descriptor(), key.uChar.UnicodeChar, high)) {
            return fail_with(ERROR_ACCESS_DENIED);
        }
        ++*written;
    }
    return TRUE;
}
