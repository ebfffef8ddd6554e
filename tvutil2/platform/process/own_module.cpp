#include "tvutil2/platform/process/own_module.h"

#include "tvutil2/platform/base/last_error.h"

#include <dlfcn.h>
#include <link.h>

#include <climits>
#include <cstdlib>
#include <memory>
#include <string>

namespace tvutil2 {
namespace {

// The folder of the library's file, behind all links. The loader knows where the file was at its
// load; a name that it was given relative to the folder of that time means nothing any more.
std::string library_folder() {
    static const char here = 0;
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(&here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) return {};
    char origin[PATH_MAX];
    if (dlinfo(map, RTLD_DI_ORIGIN, origin) != 0) return {};
    const std::string name = info.dli_fname;
    const auto file = std::string(origin) + "/" + name.substr(name.rfind('/') + 1);
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(file.c_str(), nullptr),
                                                               &std::free);
    if (!resolved) return origin;
    const std::string path = resolved.get();
    return path.substr(0, path.rfind('/'));
}

}  // namespace

void* own_module_function(const char* name, const char* function) {
    const auto folder = library_folder();
    if (folder.empty()) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    const auto file = folder + "/tvutil2/tvutil2-" + name + ".so";
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    void* const found = dlsym(module, function);
    if (found == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return found;
}

}  // namespace tvutil2
