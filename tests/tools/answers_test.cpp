// The small commands and those of secrets: answers, refusals, and where a secret may come from.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/http_server.h"
#include "tests/support/profile.h"
#include "tests/support/session_bus.h"
#include "tests/tools/tvutil.h"

namespace {

using tests::tvutil;

TEST(Tvutil, AnswersAndRefusesByItsCodes) {
    const std::vector<tests::Answer> answers = {
        {{}, "", 2},
        {{"--version"}, "", 0, "*"},
        {{"--help"}, "", 0, "*"},
        {{"nothing"}, "", 2},
        {{"product", "name", "1"}, "", 0, "1\tPelrin\n"},
        {{"product", "name", "8"}, "", 2},
        {{"product", "name", "-1"}, "", 2},
        {{"product", "name", "1x"}, "", 2},
        {{"product", "version", "1"}, "", 1, ""},
        {{"product", "version", "1", "--json"}, "", 1, "*"},
        {{"base64", "encode"}, "", 0, "\n"},
        {{"base64", "encode"}, std::string("\0\xff", 2), 0, "AP8=\n"},
        {{"base64", "encode", "/nowhere/at/all"}, "", 4},
        {{"base64", "encode", "/"}, "", 4},
        {{"base64", "decode"}, "AP8=\n", 0, std::string("\0\xff", 2)},
        {{"base64", "decode"}, "A P\r\n8=", 0, std::string("\0\xff", 2)},
        {{"base64", "decode"}, "AP8*", 3},
        {{"base64", "decode"}, std::string("AP8=\0", 5), 3},
        {{"base64", "decode"}, "\xc3\xa4", 3},
        {{"reveal"}, "AP8=", 3},
        {{"reveal"}, "\xff", 3},
        {{"protect", "--key", "other"}, "s", 2},
        {{"url", "parse", "-"}, "://", 3},
        {{"url", "parse", "\xff"}, "", 2},
        {{"url", "make"}, "", 2},
        {{"url", "make", "--host", "h", "--item", "=v"}, "", 2},
        {{"url", "make", "--host", "h", "--password-file", "-"}, "p", 2},
        {{"url", "make", "--scheme", "ssh", "--host", "h", "--port", "22"}, "", 0, "ssh://h:22\n"},
        {{"path", "append", "C:\\a\\b", "..\\c"}, "", 0, "C:\\a\\c\n"},
        {{"path", "match", "*.tx?", "a.txt"}, "", 0, ""},
        {{"path", "match", "*.tx?", "a.TXT"}, "", 1, ""},
        {{"path", "to-host", "C:\\a\\b"}, "", 0, "/a/b\n"},
        {{"path", "to-host", "Q:\\a"}, "", 3},
        {{"path", "from-host", "/a/../b"}, "", 0, "C:\\b\n"},
        {{"path", "from-host", "/a\\b"}, "", 3},
        {{"path", "truncate", "C:\\a", "x"}, "", 2},
        {{"string", "get", "0"}, "", 1},
        {{"string", "get", "99999999999"}, "", 2},
        {{"string", "get", "14107", "--language", "de"}, "", 0, "*"},
        {{"string", "list", "--language", "nobody's"}, "", 2},
        {{"links", "token", "1", "-2", "3"}, "", 0, "1.8.-2.3\n"},
        {{"links", "page", "1", "2", "3"}, "", 0, "https://api.tolvarine.example/h/1.8.2.3\n"},
        {{"links", "home", "8", "2", "3"}, "", 2},
        {{"links", "manual", "None"}, "", 1, "*"},
        {{"links", "support", "1"}, "", 1, ""},
        {{"links", "check-support", " https://a/;b "}, "", 0, "https://a/b\n"},
        {{"links", "check-support", "file:///etc/passwd"}, "", 1, "file:///etc/passwd\n"},
        {{"links", "program"}, "", 0, "online\n"},
        {{"links", "program", "--set", "2"}, "", 0, "2\n"},
        {{"links", "program", "--set", "3"}, "", 2},
        {{"update", "status", "1"}, "", 0, "*"},
        {{"update", "due", "1", "--json"}, "", 0, "*"},
        {{"update", "check", "1"}, "", 1, "no update module\n"},
        {{"update", "force", "1"}, "", 1, "no update module\n"},
        {{"update", "set", "1", "on", "--interval", "0"}, "", 0, ""},
        {{"update", "set", "1", "maybe"}, "", 2},
        {{"update", "due", "8"}, "", 2},
        {{"update", "id"}, "", 0, "*"},
        {{"reg", "query", "HKCU\\None"}, "", 1},
        {{"reg", "query", "HKXX\\a"}, "", 2},
        {{"reg", "query", "HKCU\\a\\\\b"}, "", 2},
        {{"reg", "delete", "HKCU"}, "", 2},
        {{"reg", "add", "HKCU\\A", "n", "4294967296", "--type", "dword"}, "", 2},
        {{"reg", "add", "HKCU\\A", "n", "abc", "--type", "binary"}, "", 2},
        {{"reg", "add", "HKCU\\A", "n", "a", "b"}, "", 2},
        {{"reg", "import", "-"}, "no .reg text", 3},
    };
    tests::expect_answers("", answers);
}

// Whatever lies in the folder, and whatever a report says.
TEST(Tvutil, ShowsCrashReports) {
    const auto folder = tests::profile_folder() + "/user/crash/";
    const std::pair<const char*, const char*> reports[] = {
        {"a_1", R"({"kind": "signal", "signal": "SIGSEGV", "threads": [
                    {"crashed": true, "stack": [{"address": "0x1", "function": "f"}]}]})"},
        {"b_2", R"({"kind": 7, "signal": null, "threads": [3, {"crashed": [], "stack": {}}]})"},
        {"c_3", "no report"},
        {".draft", "{}"}};
    for (const auto& [name, text] : reports) {
        std::filesystem::create_directories(folder + name);
        tests::write_file(folder + name + "/report.json", text);
    }
    tests::write_file(folder + "b_2.sent.zip", "");
    tests::expect_answers(folder,
                          {{{"crash", "list"},
                            "",
                            0,
                            "a_1  signal  SIGSEGV  waiting\nb_2      sent\nc_3      waiting\n"},
                           {{"crash", "list", "--json"}, "", 0, "*"},
                           {{"crash", "show", "a_1"},
                            "",
                            0,
                            "kind=signal\nsignal=SIGSEGV\nsent=no\nfolder=" + folder +
                                "a_1\ncrashed thread:\n  0x1  f  \n"},
                           {{"crash", "show", "b_2"}, "", 0, "*"},
                           {{"crash", "show", "c_3"}, "", 4},
                           {{"crash", "show", "../crash/a_1"}, "", 1},
                           {{"crash", "show", ".draft"}, "", 1},
                           {{"crash", "send", "a_2"}, "", 1},
                           {{"crash", "send"}, "", 4},
                           {{"crash", "send", "a_1", "--to", "ftp://127.0.0.1/"}, "", 4}});
    const tests::HttpServer server("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    tests::expect_answers(
        folder,
        {{{"crash", "send", "--to", server.address()}, "", 0, "a_1  sent\nc_3  sent\n"},
         {{"crash", "send"}, "", 0},
         {{"crash", "list"}, "", 0, "a_1  signal  SIGSEGV  sent\nb_2      sent\nc_3      sent\n"}});
}

