#include "tvutil2/frame/dll_loader.h"

#include "tvutil2/platform/process/modules.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/profile.h"

namespace {

std::u16string started(const char* name) {
    return tests::platform_path(std::string(TESTS_STARTED) + "/" + name);
}

TEST(DllLoader, OwnerAloneFrees) {
    const auto path = started("unversioned.dll");
    {
        const CDllLoader owner(path.c_str(), 1);
        EXPECT_NE(owner.IsLoaded(), 0);
        EXPECT_NE(owner.GetProcAddress("Answer"), nullptr);
    }
    EXPECT_EQ(GetModuleHandleW(path.c_str()), nullptr);
    {
        const CDllLoader guest(path.c_str(), 0);
        EXPECT_NE(guest.IsLoaded(), 0);
    }
    const auto module = GetModuleHandleW(path.c_str());
    EXPECT_NE(module, nullptr);
    {
        const CDllLoader original(path.c_str(), 0);
        CDllLoader copy(u"", 0);
        copy = original;  // shares the handle without a reference
        EXPECT_NE(copy.GetProcAddress("Answer"), nullptr);
    }
    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_EQ(FreeLibrary(module), FALSE) << "two loads, two references";
}

TEST(DllLoader, NothingLoaded) {
    const CDllLoader none(u"C:\\no\\such\\module.dll", 1);
    EXPECT_EQ(none.IsLoaded(), 0);
    EXPECT_EQ(none.GetProcAddress("Answer"), nullptr);
    DWORD version = 7;
    EXPECT_EQ(none.GetVersion(&version), 0);
    EXPECT_EQ(version, 7U);
}

TEST(DllLoader, VersionIsMajorLowAndMinorHigh) {
    const CDllLoader module(started("versioned.dll").c_str(), 1);
    auto* const answer =
        tvutil2::as_function<void(HRESULT, DWORD, DWORD)>(module.GetProcAddress("SetAnswer"));
    auto* const size_seen = tvutil2::as_function<DWORD()>(module.GetProcAddress("SizeSeen"));
    ASSERT_NE(answer, nullptr);
    struct {
        HRESULT result;
        DWORD major, minor;
        int expected;
        DWORD version;
    } const cases[] = {
        {S_OK, 6, 16, 1, 0x00100006},
        {S_FALSE, 0x12345, 0xABCDE, 1, 0xBCDE2345},
        {E_FAIL, 6, 16, 0, 7},
    };
    for (const auto& c : cases) {
        answer(c.result, c.major, c.minor);
        DWORD version = 7;
        EXPECT_EQ(module.GetVersion(&version), c.expected);
        EXPECT_EQ(version, c.version);
        EXPECT_EQ(size_seen(), 20U);
    }
    const CDllLoader without(started("unversioned.dll").c_str(), 1);
    DWORD version = 7;
    EXPECT_EQ(without.GetVersion(&version), 0);
    EXPECT_EQ(version, 7U);
}

}  // namespace
