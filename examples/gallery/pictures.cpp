#include "examples/gallery/pictures.h"

#include "tvutil2/data/text.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/system_commands.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "examples/gallery/dialogs.h"
#include "examples/gallery/disk_dialogs.h"
#include "examples/gallery/pages.h"

namespace gallery {
namespace {

using tvutil2::ThemeMode;

struct Look {
    const char* name;
    ThemeMode mode;
    UINT dpi;
};
constexpr Look kLooks[] = {
    {"light-100", ThemeMode::light, 96},
    {"light-125", ThemeMode::light, 120},
    {"light-150", ThemeMode::light, 144},
    {"light-200", ThemeMode::light, 192},
    {"dark-100", ThemeMode::dark, 96},
    {"dark-125", ThemeMode::dark, 120},
    {"dark-150", ThemeMode::dark, 144},
    {"dark-200", ThemeMode::dark, 192},
    {"contrast-100", ThemeMode::high_contrast, 96},
    {"contrast-125", ThemeMode::high_contrast, 120},
    {"contrast-150", ThemeMode::high_contrast, 144},
    {"contrast-200", ThemeMode::high_contrast, 192},
};
const std::string kLanguages[] = {"en", "zh-cn", "zh-tw", "fr", "de", "ja",
                                  "ko", "pt-br", "ru",    "sk", "es"};

class Pictures {
  public:
    explicit Pictures(std::string folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] int count() const { return m_has_failed ? -1 : m_count; }

    static void put_on(const Look& look) {
        tvutil2::set_theme_mode(look.mode);
        tvutil2::set_system_dpi(look.dpi);
        ResetAppDPI(look.dpi);
        const LONG width = 1920 * static_cast<LONG>(look.dpi) / 96;
        const LONG height = 1080 * static_cast<LONG>(look.dpi) / 96;
        tvutil2::set_monitors({{{0, 0, width, height}, {0, 0, width, height}, look.dpi}});
    }

    void take(HWND window, const std::string& name) {
        settle();
        const auto picture = tvutil2::picture_of(window);
        const auto path = m_folder + "/" + name + ".png";
        if (picture != nullptr && picture->write_png(path)) {
            ++m_count;
        } else {
            std::fprintf(stderr, "Gallery: no picture of %s\n", name.c_str());
            m_has_failed = true;
        }
    }

    void take(const Entry& entry, const std::string& name) {
        const auto dialog = entry.make();
        if (!dialog->CreateIndirect(template_of(entry))) {
            std::fprintf(stderr, "Gallery: %s can't be made\n", name.c_str());
            m_has_failed = true;
            return;
        }
        dialog->ShowWindow(SW_SHOW);
        take(dialog->m_hWnd, name);
        for (const auto& moment : entry.moments) {
            take(moment.reach(*dialog), name + "-" + moment.name);
        }
        tvutil2::release_button({0, 0});
        dialog->DestroyWindow();
    }

    void take_message(UINT type, const char16_t* text, const std::string& name);
    void take_disk_dialogs(const std::string& name, bool in_a_language);
    void take_menu(const std::string& name);
    void take_bar(const std::string& name);
    void take_edit_menu(const std::string& name);

