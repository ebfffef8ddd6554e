#include "tools/tvutil/url_launch.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/url/url_info.h"
#include "tvutil2/url/url_launch.h"

#include <memory>
#include <string>
#include <utility>

#include "tools/tvutil/command.h"

namespace tool {
namespace {

constexpr std::size_t kLongestUrl = std::size_t{1} << 20U;

void launch(const std::string& url) {
    CUrlInfo info;
    if (info.Parse_URL(url_argument(url).c_str(), 1) == 0) {
        throw Failure{Exit::refused, "that is no session URL"};
    }
    if (ExecuteURL(info) == 0) {
        throw Failure{Exit::no, "no product takes a URL of the scheme \"" +
                                    narrow(info.m_strScheme.View()) +
                                    "\" and this host, or it isn't installed or doesn't start"};
    }
}

}  // namespace

std::u16string url_argument(const std::string& argument) {
    if (argument != "-") return wide(argument);
    auto url = read_input(argument, kLongestUrl);
    if (url.ends_with('\n')) url.pop_back();
    if (url.ends_with('\r')) url.pop_back();
    auto text = tvutil2::to_utf16(url);
    if (!text) throw Failure{Exit::refused, "the input isn't valid UTF-8"};
    return std::move(*text);
}

void add_url_launch(CLI::App& url) {
    auto* const command = url.add_subcommand(
        "launch", "Start the product that a session URL is for, and don't wait for it");
    tool::add_to_footer(
        *command,
        "The product is looked for beside this program, then through the registry\n"
        "(HKLM\\Software\\Tolvarine\\PRODUCT\\VERSION, value \"Path\"). ssh, telnet and rlogin go "
        "to\n"
        "Pelrin, ftp and sftp to Dovr, xdm and xdmcp to Ombrelia. Secrets of the URL stay "
        "protected\n"
        "on the product's command line.");
    const auto text = std::make_shared<std::string>();
    command
        ->add_option("URL", *text,
                     "Session URL, as \"tvutil url make\" writes it; \"-\" reads it from "
                     "standard input")
        ->required();
    command->callback([text] { launch(*text); });
}

}  // namespace tool
