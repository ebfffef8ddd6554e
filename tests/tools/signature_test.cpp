// Signing and verifying, and the programs of add-ons.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

#include "tests/support/executable_image.h"
#include "tests/support/profile.h"
#include "tests/support/signer.h"
#include "tests/tools/tvutil.h"

namespace {

using nlohmann::json;

TEST(TvutilSignature, SignsAndVerifies) {
    const auto folder = tests::new_folder();
    const auto maker = tests::make_signer("Tolvarine Computer");
    const auto other = tests::make_signer("Somebody");
    tests::write_file(folder + "/x.exe", tests::elf_image().all());
    tests::write_file(folder + "/text", "text");
    const auto sign = [](const tests::Signer& signer, const std::string& file) {
        return std::vector<std::string>{"sign",  file,      "--certificates", signer.certificates,
                                        "--key", signer.key};
    };
    auto to_other_file = sign(maker, "@/x.exe");
    to_other_file.insert(to_other_file.end(), {"--output", "@/signed.exe"});
    tests::expect_answers(folder, {{{"verify", "@/x.exe"}, "", 1, "*"},
                                   {to_other_file, "", 0, ""},
                                   {{"verify", "@/x.exe"}, "", 1, "*"},
                                   {{"verify", "@/signed.exe", "--maker"}, "", 0, "*"},
                                   {sign(other, "@/x.exe"), "", 0, ""},
                                   {{"verify", "@/x.exe"}, "", 0, "*"},
                                   {{"verify", "@/x.exe", "--maker"}, "", 1, "*"},
                                   {sign(other, "@/text"), "", 3, ""},
                                   {sign(other, "@/none"), "", 4, ""},
                                   {{"verify", "@/text"}, "", 1, "*"},
                                   {{"verify", "@/none"}, "", 4, ""},
                                   {{"verify", "@"}, "", 4, ""}});
    const auto report = json::parse(
        tests::tvutil_in(folder, {"verify", "@/signed.exe", "--json"}).out, nullptr, false);
    EXPECT_EQ(report["state"], "intact");
    EXPECT_EQ(report["kind"], "ELF");
    EXPECT_EQ(report["verdict"], "0x800B0109");
    EXPECT_EQ(report["signer"], "Tolvarine Computer");
    EXPECT_EQ(report["chain"].size(), 2U);
    EXPECT_EQ(report["digest"]["algorithm"], "sha256");
    EXPECT_EQ(report["time"].get<std::string>().size(), 20U);
}

TEST(TvutilAddons, NameProgramsWithTheMakersSignature) {
    const auto folder = tests::new_folder();
    const auto program = tests::signed_elf(tests::make_signer("Tolvarine Computer"));
    const auto list = [&](const std::string& path) {
        auto name = path;
        for (auto& c : name) {
            if (c == '/') c = '\\';
        }
        tests::write_file(folder + "/a.ini",
                          "[Info]\nCount=9\n[0]\nName=N\nIdentity=i\nExt=.n\n"
                          "AddonPath=C:" +
                              name + "\n[1]\nIdentity=gone\n");
    };
    list(program);
    tests::expect_answers(
        folder,
        {{{"addons", "list", "--file", "@/a.ini", "--host"}, "", 0, ".n  N  " + program + "\n"},
         {{"addons", "trim", "--file", "@/a.ini"}, "", 0, "kept=1\n"},
         {{"addons", "for", ".n", "--file", "@/a.ini", "--host"}, "", 0, program + "\n"},
         {{"addons", "for", ".x", "--file", "@/a.ini"}, "", 1, ""},
         {{"addons", "trim"}, "", 1, ""},
         {{"addons", "list"}, "", 0, ""}});
    tests::write_file(program, tests::elf_image().all());
    list(program);
    tests::expect_answers(folder, {{{"addons", "for", ".n", "--file", "@/a.ini"}, "", 3, ""}});
}

}  // namespace
