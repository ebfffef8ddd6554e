#include "tvutil2/platform/files/item_list.h"

#include "tvutil2/platform/base/task_memory.h"
#include "tvutil2/platform/files/known_folders.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::u16string path_of(PCIDLIST_ABSOLUTE list) {
    char16_t path[MAX_PATH] = u"before";
    const bool has_path = SHGetPathFromIDListW(list, path) != 0;
    EXPECT_EQ(has_path, *path != 0);
    return path;
}

TEST(ItemLists, StandForPaths) {
    const struct {
        std::u16string path, again;
    } cases[] = {
        {u"C:\\", u"C:\\"},
        {u"C:\\a", u"C:\\a"},
        {u"D:\\a b\\*\\\n\u202E", u"D:\\a b\\*\\\n\u202E"},
        {u"C:\\a\\", u"C:\\a"},
        {u"C:\\" + std::u16string(255, u'n'), u"C:\\" + std::u16string(255, u'n')},
        // No list, or a path without room in MAX_PATH.
        {u"C:\\" + std::u16string(256, u'n'), u""},
        {u"C:\\b\\" + std::u16string(255, u'n'), u""},
        {u"a", u""},
        {u"\\a", u""},
        {u"", u""},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(path_of(tvutil2::item_list_of(each.path).get()), each.again) << &each - cases;
    }
}

TEST(ItemLists, OfPlaces) {
    PIDLIST_ABSOLUTE list = nullptr;
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DESKTOP, &list), S_OK);
    EXPECT_EQ(list->mkid.cb, 0);
    EXPECT_TRUE(path_of(list).ends_with(u"\\Desktop"));
    ILFree(list);
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &list), S_OK);
    EXPECT_EQ(path_of(list), u"");
    CoTaskMemFree(list);
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_APPDATA, &list), S_OK);
    char16_t data[MAX_PATH];
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, data);
    EXPECT_EQ(path_of(list), data);
    ILFree(list);
    EXPECT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_SYSTEM, &list), E_INVALIDARG);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DESKTOP, nullptr), E_INVALIDARG);
    ILFree(nullptr);
}

TEST(ItemLists, OfOthersHaveNoPath) {
    const std::u16string forms[] = {u"\x0001", u"\x0003", u"\x0005",
                                    std::u16string(u"\x0004\x0003\0", 3),
                                    std::u16string(u"\x0004\x0009\0", 3)};
    for (const auto& form : forms) {
        EXPECT_EQ(path_of(reinterpret_cast<PCIDLIST_ABSOLUTE>(form.c_str())), u"");
    }
    EXPECT_FALSE(SHGetPathFromIDListW(nullptr, nullptr));
    EXPECT_EQ(path_of(nullptr), u"");
}

}  // namespace
