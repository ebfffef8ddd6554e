#include "tvutil2/platform/registry/reg_text.h"

#include <gtest/gtest.h>

namespace {

using tvutil2::RegTextKey;

constexpr const char* kHead = "Windows Registry Editor Version 5.00\r\n\r\n[HKCU\\Test]\r\n";

std::vector<RegTextKey> parsed(const std::string& bytes) {
    std::vector<RegTextKey> keys;
    const auto error = tvutil2::parse_reg_text(bytes, keys);
    if (error) ADD_FAILURE() << "line " << error->line << ": " << error->what;
    return keys;
}

std::string written(const std::vector<RegTextKey>& keys) {
    std::string bytes;
    EXPECT_TRUE(tvutil2::write_reg_text(keys, bytes));
    return bytes;
}

std::vector<RegTextKey> tree(const std::u16string& path) {
    std::vector<RegTextKey> keys;
    EXPECT_EQ(tvutil2::read_reg_tree(HKEY_CURRENT_USER, path, keys), LONG{ERROR_SUCCESS});
    return keys;
}

LONG apply(const std::vector<RegTextKey>& keys) {
    std::size_t failed = 0;
    return tvutil2::apply_reg_text(keys, failed);
}

TEST(RegText, ReadsValues) {
    const std::string text("t\0\0\0", 4);
    const struct {
        std::string line;
        std::u16string name;
        DWORD type;
        std::string data;
    } cases[] = {
        {"\"n\"=\"t\"", u"n", REG_SZ, text},
        {"@=\"t\" ; a comment", u"", REG_SZ, text},
        {"  \"n\" = \"t\"\t", u"n", REG_SZ, text},
        {R"("a\\b\"c"="\\")", u"a\\b\"c", REG_SZ, std::string("\\\0\0\0", 4)},
        {"\"n\"=\"\r\n\"", u"n", REG_SZ, std::string("\r\0\n\0\0\0", 6)},
        {"\"n\"=DWORD:1aB", u"n", REG_DWORD, std::string("\xab\x01\0\0", 4)},
        {"\"n\"=hex:", u"n", REG_BINARY, ""},
        {"\"n\"=hex:1,fF", u"n", REG_BINARY, "\x01\xff"},
        {"\"n\"=hex:01,\\\r\n  02,\\ \n03", u"n", REG_BINARY, "\x01\x02\x03"},
        {"\"n\"=hex:\\\r\n  01", u"n", REG_BINARY, "\x01"},
        {"\"n\"=hex(7):41,00", u"n", REG_MULTI_SZ, std::string("A\0", 2)},
        {"\"n\"=hex(ffffffff):41", u"n", 0xFFFFFFFF, "A"},
        {"\"\xc3\xa4\"=hex(0):", u"\u00e4", REG_NONE, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const auto keys = parsed(kHead + c.line);
        ASSERT_EQ(keys.size(), 1U);
        ASSERT_EQ(keys[0].values.size(), 1U);
        const auto& value = keys[0].values[0];
        EXPECT_EQ(value.name, c.name);
        EXPECT_EQ(value.type, c.type);
        EXPECT_EQ(std::string(value.data.begin(), value.data.end()), c.data);
    }
}

TEST(RegText, RefusesWithTheLine) {
    const std::string long_part(256, 'k');
    const struct {
        std::string text;
        std::size_t line;
    } cases[] = {
        {"", 1},
        {"REGEDIT4\n", 1},
        {"\n; c\nWindows Registry Editor Version 5.001", 3},
        {"\xff\xfeW", 1},
        {"\xc3", 1},
        {"Windows Registry Editor Version 5.00\n\"n\"=\"t\"", 2},
        {std::string(kHead) + "n=\"t\"", 4},
        {std::string(kHead) + "\"n\"\"t\"", 4},
        {std::string(kHead) + "\"n\"=t", 4},
        {std::string(kHead) + "\"n\"=\"a\nb", 4},
        {std::string(kHead) + "\"n\"=\"a\\n\"", 4},
        {std::string(kHead) + "\"n\"=\"a\"b", 4},
        {std::string(kHead) + "\"n\"=--", 4},
        {std::string(kHead) + "\"n\"=dword:", 4},
        {std::string(kHead) + "\"n\"=dword:123456789", 4},
        {std::string(kHead) + "\"n\"=hex:01,", 4},
        {std::string(kHead) + "\"n\"=hex:100", 4},
        {std::string(kHead) + "\"n\"=hex:01,\\\n02,\\\nx", 6},
        {std::string(kHead) + "\"n\"=hex():", 4},
        {std::string(kHead) + "\"n\"=hex(1:", 4},
        {std::string(kHead) + "\"" + std::string(1, '\0') + "\"=-", 4},
        {std::string(kHead) + "\"" + std::string(16384, 'n') + "\"=-", 4},
        {std::string(kHead) + "[HKCU\\a", 4},
        {std::string(kHead) + "[HKCU\\a] b", 4},
        {std::string(kHead) + "[HKCU\\a\\\\b]", 4},
        {std::string(kHead) + "[HKCU\\" + long_part + "]", 4},
        {std::string(kHead) + "[HKEY_USERS\\a]", 4},
        {std::string(kHead) + "[-HKCU]", 4},
        {std::string(kHead) + "[-HKCU\\a]\n\"n\"=-", 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        std::vector<RegTextKey> keys;
        const auto error = tvutil2::parse_reg_text(c.text, keys);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->line, c.line) << error->what;
        EXPECT_TRUE(keys.empty());
    }
}

TEST(RegText, GivesBackTheSameTree) {
    const auto changes = parsed(
        std::string(kHead) +
        "@=\"d\"\n\"dw\"=dword:2a\n\"odd\"=hex(1):41\n\"nul\"=hex(1):41,00,00,00,42,00,00,00\n"
        "\"bare\"=hex(1):41,00\n\"short\"=hex(4):01\n\"empty\"=hex(1):\n\"q\\\\\\\"\"="
        "\"\\\"\r\n\"\n"
        "\"surrogate\"=hex(1):00,d8,00,00\n[HKCU\\Test\\a]b]\n\"x\"=hex(12345):00\n[HKCU\\Test\\-"
        "]");
    ASSERT_EQ(apply(changes), LONG{ERROR_SUCCESS});
    const auto before = tree(u"Test");
    ASSERT_EQ(before.size(), 3U);
    const auto bytes = written(before);
    EXPECT_TRUE(bytes.starts_with("\xff\xfe"));

    ASSERT_EQ(apply(parsed(std::string("Windows Registry Editor Version 5.00\n[-HKCU\\test]"))),
              LONG{ERROR_SUCCESS});
    std::vector<RegTextKey> gone;
    EXPECT_EQ(tvutil2::read_reg_tree(HKEY_CURRENT_USER, u"Test", gone), LONG{ERROR_FILE_NOT_FOUND});

    ASSERT_EQ(apply(parsed(bytes)), LONG{ERROR_SUCCESS});
    const auto after = tree(u"Test");
    EXPECT_EQ(written(after), bytes);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) {
        ASSERT_EQ(after[i].values.size(), before[i].values.size());
        for (std::size_t v = 0; v < after[i].values.size(); ++v) {
            EXPECT_EQ(after[i].values[v].type, before[i].values[v].type);
            EXPECT_EQ(after[i].values[v].data, before[i].values[v].data);
        }
    }
}

