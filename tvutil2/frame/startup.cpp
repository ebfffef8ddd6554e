#include "tvutil2/frame/startup.h"

#include "tvutil2/platform/process/modules.h"

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

}  // namespace

CtvutilApp::CtvutilApp() : CWinApp(nullptr) {}

BOOL CtvutilApp::InitInstance() {
    CWinApp::InitInstance();
    g_resource_instance = m_hInstance;
    return TRUE;
}

namespace tvutil2 {

HINSTANCE resource_instance() {
    return g_resource_instance;
}

}  // namespace tvutil2
