// A stand-in for a product: tells which one it is and what session it was handed.
//
// Started as Pelrin.exe or Dovr.exe with "-url TEXT", or as Ombrelia.exe with ":[0] -query HOST".
// With "-crash FOLDER" it begins its log there, and crashes. With "-notify TITLE TEXT" it shows a
// notification and ends; the desktop starts it with "-ToastActivated" when that is answered.
// It writes to standard output, or to the file that TVUTIL_EXAMPLE_REPORT names: a named pipe there
// lets a script wait for what a program that nobody waits for has to say.
#include "tvutil2/frame/product.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/diag/crash_report.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/services/notifications.h"
#include "tvutil2/url/url_info.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <future>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <thread>

namespace {

std::string narrow(const CString& text) {
    return tvutil2::to_utf8_lossy(text.View());
}

void show(std::ostream& out, std::string_view name, std::string_view value) {
    out << name << ": " << value << '\n';
}

// What the system keeps of this program's command line, and shows to every user of the machine.
std::string command_line() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!text.empty()) text.pop_back();
    for (auto& c : text) {
        if (c == '\0') c = ' ';
    }
    return text;
}

bool show_session(std::ostream& out, const char* url) {
    CUrlInfo session;
    if (session.Parse_URL(tvutil2::to_utf16_lossy(url).c_str(), 1) == 0) return false;
    show(out, "scheme", narrow(session.m_strScheme));
    show(out, "user", narrow(session.m_strUser));
    show(out, "password", narrow(session.m_strPassword));
    show(out, "host", narrow(session.m_strHost));
    show(out, "port", std::to_string(session.m_nPort));
    show(out, "path", narrow(session.m_strPath));
    std::map<std::string, std::string> items;
    for (auto position = session.m_mapParams.GetStartPosition(); position != nullptr;) {
        CString key;
        CString value;
        session.m_mapParams.GetNextAssoc(position, key, value);
        items[narrow(key)] = narrow(value);
    }
    for (const auto& [key, value] : items) show(out, "item " + key, value);
    return true;
}

[[gnu::noinline]] int count_sessions(const volatile int* count) {
    return *count;
}

// As products do it: the log first, so that reports have it.
int crash(const char* folder) {
    _InitApplicationLog(tvutil2::to_utf16_lossy(folder).c_str(), u"Pelrin", 1, 0);
    if (TvCrashReportInstall(nullptr) != 0) return 1;
    __WriteInfoAppLog(0, u"counting sessions");
    const std::thread other([] { pause(); });
    const volatile std::uintptr_t nowhere = 8;
    return count_sessions(reinterpret_cast<const int*>(nowhere));
}

void register_toasts() {
    DesktopNotificationManagerCompat::Register(u"Tolvarine.Dovr.Notifications", u"Dovr 8", u"");
}

int notify(const char* title, const char* text) try {
    register_toasts();
    TVSendToast(tvutil2::to_utf16_lossy(title).c_str(), tvutil2::to_utf16_lossy(text).c_str(),
                u"Show", u"");
    return 0;
} catch (const std::exception& error) {
    std::cerr << "no notification: " << error.what() << '\n';
    return 4;
}

void show_answer(std::ostream& out) {
    std::promise<std::u16string> argument;
    register_toasts();
    DesktopNotificationManagerCompat::OnActivated(
        [&argument](const DesktopNotificationActivatedEventArgsCompat& activated) {
            argument.set_value(activated.Argument());
        });
    show(out, "answered", tvutil2::to_utf8_lossy(argument.get_future().get()));
}

int report(std::ostream& out, int argc, char** argv) {
    const auto code = static_cast<unsigned int>(TvGetProgramCodeFromInstalled());
    show(out, "product", narrow(TvGetProductName(code)));
    show(out, "command line", command_line());
    if (argc == 3 && argv[1] == std::string_view("-url")) {
        if (show_session(out, argv[2])) return 0;
        std::cerr << argv[0] << ": that is no session URL\n";
        return 3;
    }
    if (argc == 2 && argv[1] == std::string_view("-ToastActivated")) {
        show_answer(out);
        return 0;
    }
    if (argc == 4 && argv[2] == std::string_view("-query")) {
        show(out, "display", argv[1]);
        show(out, "host", argv[3]);
        return 0;
    }
    std::cerr << "Usage: " << argv[0] << " -url URL\n       " << argv[0] << " :[0] -query HOST\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    TvCommonInitialize(0);
    if (argc > 2 && argv[1] == std::string_view("-crash")) return crash(argv[2]);
    if (argc > 3 && argv[1] == std::string_view("-notify")) return notify(argv[2], argv[3]);
    const char* const file = std::getenv("TVUTIL_EXAMPLE_REPORT");
    if (file == nullptr) return report(std::cout, argc, argv);
    std::ofstream out(file);
    const int code = report(out, argc, argv);
    return out.flush() ? code : 4;
}
