// tvutil protect, tvutil reveal: secrets to protected strings and back.
#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/url/string_protection.h"
#include "tvutil2/url/url_info.h"

#include <memory>
#include <optional>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

// What both commands ask for.
class Protection {
  public:
    Protection(CLI::App& command, const std::string& name, const std::string& what)
        : m_text(command, name, what, true) {
        command
            .add_option("--key", m_key,
                        "Whose key: \"account\" (the default: that of session URLs) or \"machine\" "
                        "(user and computer)")
            ->check(CLI::IsMember({"account", "machine"}));
        command.add_option("--key-file", m_key_file,
                           "File with a key text of your own; \"-\" is standard input");
        command
            .add_option("--mac", m_mac,
                        "\"md5\" (the default): with a digest that shows damage and wrong keys; or "
                        "\"none\"")
            ->check(CLI::IsMember({"md5", "none"}));
        tool::add_json_flag(command, m_is_json);
    }

    [[nodiscard]] CString text() const {
        CString text(m_text.read());
        if (text.View().find(u'\0') != std::u16string_view::npos) {
            throw Failure{Exit::refused, "a text with a zero in it can't be kept"};
        }
        return text;
    }
    [[nodiscard]] bool is_json() const { return m_is_json; }
    [[nodiscard]] CUrlInfo::MAC mac() const {
        return m_mac == "md5" ? CUrlInfo::MAC_MD5 : CUrlInfo::MAC_NONE;
    }
    [[nodiscard]] CAnsiString key() const {
        if (!m_key_file.empty()) {
            if (m_key_file == "-" && m_text.is_standard_input()) {
                throw Failure{Exit::usage, "key and text can't both be standard input"};
            }
            auto text = tool::read_input(m_key_file, kLongestKey);
            if (text.ends_with('\n')) text.pop_back();
            return CAnsiString(tool::wide(text).c_str());
        }
        if (m_key == "machine") return CAnsiString(TvGetCipherKey());
        CString text;
        if (GetCurSID(text, u"5.3") == 0) throw Failure{Exit::failed, "this account has no name"};
        return CAnsiString(text.GetString());
    }

  private:
    static constexpr std::size_t kLongestKey = 65536;

    tool::SecretOption m_text;
    std::string m_key = "account";
    std::string m_key_file;
    std::string m_mac = "md5";
    bool m_is_json = false;
};

void protect(const Protection& options) {
    auto text = options.text();
    CUrlInfo::EncryptString(options.key(), text, options.mac(), CUrlInfo::ENC_RC4);
    tool::print_text("text", tool::narrow(text.View()), options.is_json());
}

void reveal(const Protection& options) {
    auto text = options.text();
    if (CUrlInfo::DecryptString(options.key(), text, options.mac(), CUrlInfo::ENC_RC4) == 0) {
        throw Failure{Exit::refused, "not a protected string under this key"};
    }
    tool::print_text("text", tool::narrow(text.View()), options.is_json());
}

const tool::Command kCommand([](CLI::App& app) {
    const auto add = [&app](const char* name, const char* about, const char* option,
                            const char* what, void (*run)(const Protection&)) {
        auto* const command = app.add_subcommand(name, about);
        const auto options = std::make_shared<Protection>(*command, option, what);
        command->callback([options, run] { run(*options); });
    };
    add("protect", "Print a secret as a protected string", "secret", "the secret", protect);
    add("reveal", "Print the secret in a protected string", "text", "the protected string", reveal);
});

}  // namespace
