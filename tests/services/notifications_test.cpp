#include "tvutil2/services/notifications.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/package.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/fifo.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"
#include "tests/support/session_bus.h"
#include "tests/support/threads.h"

namespace {

using Manager = DesktopNotificationManagerCompat;
using Windows::Data::Xml::Dom::XmlDocument;
using Windows::UI::Notifications::ScheduledToastNotification;
using Windows::UI::Notifications::ToastNotification;
using Windows::UI::Notifications::ToastNotificationManager;

constexpr auto kServer = TESTS_STARTED "/notification_server.exe";
constexpr auto kId = u"Tolvarine.Dovr.Notifications";
const std::u16string kIdKey = u"SOFTWARE\\Classes\\AppUserModelId\\Tolvarine.Dovr.Notifications";
constexpr auto kLaunch = "action=viewConversation&conversationId=9813";
constexpr auto kUpdate = "action=update&conversationId=9813";

// The code that a call fails with; 1 for what isn't one's of the classes.
template <class Work>
HRESULT failure_of(Work work) {
    try {
        work();
    } catch (const tvutil2::ResultError& error) {
        return error.code();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Must call Register first.");
        return S_FALSE;
    }
    return S_OK;
}

std::string value(const std::u16string& key_name, const char16_t* name) {
    CRegistry key;
    if (key.Open(HKEY_CURRENT_USER, key_name.c_str(), 0, KEY_READ) == 0) return "no key";
    return tvutil2::to_utf8_lossy(key.GetValue(name, CString(u"none")).View());
}

// What the handler was called with: it comes on a thread of the platform's.
class Activations {
  public:
    void add(const std::u16string& argument) {
        const std::lock_guard guard(m_lock);
        m_arguments.push_back(tvutil2::to_utf8_lossy(argument));
        m_news.notify_all();
    }
    std::string next() {
        std::unique_lock guard(m_lock);
        m_news.wait(guard, [this] { return !m_arguments.empty(); });
        auto argument = m_arguments.front();
        m_arguments.pop_front();
        return argument;
    }

