#include "tvutil2/platform/resource/resource.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "tests/support/resource_image.h"

namespace {

using tests::ResourceImage;
using tvutil2::add_module_resources;

const HMODULE kModule = reinterpret_cast<HMODULE>(std::uintptr_t{0x1234});

// Text of a resource, with its size checked against what it must be.
std::string text_of(HRSRC found, HMODULE module = kModule) {
    if (found == nullptr) return "error " + std::to_string(GetLastError());
    const auto* bytes = LockResource(LoadResource(module, found));
    return {static_cast<const char*>(bytes), SizeofResource(module, found)};
}

class Resources : public testing::Test {
  protected:
    // Added from memory of exactly its size, so that a sanitizer sees a read outside.
    bool add(const std::string& bytes) {
        auto& kept = m_images.emplace_back(std::make_unique<char[]>(bytes.size()));
        std::copy(bytes.begin(), bytes.end(), kept.get());
        return add_module_resources(kModule, kept.get(), bytes.size());
    }
    ~Resources() override { tvutil2::remove_module_resources(kModule); }

  private:
    std::vector<std::unique_ptr<char[]>> m_images;
};

TEST_F(Resources, AreFoundByTextOrNumberWithoutRegardToCase) {
    ResourceImage image;
    image.add(u"#5", u"#200", 0x409, "by number");
    image.add(u"#5", u"About", 0x409, "by text");
    image.add(u"#5", u"\u00DCber", 0x409, "umlaut");
    image.add(u"Custom", u"#1", 0x409, "own type");
    image.add(u"#5", u"About2", 0x409, "longer");
    ASSERT_TRUE(add(image.bytes()));

    const struct {
        const char16_t* type;
        const char16_t* name;
        const char* text;
    } cases[] = {
        {RT_DIALOG, MAKEINTRESOURCEW(200), "by number"},
        {u"#5", u"#200", "by number"},
        {RT_DIALOG, u"ABOUT", "by text"},
        {RT_DIALOG, u"about2", "longer"},
        {RT_DIALOG, u"\u00FCBER", "umlaut"},
        {u"CUSTOM", MAKEINTRESOURCEW(1), "own type"},
        {RT_MENU, MAKEINTRESOURCEW(200), "error 1813"},
        {u"Other", MAKEINTRESOURCEW(1), "error 1813"},
        {RT_DIALOG, u"200", "error 1814"},
        {RT_DIALOG, u"#65736", "error 1814"},  // 200 in its low 16 bits
        {RT_DIALOG, u"#", "error 1814"},
        {RT_DIALOG, u"Abou", "error 1814"},
        {RT_DIALOG, u"", "error 1814"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(text_of(FindResourceW(kModule, c.name, c.type)), c.text);
    }
    EXPECT_EQ(text_of(FindResourceW(reinterpret_cast<HMODULE>(std::uintptr_t{0x9999}), u"a", u"b")),
              "error 1812");
}

// Names of one type that exist in these languages; which of them each look-up finds.
TEST_F(Resources, FallBackFromLanguageToLanguage) {
    setenv("LC_ALL", "fr_FR.UTF-8", 1);
    const struct {
        std::vector<WORD> languages;
        WORD asked;  // with thread language 0x0807
        int found;   // -1: none
    } cases[] = {
        {{0x0407, 0x0807, 0x0007, 0}, 0x0807, 0x0807},
        {{0x0407, 0x0007, 0}, 0x0807, 0x0007},
        {{0x0407, 0x0000}, 0x0807, 0},
        {{0x0407, 0x0409}, 0x0807, -1},
        {{0x0407, 0x0807, 0x0007, 0}, 0, 0x0807},
        {{0x0407, 0x0007, 0x040C}, 0, 0x0007},
        {{0x0407, 0x0409, 0x040C, 0}, 0, 0x040C},
        {{0x0407, 0x0409, 0x080C, 0}, 0, 0},
        {{0x0407, 0x0409, 0x080C}, 0, 0x0409},
        {{0x080C, 0x0411, 0x0407}, 0, 0x0407},
        {{0x0807, 0x040C}, 0x0800, 0x040C},
        {{0x0807, 0x0C0A}, 0x0400, 0x0807},
    };
    ResourceImage image;
    WORD name = 0;
    for (const auto& c : cases) {
        ++name;
        for (const auto language : c.languages) {
            const std::u16string number{u'#', static_cast<char16_t>(u'0' + name / 10),
                                        static_cast<char16_t>(u'0' + name % 10)};
            image.add(u"#10", number, language, std::to_string(language));
        }
    }
    ASSERT_TRUE(add(image.bytes()));
    SetThreadLocale(0x0807);
    name = 0;
    for (const auto& c : cases) {
        const auto expected = c.found < 0 ? "error 1815" : std::to_string(c.found);
        EXPECT_EQ(text_of(FindResourceExW(kModule, MAKEINTRESOURCEW(10), MAKEINTRESOURCEW(++name),
                                          c.asked)),
                  expected)
            << "case " << name;
    }
}

TEST_F(Resources, RefuseAMalformedImageAsAWhole) {
    ResourceImage image;
    image.add(u"#6", u"Name", 0x409, "data of it");
    const auto& good = image.bytes();
    const auto changed = [&](std::size_t offset, DWORD value) {
        auto bytes = good;
        std::memcpy(bytes.data() + offset, &value, sizeof value);
        return bytes;
    };
    constexpr std::size_t kSecond = 32;  // behind the empty resource
    const std::pair<const char*, std::string> cases[] = {
        {"no marker", good.substr(kSecond)},
        {"empty", ""},
        {"data larger than the image", changed(kSecond, 11 + 4)},
        {"data of 4 GiB", changed(kSecond, 0xFFFFFFFF)},
        {"header of 4 GiB", changed(kSecond + 4, 0xFFFFFFFC)},
        {"header of nothing", changed(kSecond + 4, 0)},
        {"header that isn't aligned", changed(kSecond + 4, 38)},
        {"header too short for its names", changed(kSecond + 4, 16)},
        {"header with something behind its end", changed(kSecond + 4, 44)},
        {"name without an end", changed(kSecond + 20, 0x00410041)},
        {"a marker with data", changed(0, 4)},
    };
    for (const auto& [what, bytes] : cases) {
        EXPECT_FALSE(add(bytes)) << what;
        EXPECT_EQ(GetLastError(), ERROR_BAD_FORMAT) << what;
        EXPECT_EQ(text_of(FindResourceW(kModule, u"Name", RT_STRING)), "error 1812") << what;
    }
    for (std::size_t size = 0; size < good.size(); ++size) {
        // The marker alone is an image without resources; the last padding may be missing.
        const bool is_whole = size == kSecond || size >= good.size() - 2;
        EXPECT_EQ(add(good.substr(0, size)), is_whole) << size;
    }
    EXPECT_FALSE(add_module_resources(kModule, good.data() + 2, good.size() - 2));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(Resources, GiveStringsOfBlocks) {
    ResourceImage image;
    image.add(u"#6", u"#2", 0x409, tests::string_block({u"sixteen", u"", u"eighteen"}));
    const std::string cut_off("\x01\x00z\x00\x05\x00xx", 8);  // the second runs out of the block
    image.add(u"#6", u"#3", 0x409, cut_off);
    image.add(u"#6", u"#4", 0x409, "");
    ASSERT_TRUE(add(image.bytes()));
    const struct {
        UINT id;
        int size;
        int length;
        std::u16string text;
    } cases[] = {
        {16, 20, 7, u"sixteen"},
        {18, 20, 8, u"eighteen"},
        {18, 5, 4, u"eigh"},
        {18, 1, 0, u""},
        {17, 20, 0, u"before"},
        {31, 20, 0, u"before"},
        {32, 20, 1, u"z"},
        {33, 20, 0, u"before"},
        {34, 20, 0, u"before"},
        {48, 20, 0, u"before"},
        {64, 20, 0, u"before"},
        {0x10010, 20, 7, u"sixteen"},
        {0xFFFFFFFF, 20, 0, u"before"},
    };
    for (const auto& c : cases) {
        char16_t text[20] = u"before";
        EXPECT_EQ(LoadStringW(kModule, c.id, text, c.size), c.length) << c.id;
        EXPECT_EQ(text, c.text) << c.id;
    }
    const char16_t* inside = nullptr;
    EXPECT_EQ(LoadStringW(kModule, 18, reinterpret_cast<char16_t*>(&inside), 0), 8);
    EXPECT_EQ(std::u16string_view(inside, 8), u"eighteen");
}

TEST_F(Resources, GiveNothingForAHandleOfAnother) {
    ResourceImage image;
    image.add(u"#10", u"#1", 0, "one");
    image.add(u"#10", u"#2", 0, "two");
    ASSERT_TRUE(add(image.bytes()));
    const auto found = FindResourceW(kModule, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10));
    const auto inside = reinterpret_cast<HRSRC>(reinterpret_cast<std::uintptr_t>(found) + 8);
    for (const auto handle : {HRSRC{}, inside, reinterpret_cast<HRSRC>(this)}) {
        EXPECT_EQ(LoadResource(kModule, handle), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(SizeofResource(kModule, handle), 0U);
    }
    EXPECT_EQ(LoadResource(nullptr, found), nullptr);
}

TEST_F(Resources, StayWhatTheyWereWhenMoreAreAdded) {
    ResourceImage first;
    first.add(u"#10", u"#1", 0, "first");
    ASSERT_TRUE(add(first.bytes()));
    const auto found = FindResourceW(kModule, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10));
    ResourceImage second;
    second.add(u"#10", u"#1", 0, "replaced");
    second.add(u"#10", u"#0", 0, "second");
    ASSERT_TRUE(add(second.bytes()));
    EXPECT_EQ(text_of(found), "first");
    EXPECT_EQ(FindResourceW(kModule, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10)), found);
    EXPECT_EQ(text_of(FindResourceW(kModule, MAKEINTRESOURCEW(0), MAKEINTRESOURCEW(10))), "second");
}

TEST_F(Resources, AreReadByManyThreadsWhileTheFirstLookUpIndexesThem) {
    const auto own = tvutil2::library_instance();
    constexpr int kThreads = 8;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            ResourceImage image;
            image.add(u"#10", u"#1", 0, "own");
            const auto module = reinterpret_cast<HMODULE>(std::uintptr_t{0x5000} + unsigned(i));
            for (int round = 0; round < 50; ++round) {
                char16_t text[300];
                EXPECT_GT(LoadStringW(own, 14107, text, 300), 0);
                EXPECT_TRUE(
                    add_module_resources(module, image.bytes().data(), image.bytes().size()));
                EXPECT_EQ(text_of(FindResourceW(module, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10)),
                                  module),
                          "own");
                tvutil2::remove_module_resources(module);
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

TEST_F(Resources, OfTheExecutableAreThoseOfNull) {
    ResourceImage image;
    image.add(u"#10", u"#1", 0, "mine");
    ASSERT_TRUE(add_module_resources(nullptr, image.bytes().data(), image.bytes().size()));
    const auto executable = GetModuleHandleW(nullptr);
    EXPECT_EQ(
        text_of(FindResourceW(executable, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10)), executable),
        "mine");
    tvutil2::remove_module_resources(nullptr);
    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(10)), nullptr);
}

}  // namespace