TEST(RegText, MakesKeysDeeperThanOneCallAllows) {
    std::string name = "HKCU";
    for (DWORD level = 0; level < 3 * REG_MAX_NEW_LEVELS; ++level) name += "\\k";
    ASSERT_EQ(apply(parsed("Windows Registry Editor Version 5.00\n[" + name + "]\n@=\"deep\"")),
              LONG{ERROR_SUCCESS});
    const auto keys = tree(u"k");
    ASSERT_EQ(keys.size(), 3 * REG_MAX_NEW_LEVELS);
    EXPECT_EQ(keys.back().values.size(), 1U);
}

TEST(RegText, StopsAtTheFirstError) {
    std::string deep = "HKCU";
    for (DWORD level = 0; level < REG_MAX_DEPTH; ++level) deep += "\\k";
    HKEY root = nullptr;
    std::u16string path;
    EXPECT_FALSE(
        tvutil2::parse_reg_key_name(std::u16string(deep.begin(), deep.end()) + u"\\k", root, path));
    // A key of no root stands for any that the registry refuses.
    std::size_t failed = 0;
    const std::vector<RegTextKey> keys{{HKEY_CURRENT_USER, u"first", false, {}},
                                       {nullptr, u"second", false, {}},
                                       {HKEY_CURRENT_USER, u"third", false, {}}};
    EXPECT_EQ(tvutil2::apply_reg_text(keys, failed), LONG{ERROR_INVALID_HANDLE});
    EXPECT_EQ(failed, 1U);
    EXPECT_EQ(tree(u"").size(), 2U);
}

TEST(RegText, CannotHoldALineBreakInAKey) {
    std::string bytes = "before";
    EXPECT_FALSE(tvutil2::write_reg_text({{HKEY_CURRENT_USER, u"a\nb", false, {}}}, bytes));
    EXPECT_TRUE(bytes.empty());
}

}  // namespace
