// tvutil base64: bytes to text and back.
#include "tvutil2/frame/base64.h"

#include <iostream>
#include <memory>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

constexpr std::size_t kLargestInput = std::size_t{1} << 30;

void encode(const std::string& file, bool is_json) {
    const auto bytes = tool::read_input(file, kLargestInput);
    CString text;
    CBase64::Encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<unsigned int>(bytes.size()), text);
    tool::print_text("text", tool::narrow(text.View()), is_json);
}

void decode(const std::string& file, bool /*is_json*/) {
    const auto bytes = tool::read_input(file, kLargestInput);
    // Byte by byte: what isn't ASCII is outside the alphabet in any encoding.
    std::u16string text;
    text.reserve(bytes.size());
    for (const char c : bytes) text.push_back(static_cast<unsigned char>(c));
    if (text.find(u'\0') != std::u16string::npos) {
        throw Failure{Exit::refused, "not Base64: it holds a zero byte"};
    }
    CBuffer out;
    const int result = CBase64::Decode(text.c_str(), out);
    if (result == 0) throw Failure{Exit::refused, "not Base64"};
    if (result < 0) {
        throw Failure{Exit::refused, "not Base64: the last character has bits to spare"};
    }
    std::cout.write(reinterpret_cast<const char*>(out.Ptr()), out.Len());
}

const tool::Command kCommand([](CLI::App& app) {
    auto* const base64 = app.add_subcommand("base64", "Turn bytes into Base64 text and back");
    base64->require_subcommand(1);
    const auto add = [base64](const char* name, const char* what,
                              void (*run)(const std::string&, bool), bool has_json) {
        auto* const command = base64->add_subcommand(name, what);
        const auto file = std::make_shared<std::string>("-");
        command->add_option("FILE", *file, "What to read; \"-\" (the default) is standard input");
        const auto is_json = std::make_shared<bool>(false);
        if (has_json) tool::add_json_flag(*command, *is_json);
        command->callback([=] { run(*file, *is_json); });
    };
    add("encode", "Print the Base64 text of bytes, on one line", encode, true);
    add("decode", "Write the bytes of Base64 text; white space in it is passed over", decode,
        false);
});

}  // namespace
