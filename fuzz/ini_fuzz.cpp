// INI files of any bytes: what is read, written and read again is the same document, but for the
// few texts that the format can't hold.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/settings/ini_file.h"

#include <unistd.h>

#include <fstream>
#include <map>

#include "fuzz/fuzz_input.h"

namespace {

using Entries = std::map<std::u16string, std::map<std::u16string, std::u16string>>;

Entries entries_of(const CIniFile& document) {
    Entries entries;
    document.sections.ForEach([&entries](std::u16string_view name, void* section) {
        if (section == nullptr) return;
        static_cast<CIniSection*>(section)->Values().ForEach(
            [&](std::u16string_view key, std::u16string_view value) {
                entries[std::u16string(name)][std::u16string(key)] = value;
            });
    });
    return entries;
}

// Only a carriage return at the very end of a value, which a line end swallows or not, may differ.
void without_returns(Entries& entries) {
    for (auto& [name, section] : entries) {
        for (auto& [key, value] : section) {
            while (value.ends_with(u'\r')) value.pop_back();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto host = "/tmp/ini_fuzz." + std::to_string(getpid());
    static const auto path = *tvutil2::platform_path(host);
    std::ofstream(host, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    CIniFile document;
    fuzz::require(document.Read(path.c_str()) == 1);
    auto expected = entries_of(document);
    for (const int unicode : {1, 0}) {
        fuzz::require(document.Write(path.c_str(), unicode, 0) == 1);
        auto found = entries_of(CIniFile(path.c_str()));
        without_returns(found);
        without_returns(expected);
        fuzz::require(found == expected);
    }
    unlink(host.c_str());
    return 0;
}
