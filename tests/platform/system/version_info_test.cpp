#include "tvutil2/platform/system/version_info.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/system/elf_note.h"
#include "tvutil2/platform/system/pe_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/executable_image.h"
#include "tests/support/profile.h"

namespace {

using tests::Bytes;

// "8.1.2.61", or the last error in brackets; or what the parts of the block don't agree on.
std::string version_of(const std::u16string& path) {
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), nullptr);
    if (size == 0) return '[' + std::to_string(GetLastError()) + ']';
    std::vector<char> block(size);
    void* value = nullptr;
    UINT value_size = 0;
    if (GetFileVersionInfoW(path.c_str(), 0, size, block.data()) == FALSE) return "unreadable";
    if (VerQueryValueW(block.data(), u"\\", &value, &value_size) == FALSE) return "no value";
    if (static_cast<char*>(value) + value_size > block.data() + size) return "outside";
    if (value_size < 16) return "short";
    const auto* const words = static_cast<const DWORD*>(value);
    std::string text;
    for (const DWORD word : {words[2], words[3]}) {
        if (!text.empty()) text += '.';
        text += std::to_string(HIWORD(word));
        text += '.';
        text += std::to_string(LOWORD(word));
    }
    return text;
}

std::string version_of_bytes(const std::string& bytes) {
    static const auto file = tests::new_folder() + "/x.exe";
    tests::write_file(file, bytes);
    return version_of(tests::platform_path(file));
}

Bytes changed(Bytes image, std::size_t at, std::uint32_t value) {
    image.put(at, value);
    return image;
}

