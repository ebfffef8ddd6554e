#include "tvutil2/platform/process/modules.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/module_object.h"
#include "tvutil2/platform/process/system_modules.h"

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

// What one thread's load has written of a module another thread reads, and the host's loader keeps
// its own order to itself. Recursive: loading runs the module's code, which may load another one.
std::recursive_mutex& loader_lock() {
    static auto* const lock = new std::recursive_mutex;
    return *lock;
}

class LoaderHandle {
  public:
    LoaderHandle(const char* file, int flags) {
        const std::lock_guard guard(loader_lock());
        m_handle = dlopen(file, flags);
    }
    ~LoaderHandle() {
        if (m_handle == nullptr) return;
        const std::lock_guard guard(loader_lock());
        dlclose(m_handle);
    }
    LoaderHandle(LoaderHandle&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr)) {}
    LoaderHandle(const LoaderHandle&) = delete;
    LoaderHandle& operator=(const LoaderHandle&) = delete;
    LoaderHandle& operator=(LoaderHandle&&) = delete;

    [[nodiscard]] void* get() const { return m_handle; }

  private:
    void* m_handle;
};

std::string absolute(const char* file) {
    if (*file == '/') return file;
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(file, nullptr), &std::free);
    return resolved ? resolved.get() : file;
}

std::string executable_file() {
    std::string file(4096, '\0');
    const auto size = readlink("/proc/self/exe", file.data(), file.size());
    file.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    // What the host says of a program whose file an update has replaced: its place is still known.
    constexpr std::string_view kDeleted = " (deleted)";
    if (file.ends_with(kDeleted) && access(file.c_str(), F_OK) != 0) {
        file.resize(file.size() - kDeleted.size());
    }
    return file;
}

const link_map* map_at(const void* address, const char** file = nullptr) {
    Dl_info info{};
    void* map = nullptr;
    if (dladdr1(address, &info, &map, RTLD_DL_LINKMAP) == 0) return nullptr;
    if (file != nullptr) *file = info.dli_fname;
    return static_cast<const link_map*>(map);
}

// A file that the host's loader mapped. `map` tells whether two of them are the same.
class HostModule : public ModuleObject {
  public:
    HostModule(std::string file, const link_map* map) : ModuleObject(std::move(file)), m_map(map) {}

    [[nodiscard]] const link_map* map() const { return m_map; }

  protected:
    // The loader looks through what a module stands on as well; a module exports its own only.
    [[nodiscard]] FARPROC own_symbol(const LoaderHandle& loaded, const char* name) const {
        void* const address = loaded.get() == nullptr ? nullptr : dlsym(loaded.get(), name);
        if (address == nullptr || map_at(address) != m_map) return nullptr;
        return reinterpret_cast<FARPROC>(address);
    }

  private:
    const link_map* m_map;
};

class LoadedModule : public HostModule {
  public:
    LoadedModule(LoaderHandle handle, const link_map* map)
        : HostModule(absolute(map->l_name), map), m_handle(std::move(handle)) {}
    [[nodiscard]] FARPROC symbol(const char* name) const override {
        return own_symbol(m_handle, name);
    }

  private:
    LoaderHandle m_handle;
};

class LibraryModule : public HostModule {
  public:
    using HostModule::HostModule;
    [[nodiscard]] bool is_permanent() const override { return true; }
    [[nodiscard]] FARPROC symbol(const char* name) const override {
        return own_symbol({map()->l_name, RTLD_LAZY | RTLD_NOLOAD}, name);
    }
};

class ExecutableModule : public HostModule {
  public:
    using HostModule::HostModule;
    [[nodiscard]] bool is_permanent() const override { return true; }
    [[nodiscard]] FARPROC symbol(const char* name) const override {
        return own_symbol({nullptr, RTLD_LAZY}, name);
    }
};

struct Entry {
    HMODULE handle;
    std::shared_ptr<ModuleObject> module;
    std::uint32_t references = 1;
};

struct Modules {
    std::mutex lock;
    ForkLock is_fork_safe{lock, ForkRank::modules};
    std::vector<Entry> entries;
};

// Never destroyed: static objects of other modules free theirs after ours are gone.
Modules& modules() {
    static auto* const instance = new Modules;
    return *instance;
}