  private:
    // What waits is painted, and what belongs to the focus is there.
    static void settle() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            if (IsDialogMessageW(GetActiveWindow(), &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    std::string m_folder;
    int m_count = 0;
    bool m_has_failed = false;
};

// A message and a menu run in loops of their own, in which these are called.
struct Waiting {
    Pictures* pictures = nullptr;
    std::string name;
    HWND menu = nullptr;
    HWND page = nullptr;
    HWND (*reach)(HWND dialog) = nullptr;
} g_waiting;

void look_at_message(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    auto* const box = FindWindowW(u"#32770", u"Gallery");
    if (box == nullptr) return;
    g_waiting.pictures->take(box, g_waiting.name);
    tvutil2::type_key(VK_RETURN);
}

void Pictures::take_message(UINT type, const char16_t* text, const std::string& name) {
    g_waiting = {this, name};
    SetTimer(nullptr, 0, 1, look_at_message);
    MessageBoxW(nullptr, text, u"Gallery", type);
}

// With what it says, if it says something.
void close_disk_dialog(HWND front) {
    auto* const below = GetWindow(front, GW_OWNER);
    if (below != nullptr) {
        SendMessageW(front, WM_COMMAND,
                     LOWORD(static_cast<WPARAM>(SendMessageW(front, DM_GETDEFID, 0, 0))), 0);
    }
    SendMessageW(below != nullptr ? below : front, WM_COMMAND, IDCANCEL, 0);
}

void look_at_disk_dialog(HWND, UINT, UINT_PTR id, DWORD) {
    auto* const front = FindWindowW(u"#32770", nullptr);
    auto* const shown = g_waiting.reach(front);
    if (shown == nullptr) return;
    KillTimer(nullptr, id);
    g_waiting.pictures->take(shown, g_waiting.name);
    close_disk_dialog(front);
}

void Pictures::take_disk_dialogs(const std::string& name, bool in_a_language) {
    // Not below the pictures: what the caller has there stays his.
    auto below = (std::filesystem::temp_directory_path() / "gallery.XXXXXX").string();
    if (mkdtemp(below.data()) == nullptr) {
        m_has_failed = true;
        return;
    }
    const auto folder = make_folders(below);
    for (const auto& each : disk_pictures()) {
        if (in_a_language && !each.is_in_every_language) continue;
        g_waiting = {this, each.name + "-" + name, nullptr, nullptr, each.reach};
        SetTimer(nullptr, 0, 1, look_at_disk_dialog);
        each.open(folder);
    }
    std::filesystem::remove_all(below);
}

// First the menu, which opens the one below it by a key; that one when it is there.
void look_at_menu(HWND, UINT, UINT_PTR id, DWORD) {
    auto* const front = FindWindowW(u"#32768", nullptr);
    if (g_waiting.menu == nullptr) {
        g_waiting.menu = front;
        tvutil2::type_text(u"a");
        return;
    }
    KillTimer(nullptr, id);
    g_waiting.pictures->take(g_waiting.menu, g_waiting.name);
    g_waiting.pictures->take(front, g_waiting.name + "-below");
    tvutil2::type_key(VK_ESCAPE);
    tvutil2::type_key(VK_ESCAPE);
}

void look_at_open_menu(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    g_waiting.pictures->take(FindWindowW(u"#32768", nullptr), g_waiting.name);
    if (g_waiting.page != nullptr) {
        g_waiting.pictures->take(g_waiting.page, g_waiting.name + "-page");
        tvutil2::type_key(VK_ESCAPE);  // leaves the bar, after the menu
    }
    tvutil2::type_key(VK_ESCAPE);
}

// A page, shown for as long as that takes.
template <class Work>
void with_page(const char* name, const Work& work) {
    for (const auto& entry : entries()) {
        if (entry.name != name) continue;
        const auto page = entry.make();
        if (!page->CreateIndirect(template_of(entry))) return;
        page->ShowWindow(SW_SHOW);
        work(*page);
        page->DestroyWindow();
    }
}

void Pictures::take_menu(const std::string& name) {
    with_page("menus", [&](CDialog& page) {
        g_waiting = {this, name};
        SetTimer(nullptr, 0, 50, look_at_menu);
        open_menu(page);
    });
}

void Pictures::take_bar(const std::string& name) {
    with_page("menus", [&](CDialog& page) {
        g_waiting = {this, name, nullptr, page.m_hWnd};
        SetTimer(nullptr, 0, 1, look_at_open_menu);
        page.SendMessage(WM_SYSCOMMAND, SC_KEYMENU, 'e');
    });
}

void Pictures::take_edit_menu(const std::string& name) {
    with_page("edits", [&](CDialog& page) {
        g_waiting = {this, name};
        SetTimer(nullptr, 0, 1, look_at_open_menu);
        page.SendDlgItemMessage(10, WM_CONTEXTMENU, 0, -1);
    });
}

void take_own(Pictures& pictures) {
    for (const auto& look : kLooks) {
        Pictures::put_on(look);
        for (const auto& entry : entries()) {
            if (!entry.is_library) pictures.take(entry, entry.name + "-" + look.name);
        }
        pictures.take_disk_dialogs(look.name, false);
        pictures.take_message(MB_YESNOCANCEL | MB_ICONQUESTION,
                              u"Do you want to keep the changes to the session?\n\nWhat isn't "
                              u"kept is lost.",
                              std::string("message-question-") + look.name);
        pictures.take_menu(std::string("menu-") + look.name);
        pictures.take_bar(std::string("bar-menu-") + look.name);
    }
}

void take_messages(Pictures& pictures) {
    const struct {
        const char* name;
        UINT type;
        const char16_t* text;
    } messages[] = {
        {"error", MB_OK | MB_ICONERROR,
         u"C:\\Users\\somebody\\Documents\\a\\long\\path\\without"
         u"\\any\\spaces\\that\\has\\to\\be\\broken\\somewhere.txt"},
        {"warning", MB_ABORTRETRYIGNORE | MB_ICONWARNING, u"The file is in use."},
        {"information", MB_OKCANCEL | MB_DEFBUTTON2 | MB_ICONINFORMATION, u"All is well."},
        {"plain", MB_CANCELTRYCONTINUE,
         u"A message without a sign, with some more text than the "
         u"others, which goes on for a second line and a third "
         u"one, so that it can be seen how lines are broken."},
    };
    for (const auto& message : messages) {
        pictures.take_message(message.type, message.text, std::string("message-") + message.name);
    }
}

// What is in the person's language; `behind` ends the names.
void take_library(Pictures& pictures, const std::string& behind) {
    for (std::size_t i = 0; i < tvutil2::kLanguages.size(); ++i) {
        SetThreadLocale(tvutil2::kLanguages[i].id);
        const auto end = std::string(1, '-') + kLanguages[i] + behind;
        for (const auto& entry : entries()) {
            if (entry.is_library) pictures.take(entry, entry.name + end);
        }
        CString question;
        question.Format(tvutil2::library_string(14138), u"C:\\Programs\\Pelrin.exe");
        pictures.take_message(MB_OKCANCEL | MB_ICONERROR, question, "message-question" + end);
        pictures.take_message(MB_OK, tvutil2::library_string(14134), "message-names" + end);
        pictures.take_message(MB_YESNOCANCEL | MB_ICONWARNING, u"?", "message-yes" + end);
        pictures.take_message(MB_ABORTRETRYIGNORE, u"?", "message-abort" + end);
        pictures.take_message(MB_CANCELTRYCONTINUE, u"?", "message-continue" + end);
        pictures.take_disk_dialogs(kLanguages[i] + behind, true);
        pictures.take_edit_menu("edit-menu" + end);
    }
}

}  // namespace

int write_pictures(const std::string& folder, bool in_every_look) {
    Pictures pictures(folder);
    take_own(pictures);
    Pictures::put_on(kLooks[0]);
    take_messages(pictures);
    take_library(pictures, "");
    for (const auto& look : kLooks) {
        if (!in_every_look || &look == kLooks) continue;
        Pictures::put_on(look);
        take_library(pictures, std::string(1, '-') + look.name);
    }
    return pictures.count();
}

}  // namespace gallery
