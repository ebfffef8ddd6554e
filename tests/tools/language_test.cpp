// The language of a product, as a person chooses it from a shell.
#include <gtest/gtest.h>

#include "tests/tools/tvutil.h"

namespace {

TEST(Tvutil, ShowsAndSetsTheLanguageOfAProduct) {
    const std::string key = "\\Software\\Tolvarine\\Pelrin\\8\\Language";
    const std::vector<std::string> show = {"lang", "show", "Pelrin"};
    const std::string german = "language=0x0407\nname=German\n";
    tests::expect_answers(
        "",
        {
            {show, "", 0, "language=0x0409\nname=English\nfrom=system\n"},
            {{"lang", "set", "Pelrin", "--keep"}, "", 1},
            {{"lang", "set", "Pelrin", "german", "--temporary"}, "", 0},
            {show, "", 0, "language=0x0409\nname=English\nfrom=system\ntemporary=0x0407\n"},
            {{"lang", "set", "Pelrin", "--keep"}, "", 0},
            {show, "", 0, german + "from=user\nstored=0x0407\n"},
            // The machine's later word is shown, and stays the machine's until the product starts.
            {{"reg", "add", "HKLM" + key, "User", "0x807", "--type", "dword"}, "", 0},
            {show, "", 0, german + "from=machine\nstored=0x0807\n"},
            {show, "", 0, german + "from=machine\nstored=0x0807\n"},
            {{"lang", "set", "Pelrin", "zh-HK"}, "", 0},
            {show, "", 0, "language=0x0C04\nname=\nfrom=user\nstored=0x0C04\n"},
            {{"lang", "set", "Pelrin", "nl"}, "", 2},
            {{"lang", "set", "Pelrin", "Klingon"}, "", 2},
            {{"lang", "set", "Pelrin"}, "", 2},
            {{"lang", "set", "Pelrin", "de", "--keep"}, "", 2},
        });
    EXPECT_EQ(tests::tvutil({"lang", "list"}).out, tests::tvutil({"string", "languages"}).out);
}

}  // namespace
