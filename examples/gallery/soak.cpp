#include "examples/gallery/soak.h"

#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "examples/gallery/dialogs.h"
#include "examples/gallery/held.h"

namespace gallery {
namespace {

// Texts and layouts that are kept, and what the allocator rounds up; an icon in a look and a size
// that chance had not come to before. What each of hundreds of dialogs left behind would be more.
constexpr std::size_t kMostBytesMore = std::size_t{8} << 20;
constexpr std::size_t kMostHandlesMore = 2;
// Ticks of a timer that one dialog gets, what is done in each, and how often it is asked to go.
constexpr int kTicks = 4;
constexpr int kDoings = 10;
constexpr int kMostRefusals = 200;

constexpr int kKeys[] = {VK_TAB,  VK_TAB,   VK_RETURN, VK_ESCAPE, VK_SPACE, VK_LEFT,
                         VK_UP,   VK_RIGHT, VK_DOWN,   VK_HOME,   VK_END,   VK_PRIOR,
                         VK_NEXT, VK_BACK,  VK_DELETE, VK_INSERT, VK_F4,    VK_F10,
                         VK_APPS, 'A',      'C',       'N',       'V',      'X'};
constexpr int kModifiers[] = {VK_SHIFT, VK_CONTROL, VK_MENU};
constexpr const char16_t* kTexts[] = {u"a",
                                      u"Two words",
                                      u"\u00E4\u4E2D\u0639\u0301",
                                      u"\xD83D\xDE00",
                                      u"\r\n",
                                      u"%s\\*?&&",
                                      u"12345678901234567890123456789012345678901234567890"};
constexpr UINT kScales[] = {96, 120, 192};
constexpr tvutil2::ThemeMode kModes[] = {tvutil2::ThemeMode::light, tvutil2::ThemeMode::dark,
                                         tvutil2::ThemeMode::high_contrast};
// What ends a dialog, one after the other.
constexpr UINT kSigns[] = {MB_ICONERROR, MB_ICONQUESTION, MB_ICONWARNING, MB_ICONINFORMATION};
constexpr int kWaysOut[] = {IDCANCEL, IDNO, IDOK, IDABORT, IDCONTINUE};

class Soak {
  public:
    explicit Soak(unsigned seed) : m_random(seed) { m_running = this; }
    ~Soak() { m_running = nullptr; }
    Soak(const Soak&) = delete;
    Soak& operator=(const Soak&) = delete;

    int run(int seconds);

  private:
    static void on_tick(HWND, UINT, UINT_PTR, DWORD) { m_running->tick(); }

    std::size_t number(std::size_t below) { return m_random() % below; }
    template <class T, std::size_t size>
    const T& any_of(const T (&all)[size]) {
        return all[number(size)];
    }

    void open(std::size_t which, int ticks);
    void open_message(UINT type, int ticks);
    void open_all();
    void open_one();
    void tick();
    void act();
    void press_with_modifier();
    POINT any_point();
    void leave();

