// tvutil links: what the Help menu of a product opens.
#include "tvutil2/data/files.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/services/help_links.h"
#include "tvutil2/services/http.h"

#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

constexpr unsigned int kLastProduct = 7;

struct Options {
    unsigned int code = 0;
    unsigned int major = tvutil2::kMajorVersion;
    int type = 0;
    unsigned int argument = 0;
    std::string text;
    bool open = false;
    bool json = false;
    bool host = false;
};

HTTP_LINK_TYPE type_of(const Options& options) {
    return static_cast<HTTP_LINK_TYPE>(options.type);
}

void show_manual(const Options& options) {
    const auto product = tool::wide(options.text);
    const auto path = tvutil2::manual_path(product.c_str());
    const bool is_there = DoesFileExist(path) != 0;
    const auto shown = tool::shown_path(path.View(), options.host);
    if (options.json) {
        tool::print({{"manual", shown}, {"present", is_there}});
    } else {
        tool::print(shown);
    }
    if (!is_there) return tool::exit_with(Exit::no);
    if (options.open) TvOpenHelpPdfFile(product.c_str());
}

void show_token(const Options& options) {
    const auto token =
        TvGetHTTPToken(options.code, options.major, type_of(options), options.argument);
    tool::print_text("token", tool::narrow(token.View()), options.json);
}

void show_page(const Options& options) {
    CString numbers[2];
    numbers[0].Format(u"%d", options.type);
    numbers[1].Format(u"%u", options.argument);
    const auto link = TvGetHttpHelpAddress() +
                      TvGetHelpLink(options.code, options.major, 0, numbers[0], numbers[1]);
    tool::print_text("link", tool::narrow(link.View()), options.json);
}

void show_home(const Options& options) {
    const auto link = tool::narrow(
        TvGetHomePageLink(options.code, options.major, type_of(options), options.argument));
    tool::print_text("link", link, options.json);
    if (options.open) {
        TvOpenHomePage(options.code, options.major, 0, type_of(options), options.argument);
    }
}

void show_support(const Options& options) {
    if (TVUTIL_IsUserSupportMenu(options.code, 0) == 0) return tool::exit_with(Exit::no);
    const auto& entry = tvutil2::support_entry();
    const auto title = tool::narrow(entry.title.View());
    const auto link = tool::narrow(entry.link.View());
    if (options.json) {
        tool::print({{"title", title}, {"link", link}});
    } else {
        tool::print(title + '\t' + link);
    }
    if (options.open) TVUTIL_OnUserSupportMenu(0, 0);
}

void test_support_link(const Options& options) {
    const auto link = tvutil2::cleaned_link(CString(tool::wide(options.text).c_str()));
    const bool is_good = tvutil2::is_web_link(link.View());
    const auto shown = tool::narrow(link.View());
    if (options.json) {
        tool::print({{"link", shown}, {"good", is_good}});
    } else {
        tool::print(shown);
    }
    if (!is_good) tool::exit_with(Exit::no);
}

void show_program(const Options& options) {
    if (!options.text.empty()) {
        const int wanted = options.text == "online" ? -1 : std::stoi(options.text);
        if (!tvutil2::set_help_program(wanted)) {
            throw Failure{Exit::failed, "the choice could not be stored"};
        }
    }
    const int program = TvGetHelpProgram(FALSE);
    const bool is_online = program < 0;
    if (options.json) {
        tool::print({{"online", is_online}, {"program", program}});
    } else {
        tool::print(is_online ? "online" : std::to_string(program));
    }
}

CLI::App& add(CLI::App& links, const char* name, const char* help,
              const std::shared_ptr<Options>& options, void (*run)(const Options& options)) {
    auto& command = *links.add_subcommand(name, help);
    tool::add_json_flag(command, options->json);
    command.callback([options, run] { run(*options); });
    return command;
}

void add_code(CLI::App& command, const std::shared_ptr<Options>& options) {
    command.add_option("CODE", options->code, "Program code, see \"tvutil product name\"")
        ->required()
        ->check(CLI::Range(0U, kLastProduct));
}

void add_request(CLI::App& command, const std::shared_ptr<Options>& options) {
    add_code(command, options);
    command.add_option("TYPE", options->type, "What the link is for, a number")->required();
    command.add_option("ARGUMENT", options->argument, "A number that goes with it")->required();
    command.add_option("--major", options->major, "Major version (default 8)");
}

void add_open(CLI::App& command, const std::shared_ptr<Options>& options) {
    command.add_flag("--open", options->open, "Let the desktop open it, too");
}

const tool::Command g_links([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& links = *app.add_subcommand(
        "links", "What the Help menu of a product opens: manual, web pages, support entry");
    links.require_subcommand(1);
    auto& manual =
        add(links, "manual", "The manual beside this program; exit code 1 when it isn't there",
            options, &show_manual);
    manual.add_option("PRODUCT", options->text, "Name of the product")->required();
    tool::add_host_flag(manual, options->host);
    add_open(manual, options);
    add_request(add(links, "token", "The token of a request", options, &show_token), options);
    add_request(add(links, "page", "The address of a help page", options, &show_page), options);
    auto& home = add(links, "home", "The address of a service link", options, &show_home);
    add_request(home, options);
    add_open(home, options);
    auto& support = add(links, "support",
                        "Title and link of the administrator's support entry; exit code 1 when "
                        "there is none that is good",
                        options, &show_support);
    add_code(support, options);
    add_open(support, options);
    auto& test = add(links, "check-support",
                     "A support link as it would be kept; exit code 1 when it isn't good", options,
                     &test_support_link);
    test.add_option("LINK", options->text, "The link")->required();
    auto& program = add(links, "program", "The program that opens the manual, or \"online\"",
                        options, &show_program);
    program.add_option("--set", options->text, "online, or the program's number")
        ->check(CLI::IsMember({"online", "0", "1", "2"}));
});

}  // namespace
