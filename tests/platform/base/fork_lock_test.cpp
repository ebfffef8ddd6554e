#include "tvutil2/platform/base/fork_lock.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/process/environment.h"
#include "tvutil2/platform/process/modules.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

// A child is forked again and again while another thread is inside an area, and works there too. A
// lock that nobody opens is ended by the alarm.
TEST(Fork, AChildMayUseEveryAreaThatAThreadIsIn) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "this sanitizer's allocator has locks of its own, which a fork doesn't take";
#endif
    const auto folder = tests::new_folder();
    for (int i = 0; i < 80; ++i) tests::write_file(folder + "/file" + std::to_string(i), "");
    const auto file = tests::platform_path(folder) + u"\\FILE1";
    const auto copy = tests::platform_path(folder) + u"\\copy";
    const auto module = tests::platform_path(TESTS_STARTED) + u"\\unversioned.dll";
    const std::pair<const char*, std::function<bool()>> areas[] = {
        {"sharing and names",
         [&] {
             // In a large folder, whose names are kept in memory.
             const HANDLE handle =
                 CreateFileW(file.c_str(), FILE_READ_DATA, 7, nullptr, OPEN_EXISTING, 0, nullptr);
             return handle != INVALID_HANDLE_VALUE && CloseHandle(handle) != FALSE;
         }},
        {"copies",
         [&] {
             const auto name =
                 copy + std::u16string(1, static_cast<char16_t>(u'a' + getpid() % 26));
             return CopyFileW(file.c_str(), name.c_str(), FALSE) != FALSE ||
                    GetLastError() == ERROR_SHARING_VIOLATION;
         }},
        {"environment",
         [] {
             char16_t value[8];
             return SetEnvironmentVariableW(u"TVUTIL_FORKED", u"yes") != FALSE &&
                    GetEnvironmentVariableW(u"tvutil_forked", value, 8) == 3;
         }},
        {"modules",
         [&] {
             const auto handle = LoadLibraryW(module.c_str());
             return GetProcAddress(handle, "Answer") != nullptr && FreeLibrary(handle) != FALSE;
         }},
    };
    for (const auto& [name, work] : areas) {
        std::atomic<bool> is_over = false;
        std::thread inside([&, &job = work] {
            while (!is_over) job();
        });
        for (int round = 0; round < 100 && !testing::Test::HasFailure(); ++round) {
            EXPECT_EQ(tests::in_child([&, &job = work] {
                          alarm(20);
                          return job() ? 0 : 1;
                      }),
                      0)
                << name << " " << round;
        }
        is_over = true;
        inside.join();
    }
}

}  // namespace
