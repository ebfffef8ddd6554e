// What holds for every command, and what is told about all of them.
#include <gtest/gtest.h>

#include <iostream>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/profile.h"
#include "tests/tools/tvutil.h"

namespace {

using tests::tvutil;

std::vector<std::vector<std::string>> all_commands() {
    std::vector<std::vector<std::string>> list;
    std::istringstream manual(tvutil({"manual"}).out);
    const std::string start = ".SS tvutil ";
    for (std::string line; std::getline(manual, line);) {
        if (!line.starts_with(start)) continue;
        std::string path;
        for (const char c : line.substr(start.size())) {
            if (c != '\\') path += c;
        }
        std::istringstream words(path);
        auto& command = list.emplace_back();
        for (std::string word; words >> word;) command.push_back(word);
    }
    return list;
}

TEST(TvutilTree, EveryCommandHasAnExampleAndNamesWhatIsWrong) {
    const auto commands = all_commands();
    ASSERT_GT(commands.size(), 50U);
    std::string script;
    for (auto command : commands) {
        std::string path = "tvutil";
        for (const auto& word : command) path += ' ' + word;
        SCOPED_TRACE(path);
        auto asked = command;
        asked.emplace_back("--help");
        const auto help = tvutil(asked);
        EXPECT_EQ(help.code, 0);
        const auto example = help.out.find("Example:\n  ");
        ASSERT_NE(example, std::string::npos) << help.out;
        EXPECT_NE(help.out.find(path, example), std::string::npos) << help.out;
        const auto line = help.out.find('\n', example) + 1;
        script += help.out.substr(line, help.out.find('\n', line) + 1 - line);
        command.emplace_back("--hepl");
        const auto wrong = tvutil(command);
        EXPECT_EQ(wrong.code, 2);
        EXPECT_TRUE(wrong.err.starts_with("tvutil: " + path.substr(7) + ": no option \"--hepl\""))
            << wrong.err;
        EXPECT_NE(wrong.err.find("did you mean \"--help\"?"), std::string::npos) << wrong.err;
    }
    const auto read_by_shell = tests::run("/bin/bash", {"-n", "-c", script});
    EXPECT_EQ(read_by_shell.code, 0) << read_by_shell.err;
}

TEST(TvutilTree, NamesTheNearestWord) {
    const struct {
        std::vector<std::string> arguments;
        std::string said;
    } cases[] = {
        {{"rge"}, "tvutil: no command \"rge\"; did you mean \"reg\"?"},
        {{"ini", "gett", "f"}, "tvutil: ini: no command \"gett\"; did you mean \"get\"?"},
        {{"reg", "qeury", "HKCU"}, "did you mean \"query\"?"},
        {{"reg", "query", "HKCU", "--recrusive"}, "did you mean \"--recursive\"?"},
        {{"ini", "list", "--jsn=1", "f"}, "no option \"--jsn=1\"; did you mean \"--json\"?"},
        {{"xylophone"}, "tvutil: no command \"xylophone\" (\"tvutil --help\" tells more)"},
        {{"product", "running", "1"}, "tvutil: product running: unexpected \"1\""},
        {{"features", "set", "dovr.filefilte", "on"}, "did you mean \"dovr.filefilter\"?"},
        {{}, "tvutil: "},
        {{"ini", "get", "f"}, "tvutil: ini get: "},
        {{"decode", "klingon"},
         "\"klingon\" is no encoding that is known here; some that are: utf"},
    };
    for (const auto& [arguments, said] : cases) {
        const auto run = tvutil(arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.err.find("tvutil: "), 0U) << run.err;
        EXPECT_NE(run.err.find(said), std::string::npos) << run.err;
    }
}

// The shells themselves read what is written for them and say what they would offer; zsh's own
// presentation, which wants a terminal, is replaced by printing.
TEST(TvutilTree, CompletesInTheShells) {
    const struct {
        std::string shell, script;
    } shells[] = {
        {"bash",
         "source <(\"$0\" completion bash); read -ra COMP_WORDS <<<\"tvutil $1\"\n"
         "COMP_WORDS+=(\"$2\"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
         "_tvutil; printf '%s\\n' \"${COMPREPLY[@]}\""},
        {"zsh",
         "words=(tvutil ${=1} \"$2\"); CURRENT=$#words; PREFIX=$2\n"
         "_describe() { print -l -- ${(P)2} }; compadd() { print -l -- ${(P)2} }; _files() {}\n"
         "eval \"_tvutil() { $(\"$0\" completion zsh) }\"; _tvutil |\n"
         "  while read -r line; do [[ $line == $2* ]] && print -r -- ${line%%:*}; done; true"},
        {"fish",
         "set -l words $argv; $words[1] completion fish | source\n"
         "complete -C \"tvutil $words[2] $words[3]\" | string replace -r '\\t.*' ''"},
    };
    const struct {
        std::string before, current, offered;
    } cases[] = {
        {"", "fea", "features\n"},
        {"ini", "l", "lint\nlist\n"},
        {"ini convert a.ini", "--lo", "--lossy\n"},
        {"reg query --recursive", "--j", "--json\n"},
        {"reg export HKCU a.reg --encoding", "utf-1", "utf-16\n"},
        {"features set dovr.x", "of", "off\n"},
        {"completion", "z", "zsh\n"},
        {"ini get", "no-file-of-this-name", ""},
    };
    for (const auto& [shell, script] : shells) {
        SCOPED_TRACE(shell);
        if (tests::run("/bin/sh", {"-c", "command -v " + shell}).code != 0) {
            std::cout << "no " << shell << " here: its completion isn't tried\n";
            continue;
        }
        for (const auto& [before, current, offered] : cases) {
            const auto run =
                tests::run("/usr/bin/env", {shell, "-c", script, TESTS_TVUTIL, before, current});
            std::set<std::string> lines;
            std::istringstream out(run.out);
            for (std::string line; std::getline(out, line);) {
                if (!line.empty()) lines.insert(line + '\n');
            }
            EXPECT_EQ(std::accumulate(lines.begin(), lines.end(), std::string()), offered)
                << before << run.err;
        }
    }
}

TEST(TvutilTree, StandardInputAndOutputHaveAName) {
    using namespace std::string_literals;
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/a.ini", "[s]\nk=v\n");
    tests::write_file(folder + "/file", "");
    const std::string ini = "; top\n[s]\nk=v\n";
    const std::vector<tests::Answer> answers = {
        {{"ini", "get", "-", "s", "k"}, ini, 0, "v\n"},
        {{"ini", "get", "-", "s", "k", "--json"}, ini, 0, "{\n  \"value\": \"v\"\n}\n"},
        {{"ini", "list", "-"}, ini, 0, "[s]\nk=v\n"},
        {{"ini", "set", "-", "s", "k", "w"},
         "; top\r\n[s]\r\nk=v\r\n",
         0,
         "; top\r\n[s]\r\nk=w\r\n"},
        {{"ini", "remove", "-", "s", "none"}, ini, 1, ini},
        {{"ini", "lint", "-"}, ini, 0, ""},
        {{"ini", "convert", "-", "--to", "UTF-16LE"},
         "a",
         0,
         "\xFF\xFE"
         "a\0"s},
        {{"ini", "convert", "-", "--from", "Latin-1", "--to", "utf8"}, "\xE4", 0, "\u00e4"},
        {{"option", "get", "--file", "-", "--section", "s", "k"}, ini, 0, "v\n"},
        {{"text", "detect", "-"}, "a\n", 0, "*"},
        {{"text", "convert", "-", "-", "--from", "CP1252", "--to", "UTF8"}, "\x80", 0, "\u20ac"},
        {{"text", "convert", "-", "-", "--to", "ISO_8859-15"}, "\u20ac", 0, "\xA4"},
        {{"decode", "windows-1252"}, "\x80", 0, "\u20ac"},
        {{"encode", "Shift_JIS"}, "\u3042", 0, "\x82\xA0"},
        {{"url", "launch", "-"}, "nothing://h\n", 1},
        {{"url", "launch", "-"}, "://", 3},
        {{"reg", "add", "HKCU\\U", "v", "\u00e4"}, "", 0},
        {{"reg", "export", "HKCU\\U", "-", "--encoding", "utf-8"},
         "",
         0,
         "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\U]\r\n"
         "\"v\"=\"\u00e4\"\r\n"},
        {{"protect", "--key-file", "-"}, "s", 2},
        {{"path", "append", "C:\\a", "b", "--host"}, "", 0, "/a/b\n"},
        // By the codes that the help promises.
        {{"ini", "get", "@/none.ini", "s", "k"}, "", 4},
        {{"ini", "get", "@", "s", "k"}, "", 4},
        {{"ini", "get", "@/file", "s", "k"}, "", 1},
        {{"ini", "remove", "@/a.ini", "s", "none"}, "", 1},
        {{"ini", "remove", "@/a.ini", "none"}, "", 1},
        {{"ini", "remove", "@/none.ini", "s"}, "", 4},
        {{"ini", "remove", "@/a.ini", "S", "K"}, "", 0, ""},
        {{"ini", "remove", "@/a.ini", "S"}, "", 0, ""},
        {{"option", "get", "--file", "@/none.ini", "k"}, "", 1},
        {{"option", "get", "--file", "@", "k"}, "", 4},
        {{"reg", "delete", "HKCU\\None", "--value", "v"}, "", 1},
        {{"reg", "rename", "HKCU\\None", "Other"}, "", 1},
    };
    tests::expect_answers(folder, answers);
    EXPECT_EQ(tests::read_file(folder + "/a.ini"), "");
}

TEST(TvutilTree, AStoreThatCannotBeHadIsNamed) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/file", "");
    for (const std::string command :
         {"reg query HKCU\\\\A", "reg query HKLM\\\\A", "reg export HKCU\\\\A", "reg add HKCU\\\\A",
          "reg delete HKCU\\\\A", "option get --company C --registry n"}) {
        const auto run = tests::run(
            "/bin/sh",
            {"-c", "TVUTIL_PROFILE=\"$1/file\" exec \"$0\" " + command, TESTS_TVUTIL, folder});
        EXPECT_EQ(run.code, 4) << command << run.err;
        EXPECT_NE(run.err.find("registry.db"), std::string::npos) << command << run.err;
    }
}

}  // namespace