  private:
    std::mutex m_lock;
    std::condition_variable m_news;
    std::deque<std::string> m_arguments;
};

// Lives as long as the handler may.
Activations& register_dovr() {
    static auto* const activations = new Activations;
    Manager::Register(kId, u"Dovr 8", u"");
    Manager::OnActivated([](const DesktopNotificationActivatedEventArgsCompat& activated) {
        EXPECT_EQ(activated.UserInput().Size(), 0U);
        activations->add(activated.Argument());
    });
    return *activations;
}

void send(const char16_t* title, const char16_t* text = u"") {
    TVSendToast(title, text, u"Show", u"");
}

std::vector<std::string> shown(const std::string& id, const std::string& title,
                               const std::string& body, const std::string& picture = "") {
    // The class id of the program's user model id, as a name on the bus.
    const std::string entry = "tvutil2.toast.c15261708920000000000000000000000";
    return {"notify",
            id,
            "Dovr 8",
            "",
            title,
            body,
            picture,
            entry,
            "default",
            "",
            std::string("1:") + kUpdate,
            "Show"};
}

TEST(Notifications, ClassIdsAreDerivedFromNames) {
    const struct {
        std::u16string name;
        std::u16string id;
    } cases[] = {
        {u"", u"00000000-0000-0000-0000-000000000000"},
        {u"Dovr", u"446f7672-0000-0000-0000-000000000000"},
        {u"ABCDEFGHIJKLMNOP", u"41424344-4546-4748-494a-4b4c4d4e4f50"},
        {u"\u20ACuro", u"20ac75726f-0000-0000-0000-000000000000"},
        {u"ABCDEFGHIJKLMNOPQ", u"31945154-2800-0000-0000-000000000000"},
        {u"Tolvarine.Id.01736", u"44049230-0000-0000-0000-000000000000"},
        {kId, u"15261708-9200-0000-0000-000000000000"},
    };
    for (const auto& [name, id] : cases) EXPECT_EQ(tvutil2::class_id_of(name), id);
}

TEST(Notifications, NothingComesBeforeRegister) {
    EXPECT_EQ(failure_of([] { Manager::OnActivated(nullptr); }), S_FALSE);
    EXPECT_EQ(failure_of([] { static_cast<void>(Manager::History()); }), S_FALSE);
    EXPECT_EQ(failure_of([] { send(u"x"); }), ELEMENT_NOT_FOUND);
    Manager::Uninstall();
    EXPECT_EQ(failure_of([] { Manager::Register(u"\u20AC", u"", u""); }), CO_E_CLASSSTRING);
}

TEST(Notifications, PackagedProgramsNeedNoRegistration) {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    for (const bool is_inside : {true, false}) {
        EXPECT_EQ(tests::in_child([&] {
                      tvutil2::set_package(u"Tolvarine.Dovr_8",
                                           is_inside ? tests::platform_path(folder) : u"C:\\x");
                      Manager::Register(kId, u"Dovr 8", u"");
                      Manager::OnActivated(nullptr);
                      Manager::History().Clear();
                      Manager::Uninstall();
                      return value(kIdKey, u"DisplayName") == "no key" ? 0 : 1;
                  }),
                  0);
    }
}

TEST(Notifications, RegisterAndUninstallWriteWhatTheDesktopReads) {
    constexpr auto kClassKey =
        u"SOFTWARE\\Classes\\CLSID\\{15261708-9200-0000-0000-000000000000}\\LocalServer32";
    const auto program = tests::platform_path(std::filesystem::read_symlink("/proc/self/exe"));
    Manager::Register(kId, u"Dovr", u"C:\\icon.png");
    EXPECT_EQ(value(kIdKey, u"IconUri"), "C:\\icon.png");
    Manager::Register(kId, u"Dovr 8", u"");
    EXPECT_EQ(value(kIdKey, u"DisplayName"), "Dovr 8");
    EXPECT_EQ(value(kIdKey, u"IconUri"), "none");
    EXPECT_EQ(value(kIdKey, u"IconBackgroundColor"), "");
    EXPECT_EQ(value(kIdKey, u"CustomActivator"), "{15261708-9200-0000-0000-000000000000}");
    EXPECT_EQ(value(kClassKey, nullptr),
              "\"" + tvutil2::to_utf8_lossy(program) + "\" -ToastActivated");
    Manager::Uninstall();
    EXPECT_EQ(value(kIdKey, u"DisplayName"), "no key");
    EXPECT_NE(value(kClassKey, nullptr), "no key");
}

TEST(Notifications, ShowsTextsAsTheyAre) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer, {"actions", "body", "body-markup"});
    register_dovr();
    const std::u16string huge(100'000, u'\u20AC');
    std::string cut;
    for (int i = 0; i < 4096; ++i) cut += "\u20AC";
    cut += "\u2026";
    const struct {
        std::u16string title, text;
        std::string title_shown, text_shown;
    } cases[] = {
        {u"Done", u"All files are there.", "Done", "All files are there."},
        {u"<b>&amp;", u"<b>&amp;\u00FC", "<b>&amp;", "&lt;b&gt;&amp;amp;\u00FC"},
        {u"a\nb\u0007\u001B", u"a\nb\t\u0007\u009B", "a b\uFFFD\uFFFD", "a\\nb\\t\uFFFD\uFFFD"},
        {u"\xD83D", std::u16string(u"a\0b", 3), "\uFFFD", "a\uFFFDb"},
        {u"", u"", "Dovr 8", ""},
        {huge, huge, cut, cut},
    };
    int id = 0;
    for (const auto& [title, text, title_shown, text_shown] : cases) {
        TVSendToast(CString(std::u16string_view(title)), CString(std::u16string_view(text)),
                    u"Show", u"no such picture.png");
        EXPECT_EQ(server.asked(), shown(std::to_string(++id), title_shown, text_shown));
    }
    EXPECT_EQ(failure_of([] { TVSendToast(u"", u"", u"a \"quote\"", u""); }), WEB_E_INVALID_XML);
    EXPECT_EQ(failure_of([] { TVSendToast(u"", u"", u"A & B", u""); }), WEB_E_INVALID_XML);
}

