// Programs that have closed their standard files.
#include "tvutil2/platform/base/descriptor.h"

#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/objects/mappings.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/watch/change_notification.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

// What a program prints into nothing would end in them.
TEST(Descriptor, NothingStaysOpenInThePlaceOfAStandardFile) {
    const auto folder = tests::platform_path(tests::new_folder());
    const auto left_open = tests::in_child([&folder] {
        for (const int standard : {0, 1, 2}) close(standard);
        auto* const event = CreateEventW(nullptr, TRUE, FALSE, u"Global\\closed-event");
        auto* const file = CreateFileW((folder + u"\\file").c_str(), GENERIC_READ | GENERIC_WRITE,
                                       0, nullptr, CREATE_NEW, 0, nullptr);
        const char content[] = "content";
        DWORD written = 0;
        WriteFile(file, content, sizeof content, &written, nullptr);
        auto* const mapping =
            CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, 0, u"Global\\closed-mapping");
        auto* const change =
            FindFirstChangeNotificationW(folder.c_str(), FALSE, FILE_NOTIFY_CHANGE_FILE_NAME);
        auto* const window = CreateWindowExW(0, u"STATIC", u"closed", 0, 0, 0, 0, 0, nullptr,
                                             nullptr, nullptr, nullptr);
        if (event == nullptr || mapping == nullptr || change == INVALID_HANDLE_VALUE ||
            window == nullptr) {
            return 100;
        }
        int open_ones = 0;
        for (const int standard : {0, 1, 2}) {
            if (fcntl(standard, F_GETFD) >= 0) open_ones |= 1 << standard;
        }
        return open_ones;
    });
    EXPECT_EQ(left_open, 0);
}

}  // namespace
