#include "tvutil2/platform/window/common_dialogs/file_rows.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/common_dialogs/file_texts.h"
#include "tvutil2/platform/window/common_dialogs/folder_mounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using tvutil2::FileColumn;
using tvutil2::FolderEntry;

TEST(FileRowsTest, MergePartsInAnyOrder) {
    // Three parts, each in the order of names, as they are read.
    std::vector<std::vector<FolderEntry>> parts(3);
    for (unsigned i = 0; i < 300; ++i) {
        FolderEntry entry;
        entry.name = u"f" + std::u16string(1, static_cast<char16_t>(u'0' + i % 10)) +
                     std::u16string(i / 10, u'x');
        entry.size = i * 7919 % 300;
        entry.key = tvutil2::name_order_key(entry.name);
        entry.is_folder = i % 50 == 0;
        parts[i % 3].push_back(std::move(entry));
    }
    for (const auto column : {FileColumn::name, FileColumn::size}) {
        for (const bool is_descending : {false, true}) {
            tvutil2::FileRows rows;
            rows.order_by({column, is_descending});
            for (auto part : parts) {
                std::ranges::sort(part, {}, &FolderEntry::key);
                rows.add(std::move(part));
            }
            ASSERT_EQ(rows.count(), 300);
            for (int i = 1; i < rows.count(); ++i) {
                const auto& a = rows.at(i - 1);
                const auto& b = rows.at(i);
                if (a.is_folder != b.is_folder) {
                    EXPECT_TRUE(a.is_folder);
                    continue;
                }
                const bool is_less = column == FileColumn::size ? a.size < b.size : a.key < b.key;
                EXPECT_EQ(is_less, !is_descending) << i;
            }
        }
    }
}

TEST(FileRowsTest, SayHowLargeFilesAre) {
    const struct {
        std::uint64_t bytes;
        LANGID language;
        const char16_t* text;
    } cases[] = {{0, 0x0409,
                  u"0\xA0"
                  u"B"},
                 {1023, 0x0409,
                  u"1023\xA0"
                  u"B"},
                 {1536, 0x0407, u"1,5\xA0KB"},
                 {10 * 1024 + 511, 0x0409, u"10\xA0KB"},
                 {1024 * 1024 - 1, 0x040C, u"1,0\xA0Mo"},
                 {std::uint64_t{1} << 60, 0x0409, u"1048576\xA0TB"}};
    for (const auto& each : cases) {
        EXPECT_EQ(tvutil2::size_text(each.bytes, each.language), each.text) << each.bytes;
    }
}

TEST(FileRowsTest, FindMountsThatPeopleUse) {
    const auto* const lines =
        "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "30 22 0:5 / /media/a\\040b rw shared:1 - vfat /dev/sdb rw\n"
        "31 22 0:6 / /srv/far rw - nfs4 host:/far rw\n"
        "31 22 0:6 / /srv/far rw - nfs4 host:/far rw\n"
        "32 22 0:7 / /proc rw - proc proc rw\n"
        "34 22 0:8 / /far rw - fuse.something x rw\n"
        "cut off\n33 22";
    EXPECT_EQ(tvutil2::mounts_of_use(lines), (std::vector<std::string>{"/media/a b", "/srv/far"}));
    // Those that may never answer.
    const std::set<std::string> far{"far"};
    EXPECT_EQ(tvutil2::asking_mounts(lines, "/srv"), far);
    EXPECT_EQ(tvutil2::asking_mounts(lines, ""), far);
    EXPECT_TRUE(tvutil2::asking_mounts(lines, "/media").empty());
    EXPECT_TRUE(tvutil2::asking_mounts(lines, "/sr").empty());
}

}  // namespace
