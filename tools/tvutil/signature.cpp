// tvutil sign, tvutil verify: signatures of executables.
#include "tvutil2/services/signature.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/trust/sign_file.h"
#include "tvutil2/platform/trust/signature_check.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using Json = nlohmann::ordered_json;
using tool::Exit;
using tool::Failure;

constexpr std::size_t kLargestKey = std::size_t{1} << 20;
constexpr std::size_t kLargestInput = std::size_t{1} << 32;

struct Options {
    std::string file;
    std::string output;
    std::string certificates;
    std::string key;
    bool maker = false;
    bool json = false;
};

std::string time_text(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    std::array<char, 32> text{};
    if (seconds == 0 || gmtime_r(&time, &parts) == nullptr) return {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

std::string code_text(LONG code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned int>(code));
    return text.data();
}

// Certificates hold whatever their maker put in.
std::string sound(const std::string& text) {
    return tool::narrow(tvutil2::to_utf16_lossy(text));
}

const char* state_text(const tvutil2::SignatureReport& report) {
    if (report.verdict == TRUST_E_BAD_DIGEST) return "changed";
    if (report.verdict != TRUST_E_NOSIGNATURE) return "intact";
    return report.error == static_cast<DWORD>(TRUST_E_MALFORMED_SIGNATURE) ? "malformed"
                                                                           : "unsigned";
}

const char* chain_text(tvutil2::ChainState state) {
    using tvutil2::ChainState;
    switch (state) {
        case ChainState::trusted:
            return "trusted";
        case ChainState::known:
            return "known";
        case ChainState::unknown_root:
            return "unknown root";
        case ChainState::expired:
            return "expired";
        case ChainState::wrong_usage:
            return "wrong usage";
        default:
            return "incomplete";
    }
}

Json chain_json(const tvutil2::SignatureFacts& facts) {
    auto chain = Json::array();
    for (const auto& certificate : facts.chain) {
        chain.push_back({{"subject", sound(certificate.subject)},
                         {"issuer", sound(certificate.issuer)},
                         {"serial", certificate.serial},
                         {"sha256", certificate.fingerprint},
                         {"from", time_text(certificate.valid_from)},
                         {"until", time_text(certificate.valid_until)}});
    }
    return chain;
}

Json report_json(const std::string& file, const tvutil2::SignatureReport& report, bool is_makers) {
    Json out{{"file", file},
             {"state", state_text(report)},
             {"verdict", code_text(report.verdict)},
             {"maker", is_makers}};
    const auto& facts = report.facts;
    if (facts.digest.empty()) return out;
    out["kind"] = report.kind == tvutil2::SignedKind::pe ? "PE" : "ELF";
    out["digest"] = {{"algorithm", facts.digest_name}, {"value", facts.digest}};
    if (facts.chain.empty()) return out;
    out["signer"] = sound(facts.chain[0].display_name);
    out["chain_state"] = chain_text(facts.chain_state);
    out["chain"] = chain_json(facts);
    out["time"] = time_text(facts.signing_time);
    return out;
}

void print_report(const Json& report) {
    tool::print("state=" + report["state"].get<std::string>());
    tool::print(std::string("maker=") + (report["maker"].get<bool>() ? "yes" : "no"));
    if (!report.contains("chain")) return;
    for (const char* const key : {"signer", "chain_state", "time"}) {
        tool::print(std::string(key) + "=" + report[key].get<std::string>());
    }
    tool::print(report["digest"]["algorithm"].get<std::string>() + "=" +
                report["digest"]["value"].get<std::string>());
    for (const auto& certificate : report["chain"]) {
        tool::print("certificate=" + certificate["subject"].get<std::string>());
    }
}

// What keeps a file from being read is no answer to the question.
bool is_about_the_file(DWORD error) {
    constexpr DWORD kTrustErrors = 0x80000000;
    return (error & kTrustErrors) == 0 && error != ERROR_BAD_EXE_FORMAT;
}

void verify(const Options& options) {
    const tool::NamedFile file(options.file, kLargestInput);
    const auto path = file.path();
    const auto report = tvutil2::check_signature(path.c_str());
    if (report.verdict == TRUST_E_NOSIGNATURE && is_about_the_file(report.error)) {
        throw Failure{Exit::failed, tool::error_text(options.file, report.error)};
    }
    const bool is_makers = TvCheckFileIsTolvarineSigned(path.c_str()) != 0;
    const auto shown = report_json(options.file, report, is_makers);
    if (options.json) {
        tool::print(shown);
    } else {
        print_report(shown);
    }
    const bool is_yes = options.maker ? is_makers : tvutil2::is_intact(report.verdict);
    if (!is_yes) tool::exit_with(Exit::no);
}

void sign(const Options& options, const tool::SecretOption& password) {
    namespace fs = std::filesystem;
    if (options.output == "-" && options.file != "-") {
        throw Failure{Exit::usage, "standard output is for what came from standard input"};
    }
    tvutil2::SigningIdentity identity;
    identity.certificates = tool::read_input(options.certificates, kLargestKey);
    identity.key = tool::read_input(options.key, kLargestKey);
    if (password.given()) identity.password = tool::narrow(password.read());
    const tool::NamedFile file(options.file, kLargestInput);
    const auto source = fs::absolute(file.host()).string();
    const bool is_elsewhere = !options.output.empty() && options.output != "-";
    const auto target = is_elsewhere ? fs::absolute(options.output).string() : source;
    const auto wrong = tvutil2::sign_elf_file(source, target, identity);
    if (wrong.empty()) {
        if (!is_elsewhere) file.give_back();
        return;
    }
    const auto error = GetLastError();
    if (error == ERROR_INVALID_DATA) throw Failure{Exit::refused, options.file + ": " + wrong};
    throw Failure{Exit::failed, tool::error_text(options.file, error)};
}

const tool::Command g_signature([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& check = *app.add_subcommand(
        "verify", "Check an executable's signature; exit code 1 when it isn't intact");
    check.add_option("FILE", options->file, "PE or ELF file")->required();
    check.add_flag("--maker", options->maker, "Exit code 1 also when it isn't the maker's");
    tool::add_json_flag(check, options->json);
    check.callback([options] { verify(*options); });

    auto& make = *app.add_subcommand("sign", "Sign an ELF file");
    make.add_option("FILE", options->file, "ELF file; a signature that it has is replaced")
        ->required();
    make.add_option("--certificates", options->certificates,
                    "The signer's certificate and the rest of its chain, PEM")
        ->required();
    make.add_option("--key", options->key, "The certificate's private key, PEM")->required();
    const auto password =
        std::make_shared<tool::SecretOption>(make, "password", "the private key's password", false);
    make.add_option("--output", options->output, "Write the signed file there instead");
    make.callback([options, password] { sign(*options, *password); });
});

}  // namespace
