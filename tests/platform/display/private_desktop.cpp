#include "tests/platform/display/private_desktop.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/leak_check.h"
#include "tests/support/profile.h"

namespace tests {
namespace {

// Ends with the process that started it, however that ends.
pid_t start_program(std::vector<const char*> arguments, int keep = -1) {
    arguments.push_back(nullptr);
    const auto parent = getpid();
    const auto child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    const int null = open("/dev/null", O_RDWR);
    for (const int descriptor : {0, 1, 2}) dup2(null, descriptor);
    if (keep >= 0) fcntl(keep, F_SETFD, 0);
    execvp(arguments[0], const_cast<char**>(arguments.data()));
    _exit(127);
}

// Where a program that is started says when it is there.
class ReadySocket {
  public:
    explicit ReadySocket(const std::string& path) : m_socket(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const timeval patience{20, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("bind");
        }
        setenv("NOTIFY_SOCKET", path.c_str(), 1);
    }
    ~ReadySocket() {
        unsetenv("NOTIFY_SOCKET");
        ::close(m_socket);
    }
    ReadySocket(const ReadySocket&) = delete;
    ReadySocket& operator=(const ReadySocket&) = delete;
    void wait() const {
        char word[64];
        if (recv(m_socket, word, sizeof word, 0) <= 0) throw std::runtime_error("no word of it");
    }

  private:
    int m_socket;
};

}  // namespace

struct PrivateDesktop::Parts {
    pid_t server = 0, manager = 0;
    Display* display = nullptr;
    Window settings = 0;  // their manager's

    [[nodiscard]] Window root() const { return DefaultRootWindow(display); }
    [[nodiscard]] Atom atom(const char* name) const { return XInternAtom(display, name, False); }

