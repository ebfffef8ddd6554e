#include "tvutil2/services/signature.h"

#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/child.h"
#include "tests/support/executable_image.h"
#include "tests/support/profile.h"
#include "tests/support/signer.h"

namespace {

namespace fs = std::filesystem;
using tests::platform_path;

// What a person who isn't there is asked, in a child process, and the result.
std::string asked(int (*work)(const std::string&), const std::string& file) {
    std::string printed;
    const int result = tests::in_child_alone([&] { return work(file); }, printed);
    return std::to_string(result) + (printed.empty() ? "" : ": " + printed);
}

int run_loud(const std::string& file) {
    return TvVerifyTolvarineExe(platform_path(file).c_str(), FALSE);
}
int run_silent(const std::string& file) {
    return TvVerifyTolvarineExe(platform_path(file).c_str(), TRUE);
}
int install(const std::string& file) {
    return TvVerifyPackageSigned(platform_path(file).c_str());
}

std::string tampered(const std::string& file) {
    auto bytes = tests::read_file(file);
    bytes[140] = static_cast<char>(bytes[140] ^ 1);
    tests::write_file(file, bytes);
    return file;
}

TEST(SignatureCheck, KnowsTheMakerByHisName) {
    const auto maker = tests::make_signer("Tolvarine Computer");
    const auto plain = tests::new_folder() + "/x.exe";
    tests::write_file(plain, tests::elf_image().all());
    const struct {
        std::string file;
        int is_signed, is_makers;
    } cases[] = {
        {tests::signed_elf(maker), 1, 1},
        {tests::signed_pe(maker), 1, 1},
        {tests::signed_pe(tests::make_signer("The tolvarine")), 1, 0},
        {tests::signed_elf(tests::make_signer("Not the Tolvarines")), 1, 1},
        {tampered(tests::signed_elf(maker)), 0, 0},
        {tampered(tests::signed_pe(maker)), 0, 0},
        {plain, 0, 0},
        {plain + "x", 0, 0},
        {tests::new_folder(), 0, 0},
        {fs::path(plain).parent_path() / "*", 0, 0},
    };
    for (const auto& [file, is_signed, is_makers] : cases) {
        EXPECT_EQ(TvCheckFileIsSigned(platform_path(file).c_str()), is_signed) << file;
        EXPECT_EQ(TvCheckFileIsTolvarineSigned(platform_path(file).c_str()), is_makers) << file;
        EXPECT_EQ(run_silent(file), is_makers) << file;
    }
    EXPECT_EQ(TvCheckFileIsSigned(nullptr), 0);
    EXPECT_EQ(TvVerifyTolvarineExe(nullptr, FALSE), 0);
}

TEST(SignatureCheck, AsksOnlyWhereSomethingIsWrong) {
    const auto maker = tests::make_signer("Tolvarine Computer");
    const auto good = tests::signed_elf(maker);
    const auto bad = tampered(tests::signed_elf(maker));
    for (auto* const work : {run_loud, run_silent, install}) EXPECT_EQ(asked(work, good), "1");
    EXPECT_EQ(asked(run_loud, bad + "x"), "0");
    EXPECT_EQ(asked(install, bad + "x"), "1");
    EXPECT_EQ(asked(run_silent, bad), "0");
    const auto question = asked(run_loud, bad);
    EXPECT_EQ(question.find("0: "), 0U);
    EXPECT_NE(question.find("The signature of " + std::string("C:\\")), std::string::npos)
        << question;
    EXPECT_NE(question.find("is corrupt or invalid. Continue to run anyway?"), std::string::npos);
    const auto warning = asked(install, bad);
    EXPECT_EQ(warning.find("0: "), 0U);
    for (const auto* const text :
         {"Package Verify - Error", "does not match Tolvarine Computer's digital signature.",
          "may contain malware or a virus", "[OK] Install Anyways", "[Cancel] Do Not Install"}) {
        EXPECT_NE(warning.find(text), std::string::npos) << warning;
    }
    tests::Terminal terminal([&] { return install(bad); });
    terminal.wait_for("Cancel");
    terminal.type("o\n");
    terminal.read_all();
    EXPECT_EQ(terminal.result(), 1);
}

TEST(SignatureCheck, AsksForMoreThanANameWhereTheMachineSaysSo) {
    const auto maker = tests::make_signer("Tolvarine Computer");
    const auto own = platform_path(tests::signed_elf(maker));
    const auto other = platform_path(tests::signed_elf(tests::make_signer("Tolvarine Computer")));
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, u"Software\\Tolvarine\\Common\\8\\Trust", 0,
                              nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              0);
    const auto set = [key](DWORD value) {
        RegSetValueExW(key, u"TrustedSignersOnly", 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&value), sizeof value);
    };
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(other.c_str()), 1);
    set(1);
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(own.c_str()), 0);
    tests::trust(maker);
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(own.c_str()), 1);
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(other.c_str()), 0);
    EXPECT_EQ(TvCheckFileIsSigned(other.c_str()), 1);
    set(0);
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(other.c_str()), 1);
    RegCloseKey(key);
}

