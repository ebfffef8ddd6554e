#include "tvutil2/frame/dll_loader.h"

#include "tvutil2/platform/process/modules.h"

CDllLoader::CDllLoader(const char16_t* name, int freeOnDestroy)
    : m_module(LoadLibraryW(name)), m_is_owner(freeOnDestroy) {}

CDllLoader::~CDllLoader() {
    if (m_is_owner != 0 && m_module != nullptr) FreeLibrary(m_module);
}

FARPROC CDllLoader::GetProcAddress(const char* name) const {
    return m_module != nullptr ? ::GetProcAddress(m_module, name) : nullptr;
}

int CDllLoader::GetVersion(DWORD* version) const {
    auto* const get =
        tvutil2::as_function<HRESULT(DLLVERSIONINFO*)>(GetProcAddress("DllGetVersion"));
    if (get == nullptr) return 0;
    DLLVERSIONINFO info{};
    info.cbSize = sizeof info;
    if (FAILED(get(&info))) return 0;
    *version = LOWORD(info.dwMajorVersion) | (DWORD{LOWORD(info.dwMinorVersion)} << 16);
    return 1;
}
