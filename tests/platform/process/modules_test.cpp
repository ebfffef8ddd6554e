#include "tvutil2/platform/process/modules.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/system_modules.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <vector>

#include "tests/support/profile.h"
#include "tests/support/threads.h"

namespace {

std::u16string started(const char* name) {
    return tests::platform_path(std::string(TESTS_STARTED) + "/" + name);
}

std::u16string file_of(HMODULE module) {
    char16_t path[1024] = {};
    const auto size = GetModuleFileNameW(module, path, 1024);
    return {path, size};
}

TEST(Modules, ExecutablePathIsTheMappedHostPath) {
    const auto host = std::filesystem::read_symlink("/proc/self/exe").string();
    EXPECT_EQ(tvutil2::to_utf8(file_of(nullptr)), tvutil2::to_utf8(tests::platform_path(host)));
    EXPECT_EQ(file_of(GetModuleHandleW(nullptr)), file_of(nullptr));
}

TEST(Modules, PathIsCutToTheBuffer) {
    const auto whole = file_of(nullptr);
    const auto length = static_cast<DWORD>(whole.size());
    std::vector<char16_t> buffer(length + 2, u'#');

    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length + 1), length);
    EXPECT_EQ(std::u16string(buffer.data()), whole);

    SetLastError(0);
    std::fill(buffer.begin(), buffer.end(), u'#');
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), length), length);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::u16string(buffer.data()), whole.substr(0, length - 1));
    EXPECT_EQ(buffer[length], u'#') << "written behind the buffer";

    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer.data(), 0), 0U);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(Modules, HandlesThatAreNoModulesAreRefused) {
    auto* const key = reinterpret_cast<HMODULE>(std::uintptr_t{0x80000001});
    char16_t path[8];
    EXPECT_EQ(GetModuleFileNameW(key, path, 8), 0U);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    SetLastError(0);
    EXPECT_EQ(GetProcAddress(key, "Answer"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    SetLastError(0);
    EXPECT_EQ(FreeLibrary(nullptr), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(Modules, ReferencesAreCounted) {
    const auto path = started("unversioned.dll");
    const auto module = LoadLibraryW(path.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(path.c_str()), module);
    EXPECT_EQ(GetModuleHandleW(u"UNVERSIONED"), module);
    auto* const answer = tvutil2::as_function<int()>(GetProcAddress(module, "Answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);

    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_EQ(GetModuleHandleW(u"unversioned.dll"), module) << "one reference is left";
    EXPECT_EQ(CloseHandle(reinterpret_cast<HANDLE>(module)), FALSE) << "no way to unload a module";
    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_EQ(GetModuleHandleW(u"unversioned.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(FreeLibrary(module), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(GetProcAddress(module, "Answer"), nullptr);

    const auto again = LoadLibraryW(path.c_str());
    EXPECT_NE(again, nullptr);
    EXPECT_NE(again, module) << "an old handle mustn't stand for a new load";
}

TEST(Modules, ExportsAreTheModulesOwn) {
    const auto module = LoadLibraryW(started("unversioned.dll").c_str());
    ASSERT_NE(module, nullptr);
    // The C library is loaded under the module, and exports nothing for it.
    for (const char* name : {"malloc", "NoSuchFunction", ""}) {
        SetLastError(0);
        EXPECT_EQ(GetProcAddress(module, name), nullptr) << name;
        EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND) << name;
    }
    EXPECT_EQ(GetProcAddress(module, reinterpret_cast<const char*>(7)), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
}

TEST(Modules, FilesThatAreNoModules) {
    const auto text = tests::new_folder() + "/Text.dll";
    tests::write_file(text, "not a module");
    EXPECT_EQ(LoadLibraryW(tests::platform_path(text).c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_BAD_EXE_FORMAT);
    for (const auto* name : {u"no-such-module", u"C:\\no\\such\\folder\\x.dll", u"Q:\\x.dll"}) {
        SetLastError(0);
        EXPECT_EQ(LoadLibraryW(name), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    }
}

TEST(Modules, BareNamesAreFoundBesideTheExecutableUntilItIsTakenOut) {
    const auto executable = std::filesystem::read_symlink("/proc/self/exe");
    const auto beside = executable.parent_path() / ("Beside" + std::to_string(getpid()) + ".dll");
    std::filesystem::copy_file(std::string(TESTS_STARTED) + "/unversioned.dll", beside);
    const auto name = *tvutil2::to_utf16("BESIDE" + std::to_string(getpid()) + ".DLL");
    const auto module = LoadLibraryW(name.c_str());
    EXPECT_NE(module, nullptr);
    FreeLibrary(module);

    EXPECT_NE(
        SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32 | LOAD_LIBRARY_SEARCH_USER_DIRS),
        FALSE);
    EXPECT_EQ(LoadLibraryW(name.c_str()), nullptr);
    std::filesystem::remove(beside);

    EXPECT_EQ(SetDefaultDllDirectories(1), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(Modules, LibraryIsAModuleThatStays) {
    const auto library = tvutil2::library_instance();
    EXPECT_EQ(tvutil2::library_instance(), library);
    EXPECT_NE(file_of(library).find(u"libtvutil2.so"), std::u16string::npos);
    EXPECT_NE(library, GetModuleHandleW(nullptr));
    EXPECT_NE(FreeLibrary(library), FALSE);
    EXPECT_EQ(LoadLibraryW(file_of(library).c_str()), library);
}

TEST(Modules, SystemModulesAreTablesThatATestCanChange) {
    const auto user32 = LoadLibraryW(u"USER32");
    ASSERT_NE(user32, nullptr);
    EXPECT_EQ(LoadLibraryW(u"user32.dll"), user32);
    const auto real = tvutil2::as_export(SetProcessDPIAware);
    EXPECT_EQ(GetProcAddress(user32, "SetProcessDPIAware"), real);
    EXPECT_EQ(GetProcAddress(user32, "setprocessdpiaware"), nullptr) << "exports have their case";

    EXPECT_EQ(tvutil2::exchange_system_export(u"user32.dll", "SetProcessDPIAware", nullptr), real);
    EXPECT_EQ(GetProcAddress(user32, "SetProcessDPIAware"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_EQ(tvutil2::exchange_system_export(u"user32.dll", "SetProcessDPIAware", real), nullptr);
    EXPECT_EQ(GetProcAddress(user32, "SetProcessDPIAware"), real);

    EXPECT_TRUE(tvutil2::set_system_module_present(u"User32.DLL", false));
    EXPECT_EQ(LoadLibraryW(u"user32.DLL"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_TRUE(tvutil2::set_system_module_present(u"User32.DLL", true));
    EXPECT_EQ(LoadLibraryW(u"user32.DLL"), user32);
    EXPECT_FALSE(tvutil2::set_system_module_present(u"other.dll", false));
}

TEST(Modules, DpiAwarenessIsSetOnce) {
    EXPECT_EQ(tvutil2::process_dpi_awareness(), nullptr);
    EXPECT_EQ(SetProcessDpiAwarenessContext(tvutil2::process_dpi_awareness()), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetProcessDpiAwareness(3), E_INVALIDARG);

    EXPECT_EQ(SetProcessDpiAwareness(PROCESS_PER_MONITOR_DPI_AWARE), S_OK);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
    EXPECT_EQ(SetProcessDpiAwareness(PROCESS_PER_MONITOR_DPI_AWARE), E_ACCESSDENIED);
    EXPECT_EQ(SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetProcessDPIAware(), FALSE);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
}

TEST(Modules, ThreadsThatLoadAndFreeTheSameFile) {
    const auto path = started("versioned.dll");
    std::atomic<int> failures{0};
    tests::on_threads(4, [&](int /*thread*/) {
        for (int i = 0; i < 200; ++i) {
            const auto module = LoadLibraryW(path.c_str());
            if (module == nullptr || GetProcAddress(module, "DllGetVersion") == nullptr ||
                !FreeLibrary(module)) {
                ++failures;
            }
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(GetModuleHandleW(u"versioned.dll"), nullptr);
}

}  // namespace