const link_map* map_of(void* loader_handle) {
    link_map* map = nullptr;
    return dlinfo(loader_handle, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

HMODULE executable_instance() {
    static const HMODULE instance = [] {
        const LoaderHandle self(nullptr, RTLD_LAZY);
        return insert_module(
            std::make_shared<ExecutableModule>(executable_file(), map_of(self.get())));
    }();
    return instance;
}

std::u16string_view file_name(std::u16string_view path) {
    const auto separator = path.find_last_of(u"\\/");
    return separator == std::u16string_view::npos ? path : path.substr(separator + 1);
}

// The name as the platform completes it: ".dll" where no dot is, and none at the end.
std::u16string completed(const char16_t* name) {
    std::u16string full(name);
    const auto file = file_name(full);
    if (file.ends_with(u'.')) {
        full.pop_back();
    } else if (!file.empty() && file.find(u'.') == std::u16string_view::npos) {
        full += u".dll";
    }
    return full;
}

template <class Matches>
HMODULE find_loaded(Matches matches, bool take_reference) {
    auto& all = modules();
    const std::lock_guard guard(all.lock);
    for (auto& entry : all.entries) {
        if (!matches(*entry.module)) continue;
        if (take_reference) ++entry.references;
        return entry.handle;
    }
    return nullptr;
}

HMODULE find_by_name(const std::u16string& name, bool take_reference) {
    (void)executable_instance();
    (void)library_instance();
    if (has_folder(name)) {
        const auto file = host_path(name);
        if (!file) return nullptr;
        return find_loaded([&](const ModuleObject& module) { return module.file() == *file; },
                           take_reference);
    }
    return find_loaded(
        [&](const ModuleObject& module) {
            const auto path = module.path();
            return _wcsicmp(path.c_str() + (path.size() - file_name(path).size()), name.c_str()) ==
                   0;
        },
        take_reference);
}

bool is_module_file(const std::string& file) {
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    unsigned char start[EI_NIDENT] = {};
    const auto size = read(descriptor, start, sizeof start);
    close(descriptor);
    return size == sizeof start && std::memcmp(start, ELFMAG, SELFMAG) == 0 &&
           start[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32);
}

// Two threads that load the same file at the same time share one entry: the loader gives both the
// same map.
HMODULE enter(LoaderHandle handle) {
    const auto* map = map_of(handle.get());
    if (map == nullptr) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    const auto is_same = [map](const ModuleObject& module) {
        const auto* host = dynamic_cast<const HostModule*>(&module);
        return host != nullptr && host->map() == map;
    };
    (void)library_instance();
    auto& all = modules();
    const std::lock_guard guard(all.lock);
    for (auto& entry : all.entries) {
        if (!is_same(*entry.module)) continue;
        ++entry.references;
        return entry.handle;
    }
    auto module = std::make_shared<LoadedModule>(std::move(handle), map);
    const auto instance = make_handle<HMODULE>(module);
    if (instance != nullptr) all.entries.push_back({instance, std::move(module)});
    return instance;
}

HMODULE load_file(const std::string& file) {
    if (access(file.c_str(), F_OK) != 0) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    LoaderHandle handle(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle.get() != nullptr) return enter(std::move(handle));
    SetLastError(is_module_file(file) ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT);
    return nullptr;
}

std::optional<std::string> file_beside_executable(const std::u16string& name) {
    constexpr DWORD kWithApplication =
        LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    const auto folders = default_dll_directories();
    if (folders != 0 && (folders & kWithApplication) == 0) return std::nullopt;
    const auto executable = object_of<ModuleObject>(executable_instance());
    if (!executable) return std::nullopt;
    auto path = executable->path();
    path.resize(path.size() - file_name(path).size());
    auto file = host_path(path + name);
    return file && access(file->c_str(), F_OK) == 0 ? file : std::nullopt;
}

HMODULE load_bare(const std::u16string& name) {
    if (const auto file = file_beside_executable(name)) return load_file(*file);
    const auto host_name = to_utf8(name);
    if (!host_name) return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
    LoaderHandle handle(host_name->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle.get() != nullptr) return enter(std::move(handle));
    return fail_with(ERROR_MOD_NOT_FOUND), nullptr;
}

// The first look at a module of the process makes its entry, and the first one at a system module
// the entries of all, which a fork must not come upon half made.
const ForkMember g_is_fork_safe(
    ForkRank::loader, &loader_lock(),
    [](void* lock) {
        static_cast<void>(executable_instance());
        static_cast<void>(library_instance());
        static_cast<void>(system_module(u"KERNEL32.DLL"));
        static_cast<std::recursive_mutex*>(lock)->lock();
    },
    [](void* lock) { static_cast<std::recursive_mutex*>(lock)->unlock(); },
    [](void* lock) {
        static_cast<std::recursive_mutex*>(lock)->unlock();
        new (lock) std::recursive_mutex;
    });

// Null is the program; a stranger is a module that isn't there, as the platform says of it.
std::shared_ptr<ModuleObject> module_of(HMODULE module) {
    auto object = object_of<ModuleObject>(module != nullptr ? module : executable_instance());
    if (!object) SetLastError(ERROR_MOD_NOT_FOUND);
    return object;
}

}  // namespace

std::u16string ModuleObject::path() const {
    return platform_path(m_file).value_or(u"");
}

HMODULE insert_module(std::shared_ptr<ModuleObject> module) {
    const auto handle = make_handle<HMODULE>(module);
    if (handle == nullptr) return nullptr;
    auto& all = modules();
    const std::lock_guard guard(all.lock);
    all.entries.push_back({handle, std::move(module)});
    return handle;
}

HINSTANCE library_instance() {
    static const HINSTANCE instance = [] {
        const char* file = "";
        const auto* map = map_at(reinterpret_cast<const void*>(&library_instance), &file);
        return insert_module(std::make_shared<LibraryModule>(absolute(file), map));
    }();
    return instance;
}

}  // namespace tvutil2

