// tvutil import, as a shell runs it.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

#include "tests/support/host_files.h"
#include "tests/support/profile.h"
#include "tests/tools/tvutil.h"

namespace {

using Json = nlohmann::json;
using tests::tvutil;

std::string platform(const std::string& host) {
    return tvutil({"path", "from-host", host}).out.substr(0, host.size() + 2);
}

TEST(TvutilImport, PlansThenCopiesOnce) {
    namespace fs = std::filesystem;
    const auto old = tests::new_folder();
    const auto data = tests::profile_folder() + "/home/Documents/Tolvarine Computer/8";
    fs::create_directories(old + "/Common/sub");
    fs::create_directories(old + "/Dovr/Sessions");
    fs::create_directories(old + "/Pelrin");
    fs::create_directories(data + "/Common/SUB");
    fs::create_directories(data + "/Pelrin");
    for (const auto& file : {old + "/Common/sub/a", old + "/Common/b", old + "/Pelrin/alias.ini",
                             old + "/Dovr/Sessions/s.dvf", data + "/Pelrin/alias.ini"}) {
        tests::write_file(file, "old");
    }
    tests::write_file(data + "/Common/SUB/A", "mine");
    fs::create_symlink("nowhere", old + "/Common/dead");
    EXPECT_EQ(tvutil({"import", "run"}).code, 1) << "nothing is there";
    tvutil({"reg", "add", "HKCU\\Software\\Tolvarine\\Common\\6\\UserData", "UserDataPath",
            platform(old)});
    tvutil({"reg", "add", "HKCU\\Software\\Tolvarine\\Proxy\\office", "Host", "h"});

    const auto before = tests::tree(data);
    const auto plan = Json::parse(tvutil({"import", "plan", "--json", "--host"}).out);
    EXPECT_EQ(tests::tree(data), before);
    EXPECT_EQ(plan["version"], 6);
    EXPECT_EQ(plan["proxies"], Json({"office"}));
    ASSERT_EQ(plan["copies"].size(), 3U);
    EXPECT_EQ(plan["copies"][0]["files"], 3);
    EXPECT_EQ(plan["copies"][0]["overwritten"], Json({data + "/Common/SUB/A"}));
    EXPECT_EQ(plan["copies"][1]["kept"], Json({data + "/Pelrin/alias.ini"}));
    EXPECT_EQ(plan["copies"][2]["from"], old + "/Dovr/Sessions");

    const auto run = tvutil({"import", "run", "--json"});
    EXPECT_EQ(run.code, 4) << "one file couldn't be copied";
    EXPECT_NE(run.err.find("dead"), std::string::npos);
    EXPECT_EQ(Json::parse(run.out)["copied"], 4);
    EXPECT_EQ(tests::read_file(data + "/Common/SUB/A"), "old");
    const auto again = tvutil({"import", "run"});
    EXPECT_EQ(again.code, 1);
    EXPECT_EQ(again.out, "the import has been done\n");
    EXPECT_EQ(Json::parse(tvutil({"import", "status", "--json"}).out)["Version6"], 1);
}

}  // namespace