    // A property of 32-bit items, or of bytes.
    template <class Item>
    std::vector<Item> property(Window window, const char* name) const {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(display, window, atom(name), 0, 1 << 16, False, AnyPropertyType, &type,
                           &format, &count, &rest, &data);
        const auto* const items = reinterpret_cast<const Item*>(data);
        std::vector<Item> result(items, items + count);
        if (data != nullptr) XFree(data);
        return result;
    }
};

PrivateDesktop::PrivateDesktop() : m_parts(std::make_unique<Parts>()) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    const auto number = std::to_string(ends[1]);
    m_parts->server = start_program({"Xvfb", "-displayfd", number.c_str(), "-screen", "0",
                                     "1280x1024x24", "-noreset", "-nolisten", "tcp"},
                                    ends[1]);
    ::close(ends[1]);
    std::string name = ":";
    char byte = 0;
    while (read(ends[0], &byte, 1) == 1 && byte != '\n') name += byte;
    ::close(ends[0]);
    setenv("DISPLAY", name.c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    setenv("GDK_BACKEND", "x11", 1);
    setenv("NO_AT_BRIDGE", "1", 1);
    setenv("TVUTIL_DISPLAY", "desktop", 1);
    m_parts->display = XOpenDisplay(name.c_str());
    if (m_parts->display == nullptr) throw std::runtime_error("no X server; is xvfb installed?");
    // Windows go while they are asked about.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
}

PrivateDesktop::~PrivateDesktop() {
    for (const auto child : {m_parts->manager, m_parts->server}) {
        if (child > 0) kill(child, SIGKILL);
    }
}

PrivateDesktop& PrivateDesktop::start(const std::string& resources) {
    // With a thread of the desktop's libraries about, the sanitizer falls over now and then, and
    // always once the display has gone.
    turn_off_leak_check();
    static auto* const desktop = new PrivateDesktop;
    auto& parts = *desktop->m_parts;
    XChangeProperty(parts.display, parts.root(), XA_RESOURCE_MANAGER, XA_STRING, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(resources.data()),
                    static_cast<int>(resources.size()));
    XSelectInput(parts.display, parts.root(), PropertyChangeMask);
    XSync(parts.display, False);
    parts.manager = start_program({"openbox", "--sm-disable"});
    // It says so when it is there.
    for (XEvent event; parts.property<Window>(parts.root(), "_NET_SUPPORTING_WM_CHECK").empty();) {
        XNextEvent(parts.display, &event);
    }
    return *desktop;
}

PrivateDesktop* PrivateDesktop::start_wayland() {
    if (access("/usr/bin/weston", X_OK) != 0) return nullptr;
    turn_off_leak_check();
    static auto* const desktop = [] {
        auto* const made = new PrivateDesktop;
        const auto folder = profile_folder() + "/run";
        mkdir(folder.c_str(), 0700);
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        const auto settings = folder + "/weston.ini";
        write_file(settings,
                   "[core]\nidle-time=0\nrequire-input=false\n"
                   "[shell]\nbackground-color=0xff808080\npanel-position=none\nlocking=false\n"
                   "animation=none\nclose-animation=none\nstartup-animation=none\n"
                   "focus-animation=none\n");
        const auto config = "--config=" + settings;
        const ReadySocket ready(folder + "/ready");
        made->m_parts->manager = start_program(
            {"weston", "--backend=x11-backend.so", "--use-pixman", "--width=1280", "--height=1024",
             "--socket=tests", "--modules=systemd-notify.so", config.c_str()});
        ready.wait();
        setenv("WAYLAND_DISPLAY", "tests", 1);
        setenv("GDK_BACKEND", "wayland", 1);
        return made;
    }();
    return desktop;
}

void PrivateDesktop::move_pointer(POINT point) {
    XTestFakeMotionEvent(m_parts->display, -1, point.x, point.y, CurrentTime);
    XSync(m_parts->display, False);
}

void PrivateDesktop::press_button(int button) {
    XTestFakeButtonEvent(m_parts->display, static_cast<unsigned>(button), True, CurrentTime);
    XSync(m_parts->display, False);
}

void PrivateDesktop::release_button(int button) {
    XTestFakeButtonEvent(m_parts->display, static_cast<unsigned>(button), False, CurrentTime);
    XSync(m_parts->display, False);
}

void PrivateDesktop::press_key(unsigned long symbol) {
    XTestFakeKeyEvent(m_parts->display, XKeysymToKeycode(m_parts->display, symbol), True,
                      CurrentTime);
    XSync(m_parts->display, False);
}

void PrivateDesktop::release_key(unsigned long symbol) {
    XTestFakeKeyEvent(m_parts->display, XKeysymToKeycode(m_parts->display, symbol), False,
                      CurrentTime);
    XSync(m_parts->display, False);
}

std::shared_ptr<tvutil2::Surface> PrivateDesktop::picture() {
    constexpr int kWidth = 1280;
    constexpr int kHeight = 1024;
    auto* const image =
        XGetImage(m_parts->display, m_parts->root(), 0, 0, kWidth, kHeight, AllPlanes, ZPixmap);
    auto picture = tvutil2::Surface::create(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            picture->row(y)[x] = 0xFF000000U | static_cast<std::uint32_t>(XGetPixel(image, x, y));
        }
    }
    XDestroyImage(image);
    return picture;
}

std::vector<PrivateDesktop::Client> PrivateDesktop::clients() {
    std::vector<Client> all;
    const auto& parts = *m_parts;
    for (const auto window : parts.property<Window>(parts.root(), "_NET_CLIENT_LIST")) {
        const auto title = parts.property<char>(window, "_NET_WM_NAME");
        const auto owner = parts.property<Window>(window, "WM_TRANSIENT_FOR");
        bool is_modal = false;
        for (const auto state : parts.property<Atom>(window, "_NET_WM_STATE")) {
            is_modal = is_modal || state == parts.atom("_NET_WM_STATE_MODAL");
        }
        XWindowAttributes size{};
        XGetWindowAttributes(parts.display, window, &size);
        int x = 0;
        int y = 0;
        Window child = 0;
        XTranslateCoordinates(parts.display, window, parts.root(), 0, 0, &x, &y, &child);
        all.push_back({window,
                       std::string(title.begin(), title.end()),
                       owner.empty() ? 0 : owner[0],
                       is_modal,
                       {x, y, x + size.width, y + size.height},
                       parts.property<unsigned long>(window, "_NET_WM_ICON")});
    }
    return all;
}

