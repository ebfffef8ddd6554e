#include "tvutil2/frame/startup.h"

#include "tvutil2/frame/dll_loader.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

HINSTANCE g_resource_instance = nullptr;

CtvutilApp g_application;

// Stands last among the library's static objects (this file is the last one to be linked), so that
// the others are there when the module starts and are still there when it ends.
class Module {
  public:
    Module() {
        const auto instance = tvutil2::library_instance();
        if (!AfxStartModule(instance) || !AfxInitExtensionModule(m_extension, instance)) {
            // The host's loader takes no refusal from a library that it starts.
            std::fputs("tvutil2: the library could not be started\n", stderr);
            std::_Exit(EXIT_FAILURE);
        }
        m_chain.emplace(m_extension);
    }
    ~Module() {
        g_application.ExitInstance();
        m_chain.reset();
        AfxTermExtensionModule(m_extension);
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

  private:
    AFX_EXTENSION_MODULE m_extension;
    std::optional<CDynLinkLibrary> m_chain;
};

const Module g_module;

constexpr const char16_t* kCommonSettings = u"Software\\Tolvarine\\Common\\8\\Settings";

const char16_t* settings_key(unsigned int program) {
    switch (program) {
        case 1:
            return u"Software\\Tolvarine\\Ombrelia\\8\\Vantrosa";
        case 2:
            return u"Software\\Tolvarine\\Pelrin\\8";
        case 3:
            return u"Software\\Tolvarine\\Dovr\\8";
        case 4:
            return u"Software\\Tolvarine\\Zemt\\8";
        default:
            return kCommonSettings;
    }
}

DWORD dpi_preference(unsigned int program) {
    constexpr const char16_t* kValue = u"DpiAwareness";
    CRegistry common;
    const bool has_common = common.Open(HKEY_CURRENT_USER, kCommonSettings, 0, KEY_ALL_ACCESS) != 0;
    const DWORD preference = has_common ? common.GetValue(kValue, DWORD{0}) : 0;
    if (program == 0) return preference;
    CRegistry own;
    // A product that has no key yet takes nothing from the common one either.
    if (own.Open(HKEY_CURRENT_USER, settings_key(program), 0, KEY_ALL_ACCESS) == 0) return 0;
    return own.GetValue(kValue, preference);
}

std::optional<DPI_AWARENESS_CONTEXT> context_of(DWORD preference) {
    switch (preference) {
        case 0:
            return DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2;
        case 1:
            return DPI_AWARENESS_CONTEXT_SYSTEM_AWARE;
        case 2:
            return DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED;
        default:
            return std::nullopt;
    }
}

template <class Function>
Function* export_of(const CDllLoader& module, const char* name) {
    return tvutil2::as_function<Function>(module.GetProcAddress(name));
}

void narrow_module_search() {
    const CDllLoader kernel(u"KERNEL32.DLL", 1);
    if (auto* const set = export_of<BOOL(DWORD)>(kernel, "SetDefaultDllDirectories")) {
        set(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_USER_DIRS);
    }
}

bool set_awareness_context(const CDllLoader& user, unsigned int program) {
    auto* const set = export_of<BOOL(DPI_AWARENESS_CONTEXT)>(user, "SetProcessDpiAwarenessContext");
    if (set == nullptr) return false;
    const auto context = context_of(dpi_preference(program));
    return context && set(*context) != 0;
}

// For platforms without contexts: per monitor, else for the system as a whole.
void set_awareness_of_old() {
    const CDllLoader shcore(u"shcore.dll", 1);
    auto* const set = export_of<HRESULT(int)>(shcore, "SetProcessDpiAwareness");
    if (set == nullptr || set(PROCESS_PER_MONITOR_DPI_AWARE) != S_OK) SetProcessDPIAware();
}

}  // namespace

BEGIN_MESSAGE_MAP(CtvutilApp, CWinApp)
END_MESSAGE_MAP()

CtvutilApp::CtvutilApp() : CWinApp(nullptr) {}

BOOL CtvutilApp::InitInstance() {
    CWinApp::InitInstance();
    g_resource_instance = m_hInstance;
    return TRUE;
}

void TvCommonInitialize(unsigned int dpiProgram) {
    narrow_module_search();
    const CDllLoader user(u"user32.DLL", 1);
    if (!set_awareness_context(user, dpiProgram)) set_awareness_of_old();
}

namespace tvutil2 {

HINSTANCE resource_instance() {
    return g_resource_instance;
}

}  // namespace tvutil2
