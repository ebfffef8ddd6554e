#include "tvutil2/platform/process/message_box.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/window/dialogs/message_window.h"

#include <fcntl.h>
#include <strings.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

struct Button {
    int id;
    std::string_view word;  // its first letter is its key, and no other one of the set has it
};

// The first button of each set is the platform's first; `refusing` is the one that changes nothing.
struct ButtonSet {
    Button buttons[3];
    std::size_t count;
    std::size_t refusing;
};

constexpr ButtonSet kSets[] = {
    {{{IDOK, "OK"}}, 1, 0},
    {{{IDOK, "OK"}, {IDCANCEL, "Cancel"}}, 2, 1},
    {{{IDABORT, "Abort"}, {IDRETRY, "Retry"}, {IDIGNORE, "Ignore"}}, 3, 0},
    {{{IDYES, "Yes"}, {IDNO, "No"}, {IDCANCEL, "Cancel"}}, 3, 2},
    {{{IDYES, "Yes"}, {IDNO, "No"}}, 2, 1},
    {{{IDRETRY, "Retry"}, {IDCANCEL, "Cancel"}}, 2, 1},
    {{{IDCANCEL, "Cancel"}, {IDTRYAGAIN, "Try again"}, {IDCONTINUE, "Go on"}}, 3, 0},
};

constexpr std::size_t kLongestAnswer = 64;

// Questions of two threads don't mix.
std::mutex g_one_at_a_time;

bool is_control(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

// Units that turn the direction of the text around them, so that it reads as what it isn't.
bool is_direction(char16_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E ||
           c == 0x200F || c == 0x061C;
}

// Text as it may be put on a terminal: lines kept and indented, so that no line of it can pass for
// one of ours; what a terminal would obey is shown as its code.
std::string harmless(const char16_t* text) {
    std::u16string out;
    const std::u16string_view all(text != nullptr ? text : u"");
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto c = all[i];
        if (c == u'\r' && i + 1 < all.size() && all[i + 1] == u'\n') continue;
        if (c == u'\n') {
            out += u"\n  ";
        } else if (c == u'\t') {
            out += u"    ";
        } else if (is_control(c) || is_direction(c)) {
            char code[8];
            std::snprintf(code, sizeof code, "<%04X>", static_cast<unsigned>(c));
            out.append(code, code + 6);
        } else {
            out.push_back(c);
        }
    }
    return tvutil2::to_utf8_lossy(out);
}

std::string_view icon_word(UINT type) {
    switch (type & MB_ICONMASK) {
        case MB_ICONERROR:
            return "Error: ";
        case MB_ICONWARNING:
            return "Warning: ";
        default:
            return "";
    }
}

std::string message(const char16_t* text, const char16_t* caption, UINT type) {
    std::string out;
    const auto head = harmless(caption != nullptr ? caption : u"Error");
    if (!head.empty()) out.append("[").append(head).append("]\n");
    return out.append("  ").append(icon_word(type)).append(harmless(text)).append("\n");
}

// The controlling terminal, while the process is in its foreground: in the background a read would
// stop the process where nobody looks.
class Terminal {
  public:
    Terminal() : m_descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {}
    ~Terminal() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    [[nodiscard]] bool is_usable() const {
        return m_descriptor >= 0 && tcgetpgrp(m_descriptor) == getpgrp();
    }
    // What was typed before the question was seen doesn't answer it.
    void forget_typed() const { tcflush(m_descriptor, TCIFLUSH); }
    [[nodiscard]] bool print(std::string_view text) const {
        return tvutil2::write_all(m_descriptor, text);
    }
    // Nothing at the end of the input or when the terminal has gone.
    [[nodiscard]] std::optional<std::string> read_line() const {
        std::string line;
        for (;;) {
            char c = 0;
            const auto count = read(m_descriptor, &c, 1);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return std::nullopt;
            if (c == '\n') return line;
            if (line.size() <= kLongestAnswer) line.push_back(c);
        }
    }

  private:
    int m_descriptor;
};

std::string prompt(const ButtonSet& set, std::size_t default_button) {
    std::string line;
    for (std::size_t i = 0; i < set.count; ++i) {
        const auto word = set.buttons[i].word;
        if (i > 0) line += ", ";
        line.append("[").append(word.substr(0, 1)).append("]").append(word.substr(1));
    }
    return line.append(" (Enter: ").append(set.buttons[default_button].word).append("): ");
}

// The button whose word or key an answer is, in either case.
std::optional<int> button_of(const ButtonSet& set, std::string answer, std::size_t default_button) {
    const auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    answer.erase(std::remove_if(answer.begin(), answer.end(), is_blank), answer.end());
    if (answer.empty()) return set.buttons[default_button].id;
    for (const auto& [id, word] : std::span(set.buttons, set.count)) {
        std::string whole(word);
        whole.erase(std::remove_if(whole.begin(), whole.end(), is_blank), whole.end());
        const auto length = answer.size() == 1 ? 1 : std::max(answer.size(), whole.size());
        if (strncasecmp(answer.c_str(), whole.c_str(), length) == 0) return id;
    }
    return std::nullopt;
}

// The chosen button; nothing when the terminal can't be asked.
std::optional<int> ask(const ButtonSet& set, const std::string& text, std::size_t default_button) {
    const Terminal terminal;
    if (!terminal.is_usable()) return std::nullopt;
    terminal.forget_typed();
    if (!terminal.print(text)) return std::nullopt;
    for (;;) {
        if (!terminal.print(prompt(set, default_button))) return std::nullopt;
        const auto answer = terminal.read_line();
        if (!answer) return std::nullopt;
        if (const auto id = button_of(set, *answer, default_button)) return id;
    }
}

}  // namespace

// Where there is a display.
static std::optional<int> ask_by_window(tvutil2::WindowMessage message, const ButtonSet& set,
                                        std::size_t wanted) {
    int ids[std::size(kSets[0].buttons)] = {};
    for (std::size_t i = 0; i < set.count; ++i) ids[i] = set.buttons[i].id;
    message.buttons = {ids, set.count};
    message.default_button = wanted < set.count ? wanted : 0;
    message.refusing = set.buttons[set.refusing].id;
    return ask_in_window(message);
}

int MessageBoxW(HWND owner, const char16_t* text, const char16_t* caption, UINT type) {
    const auto kind = type & MB_TYPEMASK;
    if (kind >= std::size(kSets)) return tvutil2::fail_with(ERROR_INVALID_MSGBOX_STYLE);
    const auto& set = kSets[kind];
    const std::size_t wanted = (type & MB_DEFMASK) / MB_DEFBUTTON2;
    tvutil2::WindowMessage in_window;
    in_window.owner = owner;
    in_window.text = text != nullptr ? text : u"";
    in_window.caption = caption;
    in_window.icon = type & MB_ICONMASK;
    if (const auto id = ask_by_window(in_window, set, wanted)) return *id;
    const auto shown = message(text, caption, type);
    const std::lock_guard guard(g_one_at_a_time);
    if (const auto id = ask(set, shown, wanted < set.count ? wanted : 0)) return *id;
    const auto& refusing = set.buttons[set.refusing];
    (void)tvutil2::write_all(
        STDERR_FILENO, shown + "  (" + std::string(refusing.word) + ": nobody could be asked)\n");
    return refusing.id;
}
