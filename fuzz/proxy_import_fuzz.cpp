// Proxies of any names and texts, one text a line, the name first: the file is in its folder, under
// its name, and holds them; or the name is none of a file, and there is nothing.
#include "tvutil2/data/proxy_import.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/settings/ini_file.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "fuzz/fuzz_input.h"

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto host = "/tmp/proxy_import_fuzz." + std::to_string(getpid()) + "/in";
    static const CString folder(tvutil2::platform_path(host)->c_str());
    fs::remove_all(fs::path(host).parent_path());
    fs::create_directories(host);
    std::array<CString, 5> texts;
    std::size_t index = 0;
    for (const auto unit : fuzz::wide_text(data, size)) {
        if (unit == u'\n') {
            index = std::min(index + 1, texts.size() - 1);
        } else if (unit != 0 && unit != u'\r') {
            texts[index] += unit;
        }
    }
    const auto& [name, address, user, jump_host, password] = texts;
    const tvutil2::ProxyRecord proxy{DWORD(size % 9), 80, address, user, jump_host, password};
    const bool is_written = tvutil2::write_proxy(proxy, name, folder);
    fuzz::require(std::distance(fs::directory_iterator(host), {}) == (is_written ? 1 : 0));
    fuzz::require(std::distance(fs::directory_iterator(fs::path(host).parent_path()), {}) == 1);
    if (!is_written) return 0;
    CIniFile file(folder + u'\\' + name + u".ini");
    fuzz::require(file.GetValue(u"SECTION", u"TYPE", -1) == int(proxy.type));
    fuzz::require(file.GetValue(u"SECTION", u"HOST", u"?") == address);
    fuzz::require(file.GetValue(u"SECTION", u"USERNAME", u"?") == user);
    fuzz::require(file.GetValue(u"SECTION", u"JUMPHOST", u"?") == jump_host);
    fuzz::require(file.GetValue(u"SECTION", u"PASSWORD", u"?") == password);
    return 0;
}
