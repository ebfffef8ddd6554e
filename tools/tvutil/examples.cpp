// Examples at the end of each command's help, in one place, so that they can be read through.
#include <map>

#include "tools/tvutil/command_tree.h"

namespace tool {
namespace {

const std::map<std::string_view, const char*>& examples() {
    static const std::map<std::string_view, const char*> list = {
        {"", "tvutil ini list Features.ini --json"},
        {"addons", "tvutil addons list"},
        {"addons for", "tvutil addons for .abc"},
        {"addons list", "tvutil addons list --json"},
        {"addons trim", "tvutil addons trim --file Addons.ini"},
        {"base64", "printf 'open sesame' | tvutil base64 encode"},
        {"base64 encode", "tvutil base64 encode picture.png"},
        {"base64 decode", "printf 'b3BlbiBzZXNhbWU=' | tvutil base64 decode"},
        {"codepage", "tvutil codepage list"},
        {"codepage list", "tvutil codepage list --json"},
        {"codepage default", "tvutil codepage default"},
        {"completion", "eval \"$(tvutil completion bash)\""},
        {"crash", "tvutil crash list"},
        {"crash list", "tvutil crash list --json"},
        {"crash send", "tvutil crash send --json"},
        {"crash show", "tvutil crash show TVC8_2026-01-31_23-59-59_4711"},
        {"data", "tvutil data --host"},
        {"data check", "tvutil data check && echo wanted as it is"},
        {"data previous", "tvutil data previous 5 Pelrin"},
        {"decode", "printf 'caf\\351' | tvutil decode cp1252"},
        {"encode", "echo grün | tvutil encode latin1 > old.txt"},
        {"error", "tvutil error 5"},
        {"features", "tvutil features --json"},
        {"features set", "tvutil features set dovr.filefilter on"},
        {"file-version", "tvutil file-version Pelrin.exe"},
        {"firewall", "tvutil firewall list"},
        {"firewall check", "tvutil firewall check Pelrin.exe"},
        {"firewall list", "tvutil firewall list --json"},
        {"http", "tvutil http get https://localhost/"},
        {"http addresses", "tvutil http addresses --json"},
        {"http get", "tvutil http get https://localhost/ > page.html"},
        {"import", "tvutil import plan --json"},
        {"import plan", "tvutil import plan --kind pelrin"},
        {"import run", "tvutil import run && tvutil import status"},
        {"import status", "tvutil import status"},
        {"ini", "tvutil ini get Features.ini Common CertKey"},
        {"ini convert", "tvutil ini convert old.ini --from latin1 --to utf-16"},
        {"ini get", "tvutil ini get Features.ini Common CertKey"},
        {"ini lint", "tvutil ini lint Features.ini"},
        {"ini list", "tvutil ini list - < Features.ini"},
        {"ini remove", "tvutil ini remove Features.ini Common CertKey"},
        {"ini set", "tvutil ini set Features.ini Common CertKey 1"},
        {"links", "tvutil links home 1 2 0"},
        {"links check-support", "tvutil links check-support 'https://localhost/help' && echo good"},
        {"links home", "tvutil links home 1 2 0"},
        {"links manual", "tvutil links manual Pelrin --open"},
        {"links page", "tvutil links page 1 2 0 --json"},
        {"links program", "tvutil links program --set online"},
        {"links support", "tvutil links support 1"},
        {"links token", "tvutil links token 1 2 0"},
        {"log", "tvutil log start 'C:\\home\\a' Pelrin"},
        {"log follow", "tvutil log follow 'C:\\home\\a\\run.log'"},
        {"log global", "tvutil log global"},
        {"log header", "tvutil log header 'C:\\home\\a\\run.log'"},
        {"log start", "tvutil log start 'C:\\home\\a' Pelrin"},
        {"log sweep", "tvutil log sweep 'C:\\home\\a' --dry-run"},
        {"log write", "tvutil log write 'C:\\home\\a\\run.log' 'connected'"},
        {"manual", "tvutil manual > tvutil.1 && man ./tvutil.1"},
        {"notify", "tvutil notify send 'Transfer done' '3 files'"},
        {"notify class-id", "tvutil notify class-id Tolvarine.Dovr.Notifications"},
        {"notify clear", "tvutil notify clear --id Tolvarine.Dovr.Notifications"},
        {"notify forget", "tvutil notify forget --id Tolvarine.Dovr.Notifications"},
        {"notify list", "tvutil notify list --json"},
        {"notify send", "tvutil notify send 'Transfer done' '3 files' --button Show --wait"},
        {"object", "tvutil object wait event ready --timeout 5000"},
        {"object hold", "tvutil object hold install < /dev/tty"},
        {"object set", "tvutil object set ready || echo nobody waits"},
        {"object wait", "tvutil object wait event ready --timeout 5000"},
        {"option", "tvutil option list --company Tolvarine --product Pelrin"},
        {"option get", "tvutil option get --file setup.ini --section View Theme"},
        {"option list", "tvutil option list --company Tolvarine --registry --json"},
        {"option set", "tvutil option set --company Tolvarine --registry Lines 500 --number"},
        {"os", "tvutil os --json"},
        {"path", "tvutil path to-host 'C:\\home\\a'"},
        {"path append", "tvutil path append 'C:\\a\\b' '..\\c'"},
        {"path expand", "tvutil path expand '%HOME%\\sessions' --host"},
        {"path from-host", "tvutil path from-host ~/sessions"},
        {"path match", "tvutil path match '*.ini' Features.ini && echo yes"},
        {"path save-as", "tvutil path save-as 'report (12)'"},
        {"path split-args", "tvutil path split-args '-s \"my session\" host'"},
        {"path to-host", "tvutil path to-host 'C:\\home\\a'"},
        {"path truncate", "tvutil path truncate 'C:\\a\\very\\long\\path.ini' 16"},
        {"product", "tvutil product name"},
        {"product build", "tvutil product build 1"},
        {"product name", "tvutil product name 1"},
        {"product package", "tvutil product package 1 --json"},
        {"product running", "tvutil product running"},
        {"product version", "tvutil product version 1 --major 8"},
        {"protect", "printf 'open sesame' | tvutil protect"},
        {"reg", "tvutil reg query 'HKCU\\Software' --recursive"},
        {"reg add", "tvutil reg add 'HKCU\\Software\\Tolvarine\\Pelrin\\8' Lines 500 --type dword"},
        {"reg delete", "tvutil reg delete 'HKCU\\Software\\Tolvarine\\Pelrin\\8' --value Lines"},
        {"reg export", "tvutil reg export 'HKCU\\Software\\Tolvarine' settings.reg"},
        {"reg import", "tvutil reg import settings.reg"},
        {"reg query", "tvutil reg query 'HKCU\\Software\\Tolvarine' --recursive"},
        {"reg rename", "tvutil reg rename 'HKCU\\Software\\Tolvarine\\Pelrin\\8' 8-old"},
        {"reg watch", "tvutil reg watch 'HKCU\\Software\\Tolvarine' --recursive --once"},
        {"reveal", "tvutil reveal --text-file protected.txt"},
        {"sessions", "tvutil sessions list"},
        {"sessions find", "tvutil sessions find 'C:\\home\\a\\sessions' && echo yes"},
        {"sessions list", "tvutil sessions list --host"},
        {"sessions move", "tvutil sessions move Pelrin 'C:\\home\\a\\sessions' --dry-run"},
        {"sessions where", "cd \"$(tvutil sessions where Pelrin --host)\""},
        {"sign", "tvutil sign Pelrin.exe --certificates maker.pem --key maker.key"},
        {"string", "tvutil string get 14107 --language de"},
        {"string get", "tvutil string get 14107 --language de"},
        {"string languages", "tvutil string languages"},
        {"string list", "tvutil string list --language fr"},
        {"text", "tvutil text detect notes.txt"},
        {"text convert", "tvutil text convert notes.txt - --to utf-8 --line-ends lf"},
        {"text detect", "tvutil text detect notes.txt"},
        {"update", "tvutil update status 1"},
        {"update check", "tvutil update check 1"},
        {"update due", "tvutil update due 1 && echo now"},
        {"update force", "tvutil update force 1"},
        {"update id", "tvutil update id"},
        {"update set", "tvutil update set 1 on --interval 14"},
        {"update status", "tvutil update status 1 --json"},
        {"url", "tvutil url parse ssh://alice@192.0.2.10:22"},
        {"url launch", "tvutil url make --scheme ssh --host 192.0.2.10 | tvutil url launch -"},
        {"url make",
         "tvutil url make --scheme ssh --user alice --host 192.0.2.10 --password-file -"},
        {"url parse", "tvutil url parse ssh://alice@192.0.2.10:22 --json"},
        {"verify", "tvutil verify Pelrin.exe --maker && echo the maker\'s, and as it was signed"},
        {"watch", "tvutil watch 'C:\\home\\a\\sessions'"},
        {"window", "tvutil window list"},
        {"window find", "tvutil window find --class TVUTIL2::TIMERWND"},
        {"window list", "tvutil window list --json"},
        {"window post", "tvutil window post \"$(tvutil window find --title Pelrin)\" 0x10"},
    };
    return list;
}

void add_example(CLI::App& command) {
    const auto example = examples().find(path_of(command));
    if (example != examples().end()) {
        command.footer(std::string("Example:\n  ") + example->second + "\n\n" +
                       command.get_footer());
    }
    for (auto* sub_command : command.get_subcommands([](CLI::App*) { return true; })) {
        add_example(*sub_command);
    }
}

}  // namespace

void add_examples(CLI::App& program) {
    add_example(program);
}

}  // namespace tool
