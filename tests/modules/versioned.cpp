// A module with a version, which a test chooses through the module itself.
#include "tvutil2/frame/dll_loader.h"

namespace {
DLLVERSIONINFO g_answer{};
HRESULT g_result = S_OK;
DWORD g_size_seen = 0;
}  // namespace

extern "C" {

__attribute__((visibility("default"))) void SetAnswer(HRESULT result, DWORD major, DWORD minor) {
    g_result = result;
    g_answer.dwMajorVersion = major;
    g_answer.dwMinorVersion = minor;
}

__attribute__((visibility("default"))) DWORD SizeSeen() {
    return g_size_seen;
}

__attribute__((visibility("default"))) HRESULT DllGetVersion(DLLVERSIONINFO* info) {
    g_size_seen = info->cbSize;
    info->dwMajorVersion = g_answer.dwMajorVersion;
    info->dwMinorVersion = g_answer.dwMinorVersion;
    return g_result;
}
}