    static inline Soak* m_running = nullptr;
    std::minstd_rand m_random;
    int m_ticks = 0;
    int m_refusals = 0;
    int m_opened = 0;
    std::string m_name;
    bool m_has_failed = false;
};

void run_dry() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void put_on(tvutil2::ThemeMode mode, UINT dpi) {
    const auto scale = static_cast<LONG>(dpi);
    const RECT screen{0, 0, 20 * scale, 12 * scale};
    tvutil2::set_theme_mode(mode);
    tvutil2::set_system_dpi(dpi);
    tvutil2::set_monitors({{screen, screen, dpi}});
}

void Soak::open_message(UINT type, int ticks) {
    m_ticks = ticks;
    m_refusals = 0;
    ++m_opened;
    m_name = "a message";
    MessageBoxW(nullptr, any_of(kTexts), u"Gallery", type);
}

void Soak::open(std::size_t which, int ticks) {
    if (which == entries().size()) return open_message(static_cast<UINT>(number(7)), ticks);
    m_ticks = ticks;
    m_refusals = 0;
    ++m_opened;
    const auto& entry = entries()[which];
    // What lets a person make folders and rename files isn't for a hand that does anything.
    if (entry.name == "edits") return;
    m_name = entry.name;
    const auto dialog = entry.make();
    dialog->InitModalIndirect(template_of(entry));
    if (dialog->DoModal() != -1 || m_has_failed) return;
    std::fprintf(stderr, "Gallery: %s can't be made\n", entry.name.c_str());
    m_has_failed = true;
}

// What is kept for ever is met: pictures in every look, texts in every scale.
void Soak::open_all() {
    for (const auto mode : kModes) {
        for (const auto dpi : kScales) {
            put_on(mode, dpi);
            for (std::size_t which = 0; which <= entries().size(); ++which) open(which, 0);
            for (const UINT sign : kSigns) open_message(MB_OK | sign, 0);
        }
    }
}

void Soak::open_one() {
    put_on(any_of(kModes), any_of(kScales));
    SetThreadLocale(tvutil2::kLanguages[number(tvutil2::kLanguages.size())].id);
    open(number(entries().size() + 1), kTicks);
    run_dry();
}

// A dialog that is opened meanwhile has a loop of its own, in which the ticks go on.
void Soak::tick() {
    if (m_ticks-- <= 0) return leave();
    for (int i = 0; i < kDoings; ++i) {
        act();
        run_dry();
    }
}

void Soak::act() {
    switch (number(8)) {
        case 0:
        case 1:
            return tvutil2::type_key(any_of(kKeys));
        case 2:
            return press_with_modifier();
        case 3:
            return tvutil2::type_text(any_of(kTexts));
        case 4:
            return tvutil2::turn_wheel(any_point(), number(2) == 0 ? 120 : -360);
        case 5:
            return tvutil2::move_pointer(any_point());
        default:
            return tvutil2::click(any_point(), number(4) == 0 ? 1 : 0);
    }
}

void Soak::press_with_modifier() {
    const auto modifier = any_of(kModifiers);
    tvutil2::press_key(modifier);
    tvutil2::type_key(any_of(kKeys));
    tvutil2::release_key(modifier);
}

// Mostly in a control of the window in front.
POINT Soak::any_point() {
    std::vector<HWND> windows{GetActiveWindow()};
    const WNDENUMPROC add = [](HWND window, LPARAM to) {
        reinterpret_cast<std::vector<HWND>*>(to)->push_back(window);
        return TRUE;
    };
    EnumChildWindows(windows.front(), add, reinterpret_cast<LPARAM>(&windows));
    RECT place{0, 0, 1, 1};
    GetWindowRect(windows[number(windows.size())], &place);
    const auto inside = [this](LONG from, LONG to) {
        return from + static_cast<LONG>(number(static_cast<std::size_t>(std::max(to - from, 1))));
    };
    return {inside(place.left, place.right), inside(place.top, place.bottom)};
}

void Soak::leave() {
    auto* const front = GetActiveWindow();
    if (++m_refusals > kMostRefusals) {
        std::fprintf(stderr, "Gallery: %s can't be closed\n", m_name.c_str());
        m_has_failed = true;
        return PostQuitMessage(1);
    }
    tvutil2::type_key(VK_ESCAPE);
    const auto id = kWaysOut[static_cast<std::size_t>(m_refusals) % std::size(kWaysOut)];
    PostMessageW(front, WM_COMMAND, static_cast<WPARAM>(id), 0);
}

int Soak::run(int seconds) {
    using Clock = std::chrono::steady_clock;
    const auto timer = SetTimer(nullptr, 0, USER_TIMER_MINIMUM, on_tick);
    open_all();
    const auto half = std::chrono::milliseconds(seconds * 500);
    const auto open_for = [this](Clock::duration time) {
        for (const auto end = Clock::now() + time; !m_has_failed && Clock::now() < end;) open_one();
    };
    open_for(half);
    const auto before = held_now();
    open_for(half);
    KillTimer(nullptr, timer);
    const auto now = held_now();
    std::printf("%d dialogs\nhalfway: %s\nin the end: %s\n", m_opened, words_of(before).c_str(),
                words_of(now).c_str());
    const bool has_grown = now.handles > before.handles + kMostHandlesMore ||
                           now.windows > before.windows || now.descriptors > before.descriptors ||
                           now.bytes > before.bytes + kMostBytesMore;
    return has_grown || m_has_failed ? 1 : 0;
}

// Where nothing of the person's is.
class Elsewhere {
  public:
    Elsewhere() {
        auto pattern = (std::filesystem::temp_directory_path() / "gallery.XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) return;
        m_folder = pattern;
        setenv("TVUTIL_PROFILE", pattern.c_str(), 1);
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        // What a link opens isn't there.
        setenv("PATH", pattern.c_str(), 1);
    }
    ~Elsewhere() {
        std::error_code ignored;
        if (!m_folder.empty()) std::filesystem::remove_all(m_folder, ignored);
    }
    Elsewhere(const Elsewhere&) = delete;
    Elsewhere& operator=(const Elsewhere&) = delete;
    explicit operator bool() const { return !m_folder.empty(); }

  private:
    std::filesystem::path m_folder;
};

}  // namespace

int soak(int seconds, unsigned seed) {
    const Elsewhere elsewhere;
    if (!elsewhere) return 1;
    std::printf("seed %u\n", seed);
    std::fflush(stdout);
    return Soak(seed).run(seconds);
}

}  // namespace gallery