void PrivateDesktop::place(const Client& client, const RECT& place) {
    XMoveResizeWindow(m_parts->display, client.id, place.left, place.top,
                      static_cast<unsigned>(place.right - place.left),
                      static_cast<unsigned>(place.bottom - place.top));
    XSync(m_parts->display, False);
}

void PrivateDesktop::ask(unsigned long window, const char* type, const std::vector<long>& data) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = m_parts->atom(type);
    event.xclient.format = 32;
    for (std::size_t i = 0; i < data.size(); ++i) event.xclient.data.l[i] = data[i];
    XSendEvent(m_parts->display, m_parts->root(), False,
               SubstructureNotifyMask | SubstructureRedirectMask, &event);
    XSync(m_parts->display, False);
}

void PrivateDesktop::set_state(const Client& client, const char* state, bool is_on) {
    // Maximised is two states.
    const auto horizontal =
        static_cast<long>(m_parts->atom((std::string(state) + "_HORZ").c_str()));
    const auto vertical = static_cast<long>(m_parts->atom((std::string(state) + "_VERT").c_str()));
    ask(client.id, "_NET_WM_STATE", {is_on ? 1 : 0, horizontal, vertical, 2});
}

void PrivateDesktop::close(const Client& client) {
    ask(client.id, "_NET_CLOSE_WINDOW", {0, 2});
}

void PrivateDesktop::hold_manager(bool holds) {
    kill(m_parts->manager, holds ? SIGSTOP : SIGCONT);
}

// As the manager of settings has them: integers and strings, each with its name, padded to four.
void PrivateDesktop::set_settings(int dpi, const std::string& theme) {
    auto& parts = *m_parts;
    std::string bytes(8, '\0');
    const auto put = [&bytes](std::size_t number, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> 8 * i);
    };
    const auto begin = [&](char type, const std::string& name) {
        bytes += type;
        bytes += '\0';
        put(name.size(), 2);
        bytes += name + std::string((4 - name.size() % 4) % 4, '\0');
        put(0, 4);
    };
    put(2, 4);
    begin(0, "Xft/DPI");
    put(static_cast<std::size_t>(dpi) * 1024, 4);
    begin(1, "Net/ThemeName");
    put(theme.size(), 4);
    bytes += theme + std::string((4 - theme.size() % 4) % 4, '\0');
    const bool is_first = parts.settings == 0;
    if (is_first)
        parts.settings = XCreateSimpleWindow(parts.display, parts.root(), 0, 0, 1, 1, 0, 0, 0);
    const auto kind = parts.atom("_XSETTINGS_SETTINGS");
    XChangeProperty(parts.display, parts.settings, kind, kind, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()));
    if (is_first) {
        const auto selection = parts.atom("_XSETTINGS_S0");
        XSetSelectionOwner(parts.display, selection, parts.settings, CurrentTime);
        XEvent news{};
        news.xclient.type = ClientMessage;
        news.xclient.window = parts.root();
        news.xclient.message_type = parts.atom("MANAGER");
        news.xclient.format = 32;
        news.xclient.data.l[1] = static_cast<long>(selection);
        news.xclient.data.l[2] = static_cast<long>(parts.settings);
        XSendEvent(parts.display, parts.root(), False, StructureNotifyMask, &news);
    }
    XSync(parts.display, False);
}

void PrivateDesktop::end() {
    kill(m_parts->server, SIGKILL);
    waitpid(m_parts->server, nullptr, 0);
    m_parts->server = 0;
}

}  // namespace tests
