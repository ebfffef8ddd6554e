#include "tvutil2/platform/process/system_modules.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/crash/crash_rpt.h"
#include "tvutil2/platform/process/module_object.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/window/geometry.h"

#include <array>
#include <atomic>
#include <cstring>
#include <span>
#include <string>

namespace {

std::atomic<DPI_AWARENESS_CONTEXT> g_dpi_awareness{nullptr};
std::atomic<DWORD> g_dll_directories{0};

// False when another call was first.
bool set_awareness_once(DPI_AWARENESS_CONTEXT context) {
    DPI_AWARENESS_CONTEXT unset = nullptr;
    return g_dpi_awareness.compare_exchange_strong(unset, context);
}

}  // namespace

BOOL SetDefaultDllDirectories(DWORD flags) {
    constexpr DWORD kKnown = LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_USER_DIRS |
                             LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    if (flags == 0 || (flags & ~kKnown) != 0) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    g_dll_directories = flags;
    return TRUE;
}

BOOL SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT context) {
    const auto number = reinterpret_cast<std::intptr_t>(context);
    if (number < -5 || number > -1) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    return set_awareness_once(context) || tvutil2::fail_with(ERROR_ACCESS_DENIED);
}

BOOL SetProcessDPIAware() {
    return set_awareness_once(DPI_AWARENESS_CONTEXT_SYSTEM_AWARE) ||
           g_dpi_awareness == DPI_AWARENESS_CONTEXT_SYSTEM_AWARE ||
           tvutil2::fail_with(ERROR_ACCESS_DENIED);
}

HRESULT SetProcessDpiAwareness(int awareness) {
    if (awareness < PROCESS_DPI_UNAWARE || awareness > PROCESS_PER_MONITOR_DPI_AWARE) {
        return E_INVALIDARG;
    }
    return set_awareness_once(dpi_awareness_context(-1 - awareness)) ? S_OK : E_ACCESSDENIED;
}

namespace tvutil2 {
namespace {

// By a name, or by an ordinal alone.
struct Export {
    const char* name;
    std::atomic<FARPROC> function;
    WORD ordinal = 0;
};

class SystemModule : public ModuleObject {
  public:
    SystemModule(std::u16string name, std::span<Export> exports)
        : ModuleObject(""), m_name(std::move(name)), m_exports(exports) {}

    [[nodiscard]] std::u16string path() const override { return m_name; }
    [[nodiscard]] bool is_permanent() const override { return true; }
    [[nodiscard]] FARPROC symbol(const char* name) const override {
        return function_of(find(name));
    }
    [[nodiscard]] FARPROC symbol_at(WORD ordinal) const override {
        return function_of(find(ordinal_name(ordinal)));
    }
    [[nodiscard]] Export* find(const char* name) const {
        const auto ordinal = reinterpret_cast<std::uintptr_t>(name);
        const bool is_ordinal = ordinal < 0x10000;
        for (auto& entry : m_exports) {
            const bool is_it = is_ordinal ? ordinal != 0 && entry.ordinal == ordinal
                                          : std::strcmp(entry.name, name) == 0;
            if (is_it) return &entry;
        }
        return nullptr;
    }

    std::atomic<bool> is_present{true};

  private:
    static FARPROC function_of(const Export* entry) {
        return entry != nullptr ? entry->function.load() : nullptr;
    }

    std::u16string m_name;
    std::span<Export> m_exports;
};

struct Entered {
    std::shared_ptr<SystemModule> module;
    HMODULE handle;
};

Entered enter(const char16_t* name, std::span<Export> exports) {
    auto module = std::make_shared<SystemModule>(name, exports);
    const auto handle = make_handle<HMODULE>(module);
    return {std::move(module), handle};
}

const Entered* find_module(const char16_t* name) {
    static Export kernel32[] = {{"SetDefaultDllDirectories", as_export(SetDefaultDllDirectories)},
                                {"SetThreadUILanguage", as_export(SetThreadUILanguage)}};
    static Export user32[] = {
        {"GetDpiForWindow", as_export(GetDpiForWindow)},
        {"SetProcessDpiAwarenessContext", as_export(SetProcessDpiAwarenessContext)},
        {"SetProcessDPIAware", as_export(SetProcessDPIAware)}};
    static Export shcore[] = {{"GetDpiForMonitor", as_export(GetDpiForMonitor)},
                              {"SetProcessDpiAwareness", as_export(SetProcessDpiAwareness)}};
    static Export crash_rpt[] = {
        {"", as_export(crash_install), crash_ordinal::install},
        {"", as_export(crash_uninstall), crash_ordinal::uninstall},
        {"", as_export(crash_add_file), crash_ordinal::add_file},
        {"", as_export(crash_last_error), crash_ordinal::last_error},
        {"", as_export(crash_add_screenshot), crash_ordinal::add_screenshot}};
    static const auto* const modules = new std::array{
        enter(u"KERNEL32.DLL", kernel32),
        enter(u"USER32.DLL", user32),
        enter(u"SHCORE.DLL", shcore),
        enter(u"CRASHRPT.DLL", crash_rpt),
    };
    for (const auto& entry : *modules) {
        if (_wcsicmp(entry.module->path().c_str(), name) == 0) return &entry;
    }
    return nullptr;
}

}  // namespace

HMODULE system_module(const char16_t* name) {
    const auto* const entry = find_module(name);
    return entry != nullptr && entry->module->is_present ? entry->handle : nullptr;
}

DPI_AWARENESS_CONTEXT process_dpi_awareness() {
    return g_dpi_awareness;
}

DWORD default_dll_directories() {
    return g_dll_directories;
}

FARPROC exchange_system_export(const char16_t* module, const char* name, FARPROC function) {
    const auto* const entry = find_module(module);
    auto* const found = entry != nullptr ? entry->module->find(name) : nullptr;
    return found != nullptr ? found->function.exchange(function) : nullptr;
}

bool set_system_module_present(const char16_t* module, bool present) {
    const auto* const entry = find_module(module);
    if (entry == nullptr) return false;
    entry->module->is_present = present;
    return true;
}

}  // namespace tvutil2
