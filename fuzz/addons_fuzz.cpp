// An Addons.ini that somebody else wrote, trimmed and loaded.
#include "tvutil2/data/addons.h"
#include "tvutil2/platform/base/host_path.h"

#include <unistd.h>

#include <fstream>
#include <string>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto host = "/tmp/addons_fuzz." + std::to_string(getpid());
    static const auto path = tvutil2::platform_path(host).value();
    std::ofstream(host, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    auto& manager = CAddonManager::GetInstance();
    manager.Reload(path.c_str());
    const int count = manager.GetAddonMap()->GetCount();
    fuzz::require(manager.GetAddonExts()->GetCount() == count);
    // A list that was cleaned stays as it is, and so does what is loaded.
    manager.Load(path.c_str());
    fuzz::require(manager.GetAddonMap()->GetCount() == count);
    return 0;
}
