#include "tvutil2/ui/text_transfer.h"

#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/process/console.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>
#include <thread>

namespace {

template <class Unit>
std::basic_string<Unit> on_clipboard(UINT format) {
    auto* const block = GetClipboardData(format);
    if (block == nullptr) return {};
    std::basic_string<Unit> text = static_cast<const Unit*>(GlobalLock(block));
    GlobalUnlock(block);
    return text;
}

HGLOBAL block_of(std::u16string_view text) {
    auto* const block = GlobalAlloc(GHND, (text.size() + 1) * 2);
    std::memcpy(GlobalLock(block), text.data(), text.size() * 2);
    GlobalUnlock(block);
    return block;
}

TEST(TextTransfer, CopiesTextInBothForms) {
    setenv("TVUTIL_DISPLAY", "none", 1);
    EXPECT_TRUE(TvCopyStringToClipboard(u"K\u00f6ln \u4f1a"));
    EXPECT_FALSE(TvCopyStringToClipboard(u""));
    EXPECT_TRUE(IsClipboardFormatAvailable(CF_UNICODETEXT));
    EXPECT_EQ(GetClipboardData(CF_TEXT), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_CLIPBOARD_NOT_OPEN);
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_EQ(on_clipboard<char>(CF_TEXT), "K\u00f6ln \u4f1a");
    EXPECT_EQ(on_clipboard<char16_t>(CF_UNICODETEXT), u"K\u00f6ln \u4f1a");
    EXPECT_EQ(GetClipboardData(7), nullptr);
    // A thread that has it open keeps others out.
    BOOL is_open = TRUE;
    BOOL is_copied = TRUE;
    std::thread([&] {
        is_open = OpenClipboard(nullptr);
        is_copied = TvCopyStringToClipboard(u"x");
    }).join();
    EXPECT_FALSE(is_open);
    EXPECT_FALSE(is_copied);
    // A text in one form is that in the other, not what was there before.
    const auto number = GetClipboardSequenceNumber();
    EXPECT_NE(SetClipboardData(CF_UNICODETEXT, block_of(u"b")), nullptr);
    EXPECT_EQ(on_clipboard<char>(CF_TEXT), "b");
    EXPECT_NE(GetClipboardSequenceNumber(), number);
    // A block without a zero at its end is read to its end.
    auto* const bare = GlobalAlloc(GMEM_MOVEABLE, 3);
    std::memcpy(GlobalLock(bare), "abc", 3);
    GlobalUnlock(bare);
    EmptyClipboard();
    EXPECT_EQ(GetClipboardData(CF_UNICODETEXT), nullptr);
    SetClipboardData(CF_TEXT, bare);
    EXPECT_EQ(on_clipboard<char16_t>(CF_UNICODETEXT), u"abc");
    EXPECT_EQ(SetClipboardData(CF_TEXT, nullptr), nullptr);
    EmptyClipboard();
    EXPECT_TRUE(CloseClipboard());
    EXPECT_FALSE(CloseClipboard());
    EXPECT_FALSE(IsClipboardFormatAvailable(CF_TEXT));
    EXPECT_FALSE(OpenClipboard(reinterpret_cast<HWND>(std::uintptr_t{0x1234})));
}

// A process with a terminal of its own, which echoes nothing and does nothing.
class InTerminal {
  public:
    InTerminal() {
        termios raw{};
        cfmakeraw(&raw);
        int keyboard = -1;
        m_process = forkpty(&keyboard, nullptr, &raw, nullptr);
        if (m_process == 0) {
            // It has its terminal now.
            char byte = '!';
            if (write(1, &byte, 1) != 1) _exit(1);
            while (read(0, &byte, 1) == 1 && write(1, &byte, 1) == 1) {
            }
            _exit(0);
        }
        m_keyboard = keyboard;
        EXPECT_EQ(read_back(1), "!");
    }
    ~InTerminal() {
        close(m_keyboard);
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    InTerminal(const InTerminal&) = delete;
    InTerminal& operator=(const InTerminal&) = delete;

    // What it has read, which it writes back.
    [[nodiscard]] std::string read_back(std::size_t size) const {
        std::string text;
        char byte = 0;
        while (text.size() < size && read(m_keyboard, &byte, 1) == 1) text += byte;
        return text;
    }
    [[nodiscard]] DWORD process() const { return static_cast<DWORD>(m_process); }

  private:
    pid_t m_process = -1;
    int m_keyboard = -1;
};

TEST(TextTransfer, TypesIntoTheTerminalOfAProcess) {
    EXPECT_FALSE(AttachConsole(0x7FFFFFFF));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(FreeConsole());
    EXPECT_EQ(GetStdHandle(STD_INPUT_HANDLE), nullptr);
    const InTerminal terminal;
    ASSERT_TRUE(AttachConsole(terminal.process()));
    EXPECT_FALSE(AttachConsole(terminal.process()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    const std::u16string text = u"l\u00e9\U0001F600\r";
    std::vector<INPUT_RECORD> keys;
    for (const auto unit : text) {
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        record.Event.KeyEvent.uChar.UnicodeChar = unit;
        keys.push_back(record);
        record.Event.KeyEvent.bKeyDown = TRUE;
        keys.push_back(record);
    }
    DWORD written = 0;
    auto* const input = GetStdHandle(STD_INPUT_HANDLE);
    if (WriteConsoleInputW(input, keys.data(), static_cast<DWORD>(keys.size()), &written) ==
        FALSE) {
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        FreeConsole();
        GTEST_SKIP() << "the system lets nobody type for others";
    }
    EXPECT_EQ(written, keys.size());
    EXPECT_EQ(terminal.read_back(8), "l\u00e9\U0001F600\r");
    EXPECT_TRUE(FreeConsole());
    EXPECT_FALSE(WriteConsoleInputW(input, keys.data(), 1, &written));
    TvSendStringToCmd(nullptr, u"x");
    EXPECT_TRUE(AttachConsole(terminal.process()));
    EXPECT_TRUE(FreeConsole());
}

}  // namespace