TEST(SignatureCheck, TakesASettingThatCantBeReadForSet) {
    const auto file = tests::signed_elf(tests::make_signer("Tolvarine Computer"));
    fs::create_directories(tests::profile_folder() + "/machine");
    tests::write_file(tests::profile_folder() + "/machine/registry.db", std::string(4096, 'x'));
    EXPECT_EQ(TvCheckFileIsTolvarineSigned(platform_path(file).c_str()), 0);
}

// A block of a version: its key, its value and the blocks inside it.
std::string version_block(const std::u16string& key, const std::u16string& value,
                          const std::string& inside = "", std::uint16_t type = 1) {
    const auto words = [](const std::u16string& text) {
        return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    };
    std::string block(6, '\0');
    block += words(key + u'\0');
    block.resize((block.size() + 3) / 4 * 4);
    block += words(value);
    block.resize((block.size() + 3) / 4 * 4);
    block += inside;
    const auto value_size = static_cast<std::uint16_t>(value.size() * (2U - type));
    const std::uint16_t head[] = {static_cast<std::uint16_t>(block.size()), value_size, type};
    std::memcpy(block.data(), head, sizeof head);
    return block;
}

TEST(SignatureCheck, WarnsOfOneVersionOfTheFrameworksLibrary) {
    const auto library = fs::read_symlink("/proc/self/exe").parent_path() / "mfc140u.dll";
    const auto shown = [&](const std::u16string& version) {
        const auto text =
            version_block(u"StringFileInfo", u"",
                          version_block(u"040904b0", u"",
                                        version_block(u"Other", u"14.0.24210.0") +
                                            version_block(u"productversion", version + u'\0')));
        const std::u16string translation{0x0409, 0x04B0};
        const auto root =
            version_block(u"VS_VERSION_INFO", u"",
                          text + version_block(u"VarFileInfo", u"",
                                               version_block(u"Translation", translation, "", 0)),
                          0);
        auto image = tests::pe_image();
        image.put(tests::kPeRoot + 76, static_cast<std::uint32_t>(root.size()));
        auto bytes = image.all();
        bytes.replace(tests::kPeBlock, root.size(), root);
        bytes.resize(0x400 + 0x200);
        const std::uint32_t raw_size = 0x400;
        std::memcpy(bytes.data() + 312 + 16, &raw_size, sizeof raw_size);
        tests::write_file(library, bytes);
        std::string printed;
        tests::in_child_alone([] { return TvCheckVCRedistVersion(), 0; }, printed);
        fs::remove(library);
        return printed;
    };
    EXPECT_NE(shown(u"14.0.24210.0").find("An incompatible mfc140u.dll version number"),
              std::string::npos);
    EXPECT_EQ(shown(u"14.0.24211.0"), "");
    EXPECT_EQ(shown(u""), "");
    std::string printed;
    tests::in_child_alone([] { return TvCheckVCRedistVersion(), 0; }, printed);
    EXPECT_EQ(printed, "");
}

}  // namespace
