#include "tvutil2/platform/window/classes.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_table.h"

#include <algorithm>
#include <mutex>

namespace tvutil2 {
namespace {

constexpr int kMaxClassExtra = 40;
constexpr int kMaxWindowExtra = 4096;
constexpr std::size_t kMaxClassName = 255;
constexpr ATOM kFirstAtom = 0xC000;

struct Classes {
    std::mutex lock;
    std::vector<std::shared_ptr<WindowClass>> all;
    std::vector<std::u16string> names;  // a name has its number for good

    ForkMember is_fork_safe{ForkRank::area, this,
                            [](void* what) { static_cast<Classes*>(what)->lock.lock(); },
                            [](void* what) { static_cast<Classes*>(what)->lock.unlock(); },
                            [](void* what) { static_cast<Classes*>(what)->begin_child(); }};

    Classes() {
        constexpr UINT kControl = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
        add_system(u"Static", static_procedure, kControl);
        add_system(u"Button", button_procedure, kControl);
        add_system(u"ScrollBar", scroll_bar_procedure, kControl);
        add_system(u"Edit", edit_procedure, kControl);
        all.back()->description.hCursor = LoadCursorW(nullptr, IDC_IBEAM);
        add_system(u"ListBox", list_box_procedure, kControl);
        add_system(u"ComboLBox", list_box_procedure, kControl);
        add_system(u"ComboBox", combo_box_procedure, kControl);
        add_system(u"msctls_progress32", progress_procedure, kControl);
        add_system(u"SysListView32", list_view_procedure, kControl);
        add_system(u"SysTreeView32", tree_view_procedure, kControl);
        add_system(u"#32768", menu_procedure, CS_DBLCLKS);
        add_system(u"#32770", DefDlgProcW, CS_DBLCLKS);
        all.back()->atom = LOWORD(reinterpret_cast<std::uintptr_t>(WC_DIALOG));
        all.back()->description.cbWndExtra = DLGWINDOWEXTRA;
    }

    void add_system(const char16_t* name, WNDPROC procedure, UINT style) {
        auto made = std::make_shared<WindowClass>();
        made->name = name;
        made->folded = folded_name(name);
        made->is_system = true;
        made->description.style = style;
        made->description.lpfnWndProc = procedure;
        made->description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        made->atom = atom_of(made->folded);
        all.push_back(std::move(made));
    }

    // The windows are the parent's.
    void begin_child() {
        for (const auto& each : all) each->windows = 0;
        lock.unlock();
        new (&lock) std::mutex;
    }

    // 0 when there are no more.
    ATOM atom_of(const std::u16string& folded) {
        const auto found = std::find(names.begin(), names.end(), folded);
        const auto index = static_cast<std::size_t>(found - names.begin());
        if (index > 0xFFFF - kFirstAtom) return 0;
        if (found == names.end()) names.push_back(folded);
        return static_cast<ATOM>(kFirstAtom + index);
    }
};

// Never destroyed, as the windows. Classes outlive a fork: a program that has registered one
// doesn't do so again in its child. Their windows don't.
Classes& classes() {
    static auto* const instance = new Classes;
    return *instance;
}

// The name or number of a class, as a caller gives it.
struct ClassKey {
    ATOM atom = 0;
    std::u16string folded;

