// A product that checks for updates: "id", or CODE FORCE CHECKED with a FORCE of "-" for a forced
// start. Prints what became of it, once the module is tested and started. With TESTS_LOG (a mode)
// it keeps a log in the current folder.
#include "tvutil2/diag/app_log.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/services/live_update.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc == 2) {
        std::printf("%s", tvutil2::to_utf8_lossy(TvCommonGUID()).c_str());
        return 0;
    }
    if (argc != 4) return 2;
    const auto code = static_cast<unsigned int>(std::atoi(argv[1]));
    if (argv[2] == std::string("-")) {
        std::printf("%d", TvForceLiveUpdate(code, 8));
        return 0;
    }
    const char* const mode = std::getenv("TESTS_LOG");
    if (mode != nullptr) _InitApplicationLog(u".", u"Pelrin", std::atoi(mode), 0);
    HANDLE thread = nullptr;
    const auto outcome =
        tvutil2::check_live_update(code, 8, std::atoi(argv[2]), std::atoi(argv[3]), thread);
    if (thread != nullptr) WaitForSingleObject(thread, INFINITE);
    constexpr const char* kOutcomes[] = {"no module", "not due", "not stored", "clock", "begun"};
    std::printf("%s", kOutcomes[static_cast<int>(outcome)]);
    return 0;
}
