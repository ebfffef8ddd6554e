// tvutil http: fetches an address, and tells where the maker's services are.
#include "tvutil2/services/http.h"

#include "tvutil2/framework/inet.h"
#include "tvutil2/platform/base/last_error.h"

#include <iostream>
#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

struct Options {
    std::string url;
    bool json = false;
};

// The call itself can't tell an address that it doesn't understand from an empty body.
void expect_web_address(const std::u16string& url, const std::string& shown) {
    DWORD service = 0;
    CString server;
    CString object;
    INTERNET_PORT port = 0;
    if (AfxParseURL(url.c_str(), service, server, object, port) == FALSE ||
        (service != INTERNET_SERVICE_HTTP && service != AFX_INET_SERVICE_HTTPS)) {
        throw Failure{Exit::usage, shown + ": no http or https address"};
    }
}

void get(const Options& options) {
    const auto url = tool::wide(options.url);
    expect_web_address(url, options.url);
    CString response;
    SetLastError(0);
    const auto result = TvHTTPConnection(url.c_str(), response);
    const auto body = tool::narrow(response.View());
    if (result != 0) throw Failure{Exit::failed, tool::error_text(options.url, result)};
    if (options.json) {
        tool::print(nlohmann::ordered_json{{"url", options.url}, {"body", body}});
    } else {
        std::cout << body << std::flush;
    }
}

void show_addresses(bool as_json) {
    const auto transact = tool::narrow(TvGetHttpTransactAddress().View());
    const auto help = tool::narrow(TvGetHttpHelpAddress().View());
    if (as_json) {
        tool::print(nlohmann::ordered_json{{"transact", transact}, {"help", help}});
    } else {
        tool::print("transact=" + transact);
        tool::print("help=" + help);
    }
}

const tool::Command g_http([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& http = *app.add_subcommand("http", "Web addresses: fetched, and the services' own");
    http.require_subcommand(1);
    auto& fetch = *http.add_subcommand(
        "get", "Fetch an address and print its body. A certificate of any kind passes");
    fetch.add_option("url", options->url, "http or https address")->required();
    tool::add_json_flag(fetch, options->json);
    fetch.callback([options] { get(*options); });
    auto& addresses = *http.add_subcommand("addresses", "Where the maker's web services are");
    tool::add_json_flag(addresses, options->json);
    addresses.callback([options] { show_addresses(options->json); });
});

}  // namespace