DWORD GetModuleFileNameW(HMODULE module, char16_t* buffer, DWORD size) {
    using namespace tvutil2;
    const auto object = module_of(module);
    if (!object) return 0;
    const auto path = object->path();
    if (path.empty()) return fail_with(ERROR_INVALID_NAME);
    if (buffer == nullptr || size == 0) return fail_with(ERROR_INSUFFICIENT_BUFFER);
    const auto count = path.copy(buffer, size - 1);
    buffer[count] = 0;
    if (count == path.size()) return static_cast<DWORD>(count);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

HMODULE GetModuleHandleW(const char16_t* name) {
    using namespace tvutil2;
    if (name == nullptr) return executable_instance();
    const auto full = completed(name);
    if (const auto system = system_module(full.c_str())) return system;
    const auto loaded = find_by_name(full, false);
    if (loaded == nullptr) SetLastError(ERROR_MOD_NOT_FOUND);
    return loaded;
}

HMODULE LoadLibraryW(const char16_t* name) {
    using namespace tvutil2;
    if (name == nullptr || *name == 0) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    const auto full = completed(name);
    if (const auto system = system_module(full.c_str())) return system;
    if (const auto loaded = find_by_name(full, true)) return loaded;
    if (!has_folder(full)) return load_bare(full);
    const auto file = host_path(full);
    return file ? load_file(*file) : (fail_with(ERROR_MOD_NOT_FOUND), nullptr);
}

BOOL FreeLibrary(HMODULE module) {
    using namespace tvutil2;
    // Unloading runs the module's own code, so the last reference goes outside the lock.
    const auto object = module != nullptr ? module_of(module) : nullptr;
    if (!object) return fail_with(ERROR_MOD_NOT_FOUND);
    if (object->is_permanent()) return TRUE;
    auto& all = modules();
    const std::unique_lock guard(all.lock);
    const auto entry = std::find_if(all.entries.begin(), all.entries.end(),
                                    [&](const Entry& e) { return e.handle == module; });
    if (entry == all.entries.end()) return fail_with(ERROR_MOD_NOT_FOUND);
    if (--entry->references > 0) return TRUE;
    all.entries.erase(entry);
    return close_handle_of<ModuleObject>(module);
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
    using namespace tvutil2;
    const auto object = module_of(module);
    if (!object) return nullptr;
    const auto ordinal = reinterpret_cast<std::uintptr_t>(name);
    const auto function =
        ordinal < 0x10000 ? object->symbol_at(static_cast<WORD>(ordinal)) : object->symbol(name);
    if (function == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return function;
}
