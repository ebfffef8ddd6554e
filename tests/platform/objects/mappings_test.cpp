#include "tvutil2/platform/objects/mappings.h"

#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

HANDLE memory(DWORD size, const char16_t* name, DWORD protection = PAGE_READWRITE) {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, protection, 0, size, name);
}
char* view_of(HANDLE mapping, DWORD access = FILE_MAP_WRITE, std::size_t bytes = 0,
              DWORD offset = 0) {
    return static_cast<char*>(MapViewOfFile(mapping, access, 0, offset, bytes));
}

TEST(Mappings, ProcessesShareANamedOne) {
    auto* const mapping = memory(256, u"Global\\block");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    auto* const view = view_of(mapping, FILE_MAP_WRITE, 256);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::string(view, 256), std::string(256, 0));
    std::strcpy(view, "from the parent");
    EXPECT_EQ(tests::in_child([&] {
                  CloseHandle(mapping);
                  UnmapViewOfFile(view);
                  auto* const own = memory(9000, u"Global\\block");
                  if (GetLastError() != ERROR_ALREADY_EXISTS) return 1;
                  if (view_of(own, FILE_MAP_READ, 257) != nullptr) return 2;
                  auto* const seen = view_of(own);
                  if (std::strcmp(seen, "from the parent") != 0) return 3;
                  std::strcpy(seen, "from the child");
                  return 0;
              }),
              0);
    EXPECT_STREQ(view, "from the child");
    // The view keeps mapping and name.
    EXPECT_TRUE(CloseHandle(mapping));
    auto* const again = OpenFileMappingW(FILE_MAP_WRITE, FALSE, u"Global\\block");
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(CreateEventW(nullptr, FALSE, FALSE, u"Global\\block"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(WaitForSingleObject(again, 0), WAIT_FAILED);
    CloseHandle(again);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_ADDRESS);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_WRITE, FALSE, u"Global\\block"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST(Mappings, WrongArgumentsAreRefused) {
    EXPECT_EQ(memory(0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(memory(10, nullptr, 0x40), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0xFFFFFFFF, 0, nullptr),
        nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    auto* const mapping = memory(100000, nullptr, PAGE_READONLY | SEC_COMMIT);
    const struct {
        DWORD access, offset;
        std::size_t bytes;
        DWORD error;
    } wrong[] = {{0, 0, 0, ERROR_INVALID_PARAMETER},
                 {FILE_MAP_READ, 4096, 0, ERROR_MAPPED_ALIGNMENT},
                 {FILE_MAP_READ, 131072, 0, ERROR_ACCESS_DENIED},
                 {FILE_MAP_READ, 65536, 40000, ERROR_ACCESS_DENIED},
                 {FILE_MAP_WRITE, 0, 0, ERROR_ACCESS_DENIED}};
    for (const auto& [access, offset, bytes, error] : wrong) {
        EXPECT_EQ(view_of(mapping, access, bytes, offset), nullptr);
        EXPECT_EQ(GetLastError(), error);
    }
    auto* const end = view_of(mapping, FILE_MAP_READ, 0, 65536);
    EXPECT_EQ(end[100000 - 65536 - 1], 0);
    UnmapViewOfFile(end);
    CloseHandle(mapping);
    EXPECT_EQ(view_of(mapping), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Mappings, FilesAreSeenGrownAndCopied) {
    const auto path = tests::new_folder() + "/file";
    tests::write_file(path, "content");
    const auto open = [&](DWORD access) {
        return CreateFileW(tests::platform_path(path).c_str(), access, 0, nullptr, OPEN_EXISTING, 0,
                           nullptr);
    };
    auto* file = open(GENERIC_READ);
    EXPECT_EQ(CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 8, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    auto* mapping = CreateFileMappingW(file, nullptr, PAGE_WRITECOPY, 0, 0, nullptr);
    auto* view = view_of(mapping, FILE_MAP_COPY);
    EXPECT_EQ(std::string(view, 7), "content");
    view[0] = 'C';
    UnmapViewOfFile(view);
    CloseHandle(mapping);
    CloseHandle(file);

    file = open(GENERIC_READ | GENERIC_WRITE);
    mapping = CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, 9, u"file");
    CloseHandle(file);
    file = open(GENERIC_READ);  // the mapping doesn't keep it from others
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    EXPECT_EQ(tests::in_child([&] {
                  CloseHandle(mapping);
                  auto* const own = OpenFileMappingW(FILE_MAP_WRITE, FALSE, u"file");
                  auto* const seen = view_of(own);
                  seen[8] = '!';
                  return 0;
              }),
              0);
    CloseHandle(mapping);
    EXPECT_EQ(tests::read_file(path), std::string("content\0!", 9));
    tests::write_file(path, "");
    file = open(GENERIC_READ);
    EXPECT_EQ(CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_INVALID);
    CloseHandle(file);
}

}  // namespace
