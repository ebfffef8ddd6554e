// tvutil url: session URLs read, written and launched.
#include "tvutil2/url/url_info.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/url_launch.h"

namespace {

using tool::Exit;
using tool::Failure;

constexpr std::string_view kHidden = "(hidden)";

struct ParseOptions {
    std::string url;
    bool keep_escapes = false;
    bool show_secrets = false;
    bool json = false;
};

struct MakeOptions {
    explicit MakeOptions(CLI::App& command)
        : password(command, "password", "the password", false),
          passphrase(command, "passphrase", "the pass phrase", false) {}

    std::string scheme;
    std::string user;
    std::string host;
    WORD port = 0;
    std::string path;
    std::vector<std::string> items;
    bool duplicate = false;
    bool json = false;
    tool::SecretOption password;
    tool::SecretOption passphrase;
};

std::vector<std::pair<CString, CString>> items_of(const CUrlInfo& info) {
    std::vector<std::pair<CString, CString>> items;
    for (auto position = info.m_mapParams.GetStartPosition(); position != nullptr;) {
        auto& [key, value] = items.emplace_back();
        info.m_mapParams.GetNextAssoc(position, key, value);
    }
    return items;
}

nlohmann::ordered_json json_of(const CUrlInfo& info, bool show_secrets) {
    const auto text = [](const CString& field) { return tool::narrow(field.View()); };
    const auto secret = [&](const CString& field) {
        return show_secrets || field.IsEmpty() ? text(field) : std::string(kHidden);
    };
    nlohmann::ordered_json items = nlohmann::ordered_json::object();
    for (const auto& [key, value] : items_of(info)) {
        items[text(key)] = key.CompareNoCase(u"Passphrase") == 0 ? secret(value) : text(value);
    }
    return {{"scheme", text(info.m_strScheme)},
            {"user", text(info.m_strUser)},
            {"password", secret(info.m_strPassword)},
            {"host", text(info.m_strHost)},
            {"port", info.m_nPort},
            {"path", text(info.m_strPath)},
            {"items", std::move(items)}};
}

// "name: value" for what there is.
void print_fields(const nlohmann::ordered_json& fields) {
    for (const auto& [name, value] : fields.items()) {
        if (value.is_number() && value != 0) tool::print(name + ": " + value.dump());
        if (value.is_string() && value != "") tool::print(name + ": " + value.get<std::string>());
    }
    for (const auto& [key, value] : fields["items"].items()) {
        tool::print("item " + key + ": " + value.get<std::string>());
    }
}

void parse(const ParseOptions& options) {
    CUrlInfo info;
    if (info.Parse_URL(tool::url_argument(options.url).c_str(), options.keep_escapes ? 0 : 1) ==
        0) {
        throw Failure{Exit::refused, "not a session URL"};
    }
    const auto fields = json_of(info, options.show_secrets);
    if (options.json) {
        tool::print(fields);
    } else {
        print_fields(fields);
    }
}

void make(const MakeOptions& options) {
    CUrlInfo info;
    info.m_strScheme = tool::wide(options.scheme);
    info.m_strUser = tool::wide(options.user);
    info.m_strHost = tool::wide(options.host);
    info.m_nPort = options.port;
    info.m_strPath = tool::wide(options.path);
    for (const auto& item : options.items) {
        const auto text = tool::wide(item);
        const auto equals = text.find(u'=');
        if (equals == 0 || equals == std::u16string::npos) {
            throw Failure{Exit::usage, "--item wants KEY=VALUE"};
        }
        const CString key(text.substr(0, equals));
        if (key.CompareNoCase(u"Passphrase") == 0) {
            throw Failure{Exit::usage, "a pass phrase comes from --passphrase-file"};
        }
        info.m_mapParams[key] = CString(text.substr(equals + 1));
    }
    if (options.password.given() && options.passphrase.given() &&
        options.password.is_standard_input() && options.passphrase.is_standard_input()) {
        throw Failure{Exit::usage, "password and pass phrase can't both be standard input"};
    }
    if (options.password.given()) {
        if (options.user.empty()) throw Failure{Exit::usage, "a password needs --user"};
        info.m_strPassword = options.password.read();
    }
    if (options.passphrase.given()) {
        info.m_mapParams[u"Passphrase"] = CString(options.passphrase.read());
    }
    CString url;
    if (info.MakeURL(url, options.duplicate ? 1 : 0, 1) == 0) {
        throw Failure{Exit::failed, "this account has no key to protect a secret under"};
    }
    tool::print_text("url", tool::narrow(url.View()), options.json);
}

void add_parse(CLI::App& url) {
    auto* const command = url.add_subcommand("parse", "Show the parts of a session URL");
    const auto options = std::make_shared<ParseOptions>();
    command->add_option("URL", options->url, "The URL; \"-\" reads it from standard input")
        ->required();
    command->add_flag("--keep-escapes", options->keep_escapes,
                      "Show all parts as they are written");
    command->add_flag("--show-secrets", options->show_secrets,
                      "Show the password and the pass phrase, read under this account's key");
    tool::add_json_flag(*command, options->json);
    command->callback([options] { parse(*options); });
}

void add_make(CLI::App& url) {
    auto* const command = url.add_subcommand("make", "Write a session URL from its parts");
    const auto options = std::make_shared<MakeOptions>(*command);
    command->add_option("--scheme", options->scheme, "ssh, telnet, rlogin, ftp, sftp, xdm, ...");
    command->add_option("--user", options->user, "User name");
    command->add_option("--host", options->host, "Host name or address")->required();
    command->add_option("--port", options->port, "Port; 0 (the default) is none");
    command->add_option("--path", options->path, "Path");
    command->add_option("--item", options->items, "Query item, KEY=VALUE; may be repeated")
        ->allow_extra_args(false);
    command->add_flag("--duplicate", options->duplicate, "Ask for a duplicate session");
    tool::add_json_flag(*command, options->json);
    command->callback([options] { make(*options); });
}

const tool::Command kCommand([](CLI::App& app) {
    auto* const url = app.add_subcommand("url", "Read, write and launch session URLs");
    url->require_subcommand(1);
    add_parse(*url);
    add_make(*url);
    tool::add_url_launch(*url);
});

}  // namespace
