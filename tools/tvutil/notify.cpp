// tvutil notify: notifications of the desktop.
#include "tvutil2/data/path.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/services/notifications.h"
#include "tvutil2/settings/registry.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

constexpr auto kOwnId = "Tolvarine.tvutil";

struct Options {
    std::string id = kOwnId;
    std::string title;
    std::string text;
    std::string name = "tvutil";
    std::string icon;
    std::string button = "OK";
    std::string picture;
    unsigned int milliseconds = 10'000;
    bool waits = false;
    bool json = false;
};

// Runs what the classes carry out; their failures are the program's.
template <class Work>
void carry_out(Work work) {
    try {
        work();
    } catch (const tvutil2::ResultError& error) {
        if (error.code() == WPN_E_PLATFORM_UNAVAILABLE) {
            throw Failure{Exit::failed, "no notification server answers on the session bus"};
        }
        throw Failure{Exit::failed, std::string("notification refused: ") + error.what()};
    }
}

// Valid inside an attribute, which is where a button's text goes as it is given.
std::u16string in_attribute(const std::u16string& text) {
    std::u16string out;
    for (const auto c : text) {
        switch (c) {
            case u'&':
                out += u"&amp;";
                break;
            case u'<':
                out += u"&lt;";
                break;
            case u'"':
                out += u"&quot;";
                break;
            default:
                out += c < u' ' ? u'\uFFFD' : c;
        }
    }
    return out;
}

// From the program's folder, below which pictures are looked for, to any file.
std::u16string from_program_folder(const std::string& file) {
    if (file.empty()) return {};
    CString folder;
    AfxGetModulePath(folder, nullptr);
    const auto depth =
        std::count(folder.GetString(), folder.GetString() + folder.GetLength(), u'\\');
    std::u16string path;
    for (std::ptrdiff_t i = 0; i < depth; ++i) path += u"..\\";
    // The drive is the folder's: it has no other place here.
    return path + tool::platform_path_of(file).substr(std::u16string_view(u"C:\\").size());
}

using Answer = std::future<std::u16string>;

// What the first answer says.
Answer expect_answer() {
    // Outlives the handler.
    static auto* const argument = new std::promise<std::u16string>;
    DesktopNotificationManagerCompat::OnActivated(
        [is_set = std::make_shared<std::once_flag>()](
            const DesktopNotificationActivatedEventArgsCompat& activated) {
            std::call_once(*is_set, [&] { argument->set_value(activated.Argument()); });
        });
    return argument->get_future();
}

void print_answer(Answer& answer, bool as_json) {
    tool::print_text("argument", tool::narrow(answer.get()), as_json);
}

void send(const Options& options) {
    const auto name = tool::wide(options.name);
    Answer answer;
    carry_out([&] {
        DesktopNotificationManagerCompat::Register(
            tool::wide(kOwnId), name,
            options.icon.empty() ? u"" : tool::platform_path_of(options.icon));
        if (options.waits) answer = expect_answer();
        TVSendToast(tool::wide(options.title).c_str(), tool::wide(options.text).c_str(),
                    in_attribute(tool::wide(options.button)).c_str(),
                    from_program_folder(options.picture).c_str());
    });
    if (options.waits) print_answer(answer, options.json);
}

std::u16string registered(const char16_t* value) {
    CRegistry key;
    const auto name = u"SOFTWARE\\Classes\\AppUserModelId\\" + tool::wide(kOwnId);
    if (key.Open(HKEY_CURRENT_USER, name.c_str(), 0, KEY_READ) == 0) return {};
    return std::u16string(key.GetValue(value, CString()).View());
}

// The name and the icon stay those under which the notification was sent.
void take_late_answer(const Options& options) {
    Answer answer;
    carry_out([&] {
        DesktopNotificationManagerCompat::Register(tool::wide(kOwnId), registered(u"DisplayName"),
                                                   registered(u"IconUri"));
        answer = expect_answer();
    });
    if (answer.wait_for(std::chrono::milliseconds(options.milliseconds)) !=
        std::future_status::ready) {
        throw Failure{Exit::no, "no notification was answered"};
    }
    print_answer(answer, options.json);
}

