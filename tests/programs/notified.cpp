// A program that shows a notification ("send") and is started again for it ("-ToastActivated"). It
// writes what it was activated with to the file that TVUTIL_TEST_REPORT names, and ends.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/services/notifications.h"

#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>

int main(int argc, char** argv) {
    DesktopNotificationManagerCompat::Register(u"Tolvarine.Dovr.Notifications", u"Dovr 8", u"");
    if (argc == 2 && std::string(argv[1]) == "send") {
        TVSendToast(u"Done", u"All files are there.", u"Show", u"");
        return 0;
    }
    std::promise<std::string> argument;
    DesktopNotificationManagerCompat::OnActivated(
        [&argument](const DesktopNotificationActivatedEventArgsCompat& activated) {
            argument.set_value(tvutil2::to_utf8_lossy(activated.Argument()));
        });
    const char* const report = std::getenv("TVUTIL_TEST_REPORT");
    std::FILE* const out = report != nullptr ? std::fopen(report, "w") : nullptr;
    if (out == nullptr) return 1;
    std::fprintf(out, "%s %s", argc == 2 ? argv[1] : "?", argument.get_future().get().c_str());
    return std::fclose(out) == 0 ? 0 : 1;
}