TEST(Tvutil, ShowsNotificationsAndWaitsForTheAnswer) {
    EXPECT_EQ(tvutil({"notify", "send", "Done"}).code, 4);
    const auto entries = tests::profile_folder() + "/home/.local/share/applications";
    EXPECT_FALSE(std::filesystem::exists(entries)) << "for nobody";
    tests::SessionBus bus;
    tests::NotificationServer server(TESTS_STARTED "/notification_server.exe");
    const auto picture = tests::new_folder() + "/a&b.png";
    tests::write_file(picture, "x");
    auto waiting = std::async(std::launch::async, [&picture] {
        return tvutil({"notify", "send", "Done", "3 files", "--button", "<a & \"b\">", "--picture",
                       picture, "--icon", picture, "--name", "Dovr", "--wait", "--json"});
    });
    const auto address = "file://" + picture.substr(0, picture.rfind('/')) + "/a%26b.png";
    EXPECT_EQ(server.asked(), (std::vector<std::string>{
                                  "notify", "1", "Dovr", address, "Done", "3 files", address,
                                  "tvutil2.toast.c546f6c766172696e652e74767574696c", "default", "",
                                  "1:action=update&conversationId=9813", "<a & \\\"b\\\">"}));
    server.order("invoke 1 1:answer");
    EXPECT_EQ(waiting.get().out, "{\n  \"argument\": \"answer\"\n}\n");
    EXPECT_TRUE(std::filesystem::exists(entries));
    // Answered when nobody waits any more, by a program of the desktop's starting.
    server.order("invoke 1 1:late");
    EXPECT_EQ(bus.printed(), "late");
    EXPECT_EQ(tvutil({"notify", "answered", "--timeout", "1"}).code, 1);
    const std::string id = "Tolvarine.tvutil";
    tests::expect_answers(
        "", {{{"notify", "list"},
              "",
              0,
              id + "\tDovr\t{546f6c76-6172-696e-652e-74767574696c}\t"
                   "1 shown\t0 scheduled\n"},
             {{"notify", "clear"}, "", 0, ""},
             {{"notify", "forget"}, "", 0, ""},
             {{"notify", "forget"}, "", 1, ""},
             {{"notify", "list", "--json"}, "", 0, "[]\n"},
             {{"notify", "clear", "--id", ""}, "", 4, ""},
             {{"notify", "class-id", "Dovr"}, "", 0, "446f7672-0000-0000-0000-000000000000\n"}});
    EXPECT_EQ(server.asked(), (std::vector<std::string>{"close", "1"}));
}