void list(const Options& options) {
    auto all = nlohmann::ordered_json::array();
    for (const auto& program : tvutil2::toast_programs()) {
        const auto id = tool::narrow(program.model_id);
        const auto name = tool::narrow(program.display_name);
        const auto class_id = tool::narrow(program.class_text);
        if (options.json) {
            all.push_back({{"id", id},
                           {"name", name},
                           {"class", class_id},
                           {"shown", program.shown},
                           {"scheduled", program.scheduled}});
        } else {
            auto line = id;
            line.append("\t").append(name).append("\t").append(class_id);
            line.append("\t").append(std::to_string(program.shown)).append(" shown\t");
            tool::print(line.append(std::to_string(program.scheduled)).append(" scheduled"));
        }
    }
    if (options.json) tool::print(all);
}

void clear(const Options& options) {
    carry_out([&] {
        Windows::UI::Notifications::ToastNotificationManager::History().Clear(
            tool::wide(options.id));
    });
}

void forget(const Options& options) {
    const auto id = tool::wide(options.id);
    const auto programs = tvutil2::toast_programs();
    const bool is_known =
        std::any_of(programs.begin(), programs.end(),
                    [&id](const tvutil2::ToastProgram& entry) { return entry.model_id == id; });
    if (!is_known) return tool::exit_with(Exit::no);
    clear(options);
    tvutil2::withdraw_toasts(id);
    RegDeleteKeyW(HKEY_CURRENT_USER, (u"SOFTWARE\\Classes\\AppUserModelId\\" + id).c_str());
}

const tool::Command g_notify([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& notify = *app.add_subcommand("notify", "Notifications of the desktop");
    notify.require_subcommand(1);
    const auto add_id = [&options](CLI::App& command) {
        command.add_option("--id", options->id, "User model id of the program")
            ->capture_default_str();
    };
    auto& sender = *notify.add_subcommand("send", "Show a notification, with a button");
    sender.add_option("title", options->title, "Title")->required();
    sender.add_option("text", options->text, "Text below it");
    sender.add_option("--name", options->name, "Name of the program that is shown")
        ->capture_default_str();
    sender.add_option("--icon", options->icon, "File with the program's icon");
    sender.add_option("--picture", options->picture, "File with a picture");
    sender.add_option("--button", options->button, "The button's text")->capture_default_str();
    sender.add_flag("--wait", options->waits, "Wait for the answer and print its arguments");
    tool::add_json_flag(sender, options->json);
    sender.callback([options] { send(*options); });
    auto& taker = *notify.add_subcommand(
        "answered", "Take the answer to a notification that was sent without --wait");
    taker
        .add_option("--timeout", options->milliseconds,
                    "Give up after so many milliseconds, with exit code 1")
        ->capture_default_str();
    tool::add_json_flag(taker, options->json);
    tool::add_to_footer(taker,
                        "Prints the answer's arguments as --wait does. When a person answers a "
                        "notification\nwhose sender has ended, the desktop starts \"tvutil "
                        "-ToastActivated\", which is this\ncommand; what it prints goes to the "
                        "journal of the session.");
    taker.callback([options] { take_late_answer(*options); });
    auto& lister = *notify.add_subcommand(
        "list", "Programs that have notifications: id, name, class, and how many");
    tool::add_json_flag(lister, options->json);
    lister.callback([options] { list(*options); });
    auto& cleaner = *notify.add_subcommand("clear", "Take back what is still shown of an id");
    add_id(cleaner);
    cleaner.callback([options] { clear(*options); });
    auto& forgetter = *notify.add_subcommand(
        "forget", "Take an id out of the registry and the desktop; exit code 1 if it isn't known");
    add_id(forgetter);
    forgetter.callback([options] { forget(*options); });
    auto& namer = *notify.add_subcommand("class-id", "The class id that an id gives");
    namer.add_option("id", options->id, "User model id")->required();
    tool::add_json_flag(namer, options->json);
    namer.callback([options] {
        tool::print_text("class", tool::narrow(tvutil2::class_id_of(tool::wide(options->id))),
                         options->json);
    });
});

}  // namespace