TEST(Notifications, ShowsPicturesAndOneButton) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    const auto icon = tests::new_folder() + "/100% \u00FC.png";
    tests::write_file(icon, "x");
    Manager::Register(kId, u"Dovr 8", tests::platform_path(icon));
    // Beside the executable, where nobody but the build may write: a file that is there.
    TVSendToast(u"t", u"<", u"&lt;Show&gt;", u"services_tests");
    const auto told = server.asked();
    ASSERT_EQ(told.size(), 12U);
    EXPECT_TRUE(told[3].starts_with("file:///") && told[3].ends_with("/100%25%20%C3%BC.png"));
    EXPECT_EQ(told[5], "<");
    EXPECT_EQ(told[6], "file://" + std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(told[11], "<Show>");
    XmlDocument document;
    document.LoadXml(u"<tile/>");
    const auto notifier = Manager::CreateToastNotifier();
    EXPECT_EQ(failure_of([&] { notifier.Show(ToastNotification(document)); }), E_INVALIDARG);
    EXPECT_EQ(failure_of([&] { notifier.Show(ToastNotification({})); }), E_INVALIDARG);
}

TEST(Notifications, AnswersReachTheHandler) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    tests::NotificationServer other(kServer, {}, 1, "somebody.Else");
    auto& activations = register_dovr();
    send(u"one");
    EXPECT_EQ(server.asked(), shown("1", "one", ""));
    // Numbers of others mean nothing, and neither does who isn't the server.
    server.order("signal 7 default");
    other.order("signal 1 1:forged");
    server.order("invoke 1 1:" + std::string(kUpdate));
    EXPECT_EQ(activations.next(), kUpdate);
    server.order("close 1");
    server.order("invoke 1 default");
    EXPECT_EQ(activations.next(), kLaunch);
}

TEST(Notifications, ProgramsThatHaveEndedAreStartedForTheAnswer) {
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    // A name that means much to shells and to desktop entries.
    const auto program = tests::copy_program(TESTS_STARTED "/notified.exe", tests::new_folder(),
                                             "it's $HOME %f `x`.exe");
    for (const auto& [key, argument] :
         {std::pair("default", kLaunch),
          std::pair("1:action=update&conversationId=9813", kUpdate)}) {
        EXPECT_EQ(tests::run(program, {"send"}).code, 0);
        const auto told = server.asked();
        ASSERT_GE(told.size(), 2U);
        server.order("outlive " + told[1]);
        server.order("invoke " + told[1] + " " + key);
        EXPECT_EQ(report.read_all(), std::string("-ToastActivated ") + argument);
    }
}

TEST(Notifications, ARunningProgramTakesOverWhatItsFormerRunHasShown) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    EXPECT_EQ(tests::run(TESTS_STARTED "/notified.exe", {"send"}).code, 0);
    EXPECT_EQ(server.asked()[1], "1");
    auto& activations = register_dovr();
    // Served in the background: once the first own toast is answered, it is.
    send(u"own");
    EXPECT_EQ(server.asked()[1], "2");
    server.order("invoke 2 default");
    EXPECT_EQ(activations.next(), kLaunch);
    server.order("signal 1 1:old");
    EXPECT_EQ(activations.next(), "old");
    Manager::History().Clear();
    EXPECT_EQ(server.asked(), (std::vector<std::string>{"close", "1"}));
    EXPECT_EQ(server.asked(), (std::vector<std::string>{"close", "2"}));
}