TEST(VersionInfo, IsReadOutOfBothKindsOfExecutables) {
    const auto wide = [](Bytes pe) {  // the same with 64 bits: the table of directories moves by 16
        pe.put(88, std::uint16_t{0x20B});
        pe.put(88 + 108, std::uint32_t{16});
        pe.put(88 + 112 + 16, std::uint32_t{0x1000});
        return pe;
    };
    const auto aligned = [](Bytes elf) {  // notes padded to eight bytes
        elf.put(112, std::uint64_t{8});
        elf.put_text(120, std::string(100, '\0'));
        const std::uint32_t ours[] = {8, 8, 1};
        elf.put(120, ours);
        elf.put_text(132, std::string_view("tvutil2\0\0\0\0\0", 12));
        elf.put(144, std::uint64_t{0x003D000200010008});
        return elf;
    };
    const auto pe = tests::pe_image();
    const auto elf = tests::elf_image();
    using tests::kPeRoot;
    const struct {
        Bytes image;
        std::string answer;
    } cases[] = {
        {pe, "8.1.2.61"},
        {wide(pe), "8.1.2.61"},
        {elf, "8.1.2.61"},
        {aligned(elf), "8.1.2.61"},
        {tests::pe_image(0), "no value"},
        {tests::pe_image(53), "no value"},  // more than the block has
        {tests::pe_image(52, 60), "no value"},
        {tests::pe_image(8), "short"},
        {changed(pe, tests::kPeBlock + 6, 'X'), "no value"},
        {changed(pe, 88 + 92, 2), "[1812]"},  // no directory of resources
        {changed(pe, 88 + 96 + 16, 0), "[1812]"},
        {changed(pe, kPeRoot + 16, 15), "[1813]"},  // another type
        {changed(pe, kPeRoot + 24 + 16, 2), "[1814]"},
        {changed(pe, kPeRoot + 20, 0x18), "[193]"},        // data where a directory should be
        {changed(pe, kPeRoot + 44, 0x80000000), "[193]"},  // a circle
        {changed(pe, kPeRoot + 68, 0x80000000), "[193]"},
        {changed(pe, kPeRoot + 76, 0xFFFFFFFF), "[193]"},
        {changed(pe, 88 + 96 + 16, 0xFFFFFFFF), "[193]"},
        {changed(pe, 60, 0xFFFFFFFF), "[193]"},
        {changed(elf, 140, 7), "[1813]"},
        {changed(elf, 148, 2), "[1813]"},
        {changed(elf, 120, 0xFFFFFFFF), "[1813]"},
        {changed(elf, 98, 0xFFFF), "[193]"},
        {changed(elf, 76, 0xFFFFFFFF), "[193]"},
        {changed(elf, 56, 0xFFFF), "[193]"},
        {changed(elf, 4, 0x00010202), "[193]"},  // big endian
        {Bytes(), "[193]"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(version_of_bytes(cases[i].image.all()), cases[i].answer) << "case " << i;
    }
}

// Whatever is missing or wrong, the answer is inside the file or there is none; the sanitizers see
// to the rest.
TEST(VersionInfo, SurvivesEveryCutAndEveryBadByte) {
    const auto read = [](const std::string& bytes) {
        const auto image = std::make_unique<std::byte[]>(bytes.size());  // of exactly its size
        std::memcpy(image.get(), bytes.data(), bytes.size());
        const tvutil2::MemoryBytes file({image.get(), bytes.size()});
        const auto block = tvutil2::pe_resource(file, 16, 1, tests::kPeBlockSize);
        return (block && block->size() == tests::kPeBlockSize) || tvutil2::elf_version(file);
    };
    for (const auto& whole : {tests::pe_image().all(), tests::elf_image().all()}) {
        EXPECT_TRUE(read(whole));
        const auto needed = std::min(whole.size(), tests::kPeBlock + tests::kPeBlockSize);
        for (std::size_t size = 0; size < needed; ++size) {
            EXPECT_FALSE(read(whole.substr(0, size))) << size;
        }
        for (std::size_t at = 0; at < whole.size(); ++at) {
            for (const char value : {'\xFF', '\x7F', '\0'}) {
                auto damaged = whole;
                damaged[at] = value;
                read(damaged);
            }
        }
    }
}

TEST(VersionInfo, IsReadFromWhatTheBuildMade) {
    char16_t own[MAX_PATH];
    ASSERT_NE(GetModuleFileNameW(tvutil2::library_instance(), own, MAX_PATH), 0U);
    EXPECT_EQ(version_of(own), "8.0.0.0");
    EXPECT_EQ(version_of(tests::platform_path(TESTS_STARTED "/identify.exe")), "8.0.0.61");
    EXPECT_EQ(version_of(tests::platform_path(TESTS_STARTED "/launched.exe")), "[1813]");
}

TEST(VersionInfo, TellsWhatIsNoFile) {
    const auto folder = tests::new_folder();
    EXPECT_EQ(version_of(tests::platform_path(folder)), "[5]");
    EXPECT_EQ(version_of(tests::platform_path(folder + "/none")), "[2]");
    EXPECT_EQ(version_of(tests::platform_path(folder + "/none/x")), "[3]");
    EXPECT_EQ(version_of(u""), "[3]");
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(version_of(tests::platform_path(folder + "/pipe")), "[193]");
}

// A block that is read into less room than it has ends there for every query.
TEST(VersionInfo, KeepsQueriesInsideTheirBlock) {
    const auto file = tests::new_folder() + "/x.exe";
    tests::write_file(file, tests::pe_image().all());
    for (DWORD size = 2; size <= tests::kPeBlockSize; ++size) {
        const auto block = std::make_unique<char[]>(size);  // of exactly its size
        ASSERT_NE(GetFileVersionInfoW(tests::platform_path(file).c_str(), 0, size, block.get()), 0);
        void* value = nullptr;
        UINT value_size = 0;
        EXPECT_EQ(VerQueryValueW(block.get(), u"\\", &value, &value_size) != FALSE,
                  size == tests::kPeBlockSize);
        EXPECT_EQ(VerQueryValueW(block.get(), u"\\VarFileInfo", &value, &value_size), FALSE);
    }
}

}  // namespace