    explicit ClassKey(const char16_t* name) {
        if (IS_INTRESOURCE(name)) {
            atom = static_cast<ATOM>(reinterpret_cast<std::uintptr_t>(name));
        } else {
            folded = folded_name(name);
        }
    }
    [[nodiscard]] bool names(const WindowClass& one) const {
        return atom != 0 ? one.atom == atom : one.folded == folded;
    }
};

// With the lock held. The module's own class goes before those of all modules.
std::shared_ptr<WindowClass> look_up(Classes& all, const ClassKey& key, HINSTANCE instance) {
    std::shared_ptr<WindowClass> best;
    for (const auto& each : all.all) {
        if (!key.names(*each)) continue;
        if (!each->is_system && each->description.hInstance == instance) return each;
        const bool is_global = (each->description.style & CS_GLOBALCLASS) != 0;
        if (is_global || (each->is_system && !best)) best = each;
    }
    return best;
}

bool is_valid(const WNDCLASSEXW& given) {
    return given.cbSize == sizeof given && given.lpfnWndProc != nullptr && given.cbClsExtra >= 0 &&
           given.cbClsExtra <= kMaxClassExtra && given.cbWndExtra >= 0 &&
           given.cbWndExtra <= kMaxWindowExtra && given.lpszClassName != nullptr &&
           !IS_INTRESOURCE(given.lpszClassName) && *given.lpszClassName != 0 &&
           std::u16string_view(given.lpszClassName).size() <= kMaxClassName;
}

std::shared_ptr<WindowClass> make_class(const WNDCLASSEXW& given) {
    auto made = std::make_shared<WindowClass>();
    made->name = given.lpszClassName;
    made->folded = folded_name(given.lpszClassName);
    made->description = given;
    made->description.hInstance = or_executable(given.hInstance);
    made->description.lpszClassName = nullptr;
    if (!IS_INTRESOURCE(given.lpszMenuName)) {
        made->menu_name = given.lpszMenuName;
        made->description.lpszMenuName = made->menu_name.c_str();
    }
    made->extra.resize(static_cast<std::size_t>(given.cbClsExtra));
    return made;
}

}  // namespace

std::u16string folded_name(const char16_t* name) {
    std::u16string folded(name);
    for (auto& unit : folded) unit = to_lower(unit);
    return folded;
}

HINSTANCE or_executable(HINSTANCE instance) {
    return instance != nullptr ? instance : GetModuleHandleW(nullptr);
}

std::shared_ptr<WindowClass> find_class(const char16_t* name, HINSTANCE instance) {
    if (name != nullptr) {
        const ClassKey key(name);
        const auto module = or_executable(instance);
        auto& all = classes();
        const std::lock_guard guard(all.lock);
        if (auto found = look_up(all, key, module)) return found;
    }
    SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
    return nullptr;
}

}  // namespace tvutil2

using tvutil2::fail_with;

ATOM RegisterClassExW(const WNDCLASSEXW* description) {
    if (description == nullptr || !tvutil2::is_valid(*description)) {
        return static_cast<ATOM>(fail_with(ERROR_INVALID_PARAMETER));
    }
    auto made = tvutil2::make_class(*description);
    auto& all = tvutil2::classes();
    const std::lock_guard guard(all.lock);
    const bool is_there = std::any_of(all.all.begin(), all.all.end(), [&](const auto& each) {
        return !each->is_system && each->folded == made->folded &&
               each->description.hInstance == made->description.hInstance;
    });
    if (is_there) return static_cast<ATOM>(fail_with(ERROR_CLASS_ALREADY_EXISTS));
    made->atom = all.atom_of(made->folded);
    if (made->atom == 0) return static_cast<ATOM>(fail_with(ERROR_NOT_ENOUGH_MEMORY));
    all.all.push_back(made);
    return made->atom;
}

ATOM RegisterClassW(const WNDCLASSW* description) {
    if (description == nullptr) return static_cast<ATOM>(fail_with(ERROR_INVALID_PARAMETER));
    const auto& given = *description;
    const WNDCLASSEXW whole{sizeof whole,       given.style,         given.lpfnWndProc,
                            given.cbClsExtra,   given.cbWndExtra,    given.hInstance,
                            given.hIcon,        given.hCursor,       given.hbrBackground,
                            given.lpszMenuName, given.lpszClassName, nullptr};
    return RegisterClassExW(&whole);
}

BOOL UnregisterClassW(const char16_t* name, HINSTANCE instance) {
    auto& all = tvutil2::classes();
    const auto module = tvutil2::or_executable(instance);
    const std::lock_guard guard(all.lock);
    std::shared_ptr<tvutil2::WindowClass> found;
    if (name != nullptr) found = look_up(all, tvutil2::ClassKey(name), module);
    if (!found || found->is_system) return fail_with(ERROR_CLASS_DOES_NOT_EXIST);
    if (found->windows != 0) return fail_with(ERROR_CLASS_HAS_WINDOWS);
    all.all.erase(std::find(all.all.begin(), all.all.end(), found));
    return TRUE;
}

BOOL GetClassInfoExW(HINSTANCE instance, const char16_t* name, WNDCLASSEXW* description) {
    const auto found = tvutil2::find_class(name, instance);
    if (!found) return fail_with(ERROR_CLASS_DOES_NOT_EXIST);
    *description = found->description;
    description->cbSize = sizeof *description;
    description->lpszClassName = name;
    return TRUE;
}

BOOL GetClassInfoW(HINSTANCE instance, const char16_t* name, WNDCLASSW* description) {
    WNDCLASSEXW whole{};
    if (!GetClassInfoExW(instance, name, &whole)) return FALSE;
    *description = {whole.style,        whole.lpfnWndProc,  whole.cbClsExtra, whole.cbWndExtra,
                    whole.hInstance,    whole.hIcon,        whole.hCursor,    whole.hbrBackground,
                    whole.lpszMenuName, whole.lpszClassName};
    return TRUE;
}
