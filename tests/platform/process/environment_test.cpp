#include "tvutil2/platform/process/environment.h"

#include "tvutil2/platform/base/last_error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::u16string value_of(const char16_t* name) {
    char16_t value[64] = {};
    return {value, GetEnvironmentVariableW(name, value, 64)};
}

TEST(Environment, SizeContract) {
    setenv("TVUTIL_TEST_X", "h\xC3\xA4lt", 1);
    char16_t buffer[8];
    for (auto& unit : buffer) unit = u'#';
    EXPECT_EQ(GetEnvironmentVariableW(u"TVUTIL_TEST_X", nullptr, 0), 5U);
    EXPECT_EQ(GetEnvironmentVariableW(u"TVUTIL_TEST_X", buffer, 4), 5U) << "no room for the zero";
    EXPECT_EQ(buffer[0], u'#');
    EXPECT_EQ(GetEnvironmentVariableW(u"TVUTIL_TEST_X", buffer, 5), 4U);
    EXPECT_EQ(std::u16string(buffer), u"h\u00E4lt");
    EXPECT_EQ(buffer[5], u'#');
}

TEST(Environment, NamesExactlyFirstAndWithoutCaseSecond) {
    setenv("tvutil_test_case", "lower", 1);
    EXPECT_EQ(value_of(u"TVUTIL_TEST_CASE"), u"lower");
    setenv("TVUTIL_TEST_CASE", "upper", 1);
    EXPECT_EQ(value_of(u"TVUTIL_TEST_CASE"), u"upper");
    EXPECT_EQ(value_of(u"tvutil_test_case"), u"lower");
}

TEST(Environment, EmptyIsNotMissing) {
    EXPECT_NE(SetEnvironmentVariableW(u"TVUTIL_TEST_EMPTY", u""), FALSE);
    SetLastError(1);
    EXPECT_EQ(value_of(u"TVUTIL_TEST_EMPTY"), u"");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_NE(SetEnvironmentVariableW(u"TVUTIL_TEST_EMPTY", nullptr), FALSE);
    EXPECT_EQ(value_of(u"TVUTIL_TEST_EMPTY"), u"");
    EXPECT_EQ(GetLastError(), ERROR_ENVVAR_NOT_FOUND);
    EXPECT_EQ(SetEnvironmentVariableW(u"TVUTIL_TEST_EMPTY", nullptr), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_ENVVAR_NOT_FOUND);
}

TEST(Environment, NamesAndTextsThatAreRefused) {
    const char16_t lone[] = {0xD800, 0};
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"", u"x"}, {u"A=B", u"x"}, {nullptr, u"x"}, {lone, u"x"}, {u"A", lone}};
    for (const auto& [name, value] : cases) {
        SetLastError(0);
        EXPECT_EQ(SetEnvironmentVariableW(name, value), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

}  // namespace
