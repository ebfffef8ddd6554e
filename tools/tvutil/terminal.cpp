#include "tools/tvutil/terminal.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <streambuf>

namespace tool {
namespace {

bool is_obeyed(std::uint32_t c) {
    const bool is_control = (c < 0x20 && c != '\n' && c != '\t') || (c >= 0x7F && c < 0xA0);
    const bool is_direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
                              c == 0x200E || c == 0x200F || c == 0x061C;
    return is_control || is_direction;
}

std::size_t length_by_lead(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

struct Piece {
    std::uint32_t code = 0;
    std::size_t length = 0;  ///< 0: the first byte doesn't belong
    bool is_cut = false;     ///< the text ends inside
};

Piece first_of(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    const auto length = length_by_lead(lead);
    if (length < 2) return {lead, length, false};
    std::uint32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i == bytes.size()) return {0, 0, true};
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0U) != 0x80) return {};
        code = code << 6U | (next & 0x3FU);
    }
    constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_valid =
        code >= kSmallest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    return is_valid ? Piece{code, length, false} : Piece{};
}

std::string formatted(const char* format, std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// Stops before a character that the next bytes may complete, and says how far it came.
std::size_t add_harmless(std::string& out, std::string_view bytes, bool is_last) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        const auto rest = bytes.substr(at);
        const auto piece = first_of(rest);
        const bool is_line_end = rest.starts_with("\r\n");
        if (!is_last && (piece.is_cut || rest == "\r")) break;
        if (piece.length == 0) {
            out += formatted("<%02X>", static_cast<unsigned char>(rest[0]));
        } else if (is_obeyed(piece.code)) {
            if (!is_line_end) out += formatted("<%04X>", piece.code);
        } else {
            out += rest.substr(0, piece.length);
        }
        at += std::max<std::size_t>(piece.length, 1);
    }
    return at;
}

}  // namespace

std::string harmless(std::string_view bytes) {
    std::string out;
    add_harmless(out, bytes, true);
    return out;
}

std::string harmless_json(const std::string& json) {
    std::string out;
    for (std::string_view rest = json; !rest.empty();) {
        const auto piece = first_of(rest);
        const auto length = std::max<std::size_t>(piece.length, 1);
        if (piece.length != 0 && is_obeyed(piece.code)) {
            out += formatted("\\u%04x", piece.code);
        } else {
            out += rest.substr(0, length);
        }
        rest.remove_prefix(length);
    }
    return out;
}

bool is_output_terminal() {
    return isatty(STDOUT_FILENO) == 1;
}

class HarmlessStreams::Filter : public std::streambuf {
  public:
    explicit Filter(std::ostream& stream) : m_stream(stream), m_target(stream.rdbuf(this)) {}
    ~Filter() override {
        put(true);
        m_target->pubsync();
        m_stream.rdbuf(m_target);
    }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        m_waiting.append(text, static_cast<std::size_t>(size));
        return put(false) ? size : 0;
    }
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        m_waiting.push_back(traits_type::to_char_type(c));
        return put(false) ? c : traits_type::eof();
    }
    int sync() override { return m_target->pubsync(); }

  private:
    bool put(bool is_last) {
        std::string out;
        m_waiting.erase(0, add_harmless(out, m_waiting, is_last));
        const auto size = static_cast<std::streamsize>(out.size());
        return m_target->sputn(out.data(), size) == size;
    }

    std::ostream& m_stream;
    std::streambuf* m_target;
    std::string m_waiting;
};

HarmlessStreams::HarmlessStreams() {
    if (is_output_terminal()) m_out = std::make_unique<Filter>(std::cout);
    if (isatty(STDERR_FILENO) == 1) m_err = std::make_unique<Filter>(std::cerr);
}

HarmlessStreams::~HarmlessStreams() = default;

namespace {

// For the signal handlers: set before they are.
termios g_shown;
termios g_hidden;
std::string g_prompt;
constexpr std::array kSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGTSTP};

void set_handler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

void prompt() {
    [[maybe_unused]] const auto count = write(STDERR_FILENO, g_prompt.data(), g_prompt.size());
}

// Does what the signal does without a handler, with the terminal as it was; behind a stop the
// question is asked anew.
void give_echo_back(int signal) {
    const int error = errno;
    tcsetattr(STDIN_FILENO, TCSANOW, &g_shown);
    set_handler(signal, SIG_DFL);
    sigset_t only{};
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigset_t before{};
    raise(signal);
    sigprocmask(SIG_UNBLOCK, &only, &before);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    set_handler(signal, give_echo_back);
    tcsetattr(STDIN_FILENO, TCSANOW, &g_hidden);
    prompt();
    errno = error;
}

// Keeps a terminal from showing what is typed.
class NoEcho {
  public:
    NoEcho() : m_active(tcgetattr(STDIN_FILENO, &g_shown) == 0) {
        if (!m_active) return;
        g_hidden = g_shown;
        g_hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], nullptr, &m_before[i]);
            // Who started us may want them passed over.
            if (m_before[i].sa_handler == SIG_DFL) set_handler(kSignals[i], give_echo_back);
        }
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_hidden);
    }
    ~NoEcho() {
        if (!m_active) return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_shown);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &m_before[i], nullptr);
        }
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

  private:
    std::array<struct sigaction, kSignals.size()> m_before{};
    bool m_active;
};

}  // namespace

std::string ask_hidden(const std::string& question) {
    g_prompt = harmless(question) + ": ";
    std::string line;
    const NoEcho quiet;
    prompt();
    std::getline(std::cin, line);
    std::cerr << '\n';
    return line;
}

}  // namespace tool