TEST(Notifications, FailWithoutAServerAndWorkAgain) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
    auto& activations = register_dovr();
    const auto failure = [] { return failure_of([] { send(u"x"); }); };
    EXPECT_EQ(failure(), WPN_E_PLATFORM_UNAVAILABLE);
    Manager::History().Clear();
    for (int round = 0; round < 2; ++round) {
        const tests::SessionBus bus;
        EXPECT_EQ(failure(), WPN_E_PLATFORM_UNAVAILABLE);
        {
            tests::NotificationServer server(kServer);
            send(u"x");
            EXPECT_EQ(server.asked()[1], "1");
            server.order("die");
            EXPECT_EQ(failure(), WPN_E_PLATFORM_UNAVAILABLE);
            server.join();
            EXPECT_EQ(failure(), WPN_E_PLATFORM_UNAVAILABLE);
        }
        tests::NotificationServer next(kServer, {"actions"}, 2);
        send(u"y");
        EXPECT_EQ(next.asked()[1], "2");
        // Number 1 was the dead server's.
        Manager::History().Clear();
        EXPECT_EQ(next.asked(), (std::vector<std::string>{"close", "2"}));
        next.order("invoke 2 default");
        EXPECT_EQ(activations.next(), kLaunch);
    }
}

TEST(Notifications, ScheduledOnesComeAtTheirTime) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    register_dovr();
    const auto notifier = Manager::CreateToastNotifier();
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const auto add = [&](const char16_t* title, std::int64_t milliseconds) {
        XmlDocument document;
        document.LoadXml(u"<toast><visual><binding><text/></binding></visual></toast>");
        document.SelectSingleNode(u"//text").InnerText(title);
        ScheduledToastNotification toast(
            document, tvutil2::file_time_of(tvutil2::ticks_of(now) +
                                            static_cast<std::uint64_t>(milliseconds * 10'000)));
        notifier.AddToSchedule(toast);
        return toast;
    };
    EXPECT_EQ(failure_of([&] { add(u"late", 0); }), E_INVALIDARG);
    add(u"in a day", 86'400'000);
    const auto unwanted = add(u"unwanted", 300);
    add(u"second", 400);
    add(u"first", 300);
    ASSERT_EQ(notifier.GetScheduledToastNotifications().size(), 4U);
    notifier.RemoveFromSchedule(unwanted);
    notifier.RemoveFromSchedule(unwanted);
    EXPECT_EQ(server.asked()[4], "first");
    EXPECT_EQ(server.asked()[4], "second");
    const auto left = notifier.GetScheduledToastNotifications();
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left[0].Content().DocumentElement().InnerText(), u"in a day");
    Manager::Uninstall();
    EXPECT_TRUE(notifier.GetScheduledToastNotifications().empty());
    EXPECT_EQ(server.asked()[0], "close");
}

TEST(Notifications, OverdueOnesComeWithTheNextStart) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    Manager::Register(kId, u"Dovr 8", u"");
    {
        // By a program that ended before the time came.
        const FILETIME before = tvutil2::file_time_of(tvutil2::ticks_of(now) - 20'000'000);
        EXPECT_EQ(tests::in_child([&] {
                      tvutil2::set_clock(&before);
                      XmlDocument document;
                      document.LoadXml(u"<toast/>");
                      ScheduledToastNotification toast(
                          document, tvutil2::file_time_of(tvutil2::ticks_of(now) - 10'000'000));
                      ToastNotificationManager::CreateToastNotifier(kId).AddToSchedule(toast);
                      return 0;
                  }),
                  0);
    }
    register_dovr();
    EXPECT_EQ(server.asked()[0], "notify");
}

TEST(Notifications, ThreadsShareTheLinkAndAChildHasNone) {
    const tests::SessionBus bus;
    tests::NotificationServer server(kServer);
    auto& activations = register_dovr();
    tests::on_threads(4, [](int) {
        for (int i = 0; i < 5; ++i) send(u"x");
    });
    for (int i = 0; i < 20; ++i) EXPECT_EQ(server.asked()[0], "notify");
    EXPECT_EQ(tests::in_child([] {
                  const auto code = failure_of([] { send(u"x"); });
                  return code == HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED) ? 0 : 1;
              }),
              0);
    server.order("invoke 20 default");
    EXPECT_EQ(activations.next(), kLaunch);
}

}  // namespace
