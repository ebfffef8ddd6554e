// tvutil lang: the language of a product.
#include "tvutil2/lang/language_choice.h"
#include "tvutil2/lang/language_selection.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/locale.h"

#include <memory>
#include <string>

#include "tools/tvutil/command.h"
#include "tools/tvutil/language_names.h"

namespace {

using tool::Exit;
using tool::Failure;
using tvutil2::LanguageSource;

struct Options {
    std::string product;
    std::string language;
    bool is_temporary = false;
    bool keeps = false;
    bool json = false;
};

const char* shown_source(LanguageSource source) {
    switch (source) {
        case LanguageSource::user:
            return "user";
        case LanguageSource::machine:
            return "machine";
        default:
            return "system";
    }
}

void show(const Options& options) {
    const auto choice = tvutil2::language_choice(tool::wide(options.product).c_str());
    const auto language = TvMapResourceLanguage(choice.language);
    nlohmann::ordered_json members{{"language", tool::shown_id(language)},
                                   {"name", tool::shown_name(language)},
                                   {"from", shown_source(choice.source)},
                                   {"stored", tool::shown_id(choice.language)}};
    if (choice.source == LanguageSource::thread) members.erase("stored");
    if (choice.temporary != 0) members["temporary"] = tool::shown_id(choice.temporary);
    if (options.json) return tool::print(members);
    for (const auto& [name, value] : members.items()) {
        tool::print(name + "=" + value.get<std::string>());
    }
}

// What nobody speaks would be stored and then be English.
LANGID spoken_language(const std::string& text) {
    constexpr LANGID kEnglish = 0x0409;
    const auto id = tool::language_id(text);
    const bool is_english = PRIMARYLANGID(id) == PRIMARYLANGID(kEnglish);
    if (is_english || TvMapResourceLanguage(id) != kEnglish) return id;
    throw Failure{Exit::usage, text + ": not spoken here (\"tvutil lang list\" tells what is)"};
}

// Saving tells nothing; what is there afterwards does.
void store(const std::u16string& product, LANGID language, bool is_temporary) {
    MLS_TvSaveLanguage(product.c_str(), language, is_temporary ? 1 : 0);
    const auto choice = tvutil2::language_choice(product.c_str());
    const bool is_stored =
        is_temporary ? choice.temporary == language
                     : choice.source == LanguageSource::user && choice.language == language;
    if (!is_stored) throw Failure{Exit::failed, "the registry didn't take the language"};
}

void keep(const std::u16string& product) {
    const auto temporary = tvutil2::language_choice(product.c_str()).temporary;
    if (temporary == 0) throw Failure{Exit::no, "no language is chosen for the time being"};
    MLS_TvSaveLanguage(product.c_str(), 0, 0);
    if (tvutil2::language_choice(product.c_str()).temporary != 0) {
        throw Failure{Exit::failed, "the registry didn't take the language"};
    }
}

void set(const Options& options) {
    if (options.keeps != options.language.empty()) {
        throw Failure{Exit::usage, "lang set: give a language, or --keep"};
    }
    const auto product = tool::wide(options.product);
    if (options.keeps) return keep(product);
    store(product, spoken_language(options.language), options.is_temporary);
}

void add_product(CLI::App& command, Options& options) {
    command.add_option("product", options.product, "Name of the product, such as Pelrin")
        ->required();
}

const tool::Command g_lang([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& lang = *app.add_subcommand("lang", "The language of a product");
    lang.require_subcommand(1);

    auto& shower = *lang.add_subcommand(
        "show", "Print the language in force, its name, and whose choice it is, a line each");
    tool::add_to_footer(
        shower,
        "from= says user, machine (the product takes that over for the user when it starts), or\n"
        "system. stored= is the id as it was chosen, temporary= one that isn't final yet.");
    add_product(shower, *options);
    tool::add_json_flag(shower, options->json);
    shower.callback([options] { show(*options); });

    auto& setter = *lang.add_subcommand("set",
                                        "Choose the user's language; products see it when "
                                        "they start");
    add_product(setter, *options);
    setter.add_option("language", options->language,
                      "Such as \"de\", \"zh-TW\", \"0x0407\" or a name of the list");
    auto* const temporary = setter.add_flag("--temporary", options->is_temporary,
                                            "Keep it beside the choice, until --keep");
    setter
        .add_flag("--keep", options->keeps,
                  "Make the temporary one the choice; exit code 1 when there is none")
        ->excludes(temporary);
    setter.callback([options] { set(*options); });

    auto& lister = *lang.add_subcommand(
        "list", "Print the languages: id, name, and how a product's module for it ends, by tabs");
    tool::add_json_flag(lister, options->json);
    lister.callback([options] { tool::print_languages(options->json); });
});

}  // namespace
