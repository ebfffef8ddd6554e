// The log's lines and names: a line frames its text and loses nothing; what a message's format says
// is cut where it must be; a name is swept by its end.
#include "tvutil2/diag/app_log.h"
#include "tvutil2/diag/log_file.h"

#include <algorithm>
#include <string>

#include "fuzz/fuzz_input.h"

namespace {

std::string g_folder;

std::u16string last_line(const std::string& file) {
    std::u16string units;
    FILE* const log = std::fopen(file.c_str(), "rb");
    fuzz::require(log != nullptr);
    char16_t block[4096];
    while (const auto count = std::fread(block, 2, std::size(block), log))
        units.append(block, count);
    std::fclose(log);
    return units;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto units = fuzz::wide_text(data, size);
    const SYSTEMTIME time{2026, 5, 2, 12, 14, 3, 27, 418};
    for (const bool is_debug : {false, true}) {
        const auto line = tvutil2::log_line(time, units, is_debug);
        const std::u16string start = is_debug ? u"[14:03:27.418] [DEB] " : u"[14:03:27.418] ";
        fuzz::require(line == start + units + u"\r\n");
    }
    fuzz::require(tvutil2::global_log_line(time, units) ==
                  u"[2026-05-12 14:03:27.418] " + units + u"\r\n");
    fuzz::require(tvutil2::sweep_of(units + u"lOg") == tvutil2::Sweep::back_up);
    // A message that is formatted, whatever its format and argument are.
    if (g_folder.empty()) {
        char name[] = "/tmp/tvutil2-fuzz-XXXXXX";
        fuzz::require(mkdtemp(name) != nullptr);
        g_folder = name;
        _InitApplicationLog(fuzz::widened(g_folder).c_str(), u"fuzz", 1, 0);
    }
    std::string file;
    for (const char16_t unit : tvutil2::log_path().View()) file.push_back(static_cast<char>(unit));
    std::replace(file.begin(), file.end(), '\\', '/');
    file.erase(0, file.starts_with("C:") ? 2 : 0);
    std::remove(file.c_str());
    __WriteInfoAppLog(1, units.c_str(), units, 42, 1.5);
    const auto line = last_line(file);
    fuzz::require(line.starts_with(u'[') && line.ends_with(u"\r\n"));
    fuzz::require(line.size() <= 15 + tvutil2::kLongestFormattedMessage + 2);
    return 0;
}