TEST(Tvutil, JsonIsValidForAnyText) {
    const std::string odd = "q\"\\\x01\xc3\xa4";
    tvutil({"reg", "add", "HKCU\\J", odd, odd});
    const std::vector<std::string> commands[] = {
        {"product", "name"},
        {"product", "version", "0"},
        {"product", "running"},
        {"url", "parse", "ssh://u@h/%22%5C%01%C3%A4"},
        {"path", "append", "C:\\" + odd, "b"},
        {"path", "split-args", odd + " b"},
        {"path", "to-host", "C:\\" + odd},
        {"string", "list"},
        {"string", "languages"},
        {"reg", "query", "HKCU\\J", "--recursive"},
        {"reg", "query", "HKCU\\J", "--value", odd},
    };
    for (auto command : commands) {
        SCOPED_TRACE(command[0] + ' ' + command[1]);
        command.emplace_back("--json");
        const auto run = tvutil(command);
        EXPECT_TRUE(nlohmann::json::accept(run.out)) << run.out << run.err;
    }
    const auto value =
        nlohmann::json::parse(tvutil({"reg", "query", "HKCU\\J", "--value", odd, "--json"}).out);
    EXPECT_EQ(value["name"], odd);
    EXPECT_EQ(value["data"], odd);
}

TEST(Tvutil, SecretsComeFromFilesAndGoBackUnchanged) {
    const auto folder = tests::new_folder();
    const std::string secret = "p\xc3\xa4ss w\"ord";
    tests::write_file(folder + "/secret", secret + "\r\n");
    tests::write_file(folder + "/key", "my own key\n");
    for (const auto& key :
         {std::vector<std::string>{}, {"--key", "machine"}, {"--key-file", folder + "/key"}}) {
        for (const auto* mac : {"md5", "none"}) {
            std::vector<std::string> options = key;
            options.insert(options.end(), {"--mac", mac});
            auto hide = options;
            hide.insert(hide.begin(), {"protect", "--secret-file", folder + "/secret"});
            auto show = options;
            show.insert(show.begin(), "reveal");
            const auto hidden = tvutil(hide);
            EXPECT_EQ(hidden.code, 0) << hidden.err;
            EXPECT_EQ(hidden.out.find(secret), std::string::npos);
            EXPECT_EQ(tvutil(show, hidden.out).out, secret + "\n");
        }
    }
    const auto made = tvutil(
        {"url", "make", "--scheme", "ssh", "--user", "u", "--host", "h", "--password-file", "-"},
        secret);
    EXPECT_EQ(made.code, 0) << made.err;
    EXPECT_EQ(made.out.find("word"), std::string::npos);
    const auto parsed = [&made](std::vector<std::string> more) {
        more.insert(more.begin(), {"url", "parse", "-", "--json"});
        return nlohmann::json::parse(tvutil(more, made.out).out)["password"];
    };
    EXPECT_EQ(parsed({"--show-secrets"}), secret);
    EXPECT_NE(parsed({}), secret);
}

// What a user of the machine could read in a process list is no place for a secret.
TEST(Tvutil, TakesNoSecretAsArgument) {
    const std::vector<std::string> commands[] = {
        {"protect", "secret"},
        {"protect", "--secret", "secret"},
        {"protect", "--key", "secret"},
        {"reveal", "secret"},
        {"url", "make", "--host", "h", "--user", "u", "--password", "secret"},
        {"url", "make", "--host", "h", "--passphrase", "secret"},
        {"url", "make", "--host", "h", "--item", "PASSphrase=secret"},
    };
    for (const auto& command : commands) {
        const auto run = tvutil(command);
        EXPECT_EQ(run.code, 2) << testing::PrintToString(command);
        EXPECT_EQ(run.out, "");
    }
}

}  // namespace
