// "tvutil product": who is who in the family, and what the registry says is installed.
#include "tvutil2/frame/product.h"

#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

constexpr unsigned int kProducts = 8;

struct Options {
    unsigned int code = 0;
    unsigned int major = tvutil2::kMajorVersion;
    bool json = false;
};

void print_value(const Options& options, const char* name, const CString& value) {
    if (options.json) {
        tool::print({{"code", options.code},
                     {"major", options.major},
                     {name, value.IsEmpty() ? nlohmann::ordered_json(nullptr)
                                            : nlohmann::ordered_json(tool::narrow(value.View()))}});
    } else if (!value.IsEmpty()) {
        tool::print(tool::narrow(value.View()));
    }
    if (value.IsEmpty()) tool::exit_with(tool::Exit::no);
}

void print_names(bool json) {
    auto list = nlohmann::ordered_json::array();
    for (unsigned int code = 0; code < kProducts; ++code) {
        const auto name = tool::narrow(TvGetProductName(code).View());
        if (json) {
            list.push_back({{"code", code}, {"name", name}});
        } else {
            tool::print(std::to_string(code) + '\t' + name);
        }
    }
    if (json) tool::print(list);
}

void print_code(const Options& options, unsigned int code) {
    const auto name = tool::narrow(TvGetProductName(code).View());
    if (options.json) {
        tool::print({{"code", code}, {"name", name}});
    } else {
        tool::print(std::to_string(code) + '\t' + name);
    }
}

void add_fact(CLI::App& product, const char* name, const char* help,
              void (*show)(const Options& options)) {
    auto* const command = product.add_subcommand(name, help);
    const auto options = std::make_shared<Options>();
    command->add_option("CODE", options->code, "Program code, see \"tvutil product name\"")
        ->required()
        ->check(CLI::Range(0U, kProducts - 1));
    command->add_option("--major", options->major, "Major version (default 8)");
    tool::add_json_flag(*command, options->json);
    command->callback([options, show] { show(*options); });
}

void add_name(CLI::App& product) {
    auto* const command = product.add_subcommand("name", "Name of a program code, or all of them");
    const auto options = std::make_shared<Options>();
    auto* const code = command->add_option("CODE", options->code, "Program code")
                           ->check(CLI::Range(0U, kProducts - 1));
    tool::add_json_flag(*command, options->json);
    command->callback([options, code] {
        if (code->count() == 0) return print_names(options->json);
        print_code(*options, options->code);
    });
}

const tool::Command g_command([](CLI::App& app) {
    auto* const product = app.add_subcommand("product", "Products: names and installed versions");
    product->require_subcommand(1);
    add_name(*product);
    add_fact(*product, "version", "Installed version; exit code 1 when there is none",
             [](const Options& options) {
                 print_value(options, "version", TvGetProductVersion(options.code, options.major));
             });
    add_fact(
        *product, "build", "Build number of the installed version", [](const Options& options) {
            print_value(options, "build", TvGetProductBuildVersion(options.code, options.major));
        });
    add_fact(*product, "package", "Code and name of the package that the product came in",
             [](const Options& options) {
                 print_code(options, TvGetPackageCode(options.code, options.major));
             });
    auto* const running =
        product->add_subcommand("running", "Code and name that the library gives to this program");
    const auto options = std::make_shared<Options>();
    tool::add_json_flag(*running, options->json);
    running->callback([options] {
        print_code(*options, static_cast<unsigned int>(TvGetProgramCodeFromInstalled()));
    });
});

}  // namespace
