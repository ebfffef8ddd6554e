// tvutil codepage, decode, encode: the pages that terminal sessions are offered, and streams in
// them.
#include "tvutil2/platform/codepage/codepage.h"

#include "tvutil2/frame/buffer.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/text/charset.h"
#include "tvutil2/text/code_page.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"

namespace {

using nlohmann::ordered_json;
using tool::Exit;
using tool::Failure;

constexpr unsigned int kDefaultLanguage = 0xFFFFFFFF;
constexpr std::size_t kLargestInput = std::size_t{1} << 28U;

// ---- codepage ----

std::string hex(unsigned int value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    return text;
}

std::string default_reason() {
    const auto language = GetSystemDefaultLangID();
    const auto text = "the system's language is 0x" + hex(language, 4);
    const auto page = CCodePage::GetDefault();
    if (page == GetACP()) return text + ", which goes by the ANSI code page";
    return text + ", whose hosts use it";
}

void list_pages(bool json) {
    CCodePageList list;
    auto rows = ordered_json::array();
    for (int i = 0; i < list.GetCount(); ++i) {
        const auto number = list.GetCodePage(i);
        const CCodePage usable(number);
        const auto name = tool::narrow(list.GetName(i));
        if (json) {
            rows.push_back({{"name", name},
                            {"code_page", usable.codePage},
                            {"char_set", list.GetCharSet(i)},
                            {"group", list.GetLangID(i)},
                            {"is_default", number == kDefaultLanguage}});
            continue;
        }
        char line[128];
        std::snprintf(line, sizeof line, "%5u  0x%02X  %2u  %s", usable.codePage,
                      list.GetCharSet(i), list.GetLangID(i), name.c_str());
        tool::print(std::string(line) +
                    (number == kDefaultLanguage ? ": " + default_reason() : std::string()));
    }
    if (json) tool::print(rows);
}

void show_default(bool json) {
    if (!json) {
        tool::print(std::to_string(CCodePage::GetDefault()) + ": " + default_reason());
        return;
    }
    tool::print(ordered_json{{"code_page", CCodePage::GetDefault()},
                             {"ansi_code_page", GetACP()},
                             {"language", GetSystemDefaultLangID()},
                             {"reason", default_reason()}});
}

// ---- decode, encode ----

unsigned int page_of(const std::string& text) {
    if (text == "default") return kDefaultLanguage;
    const auto folded = tool::folded_encoding_name(text);
    const auto page = folded == "utf8"   ? std::optional(CP_UTF8)
                      : folded == "ansi" ? std::optional(GetACP())
                                         : tool::page_named(text);
    if (!page || IsValidCodePage(*page) == 0) {
        throw Failure{Exit::usage, tool::unknown_encoding(text)};
    }
    return *page;
}

std::string hex_bytes(const unsigned char* bytes, unsigned int size) {
    std::string text;
    for (unsigned int i = 0; i < size; ++i) {
        if (i != 0) text += ' ';
        text += hex(bytes[i], 2);
    }
    return text;
}

std::string named(unsigned int code) {
    auto text = "U+" + hex(code, 4);
    if (code < 0x20 || (code >= 0x7F && code < 0xA0)) return text;
    char16_t units[2];
    const auto count = _ucs4_to_utf16(code, units);
    return text + " " + tool::narrow({units, count});
}

class Input {
  public:
    explicit Input(const std::string& file)
        : m_name(file),
          m_file(file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_file < 0) fail();
    }
    ~Input() {
        if (m_file != STDIN_FILENO) close(m_file);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// What has come so far, at least a byte; empty at the end.
    std::string_view next() {
        ssize_t count = 0;
        do {
            count = ::read(m_file, m_block, sizeof m_block);
        } while (count < 0 && errno == EINTR);
        if (count < 0) fail();
        return {m_block, static_cast<std::size_t>(count)};
    }

  private:
    [[noreturn]] void fail() const {
        throw Failure{Exit::failed, m_name + ": " + std::strerror(errno)};
    }

    std::string m_name;
    int m_file;
    char m_block[65536];
};

// Prints characters as they come; of a pair of surrogates that a stream has in two, the first waits
// for the second.
class Output {
  public:
    void add(unsigned int code) {
        char16_t units[2];
        m_text.append(units, _ucs4_to_utf16(code, units));
    }
    void flush(bool is_last) {
        const bool waits = !is_last && !m_text.empty() && (m_text.back() & 0xFC00) == 0xD800;
        std::cout << tool::narrow({m_text.data(), m_text.size() - (waits ? 1 : 0)}) << std::flush;
        m_text.erase(0, m_text.size() - (waits ? 1 : 0));
    }

  private:
    std::u16string m_text;
};

void trace_byte(CCharSetDecoder& decoder, unsigned char byte) {
    unsigned int code = 0;
    unsigned char raw[6];
    unsigned int size = 0;
    auto line = hex(byte, 2) + "  ";
    if (decoder.Decode(byte, code, raw, &size) != 0) {
        line += named(code) + "  from " + hex_bytes(raw, size);
    }
    size = decoder.GetDecodeBuf(raw);
    if (size != 0)
        line += (line.size() > 4 ? ", then waits with " : "waits with ") + hex_bytes(raw, size);
    tool::print(line);
}

void decode(const std::string& page, const std::string& file, bool is_traced) {
    CCharSetDecoder decoder;
    decoder.SetCodepage(page_of(page));
    Input input(file);
    Output output;
    for (auto block = input.next(); !block.empty(); block = input.next()) {
        for (const char c : block) {
            const auto byte = static_cast<unsigned char>(c);
            unsigned int code = 0;
            if (is_traced) {
                trace_byte(decoder, byte);
            } else if (decoder.Decode(byte, code, nullptr, nullptr) != 0) {
                output.add(code);
            }
        }
        output.flush(false);
    }
    output.flush(true);
    unsigned char rest[6];
    if (const auto size = decoder.GetDecodeBuf(rest); size != 0) {
        throw Failure{Exit::refused, "the input ends inside a character: " + hex_bytes(rest, size)};
    }
}

void encode(const std::string& page, const std::string& file, bool is_traced) {
    CCharSetEncoder encoder;
    encoder.SetCodepage(page_of(page));
    const auto bytes = tool::read_input(file, kLargestInput);
    const auto text = tvutil2::to_utf16(bytes);
    if (!text) throw Failure{Exit::refused, "the input isn't valid UTF-8"};
    if (is_traced) {
        for (const auto unit : *text) {
            unsigned char out[6];
            const int size = encoder.Encode(unit, out);
            tool::print(named(unit) + "  as " + hex_bytes(out, static_cast<unsigned int>(size)));
        }
        return;
    }
    // A text ends at its zero, which every page has as the byte zero.
    CBuffer out;
    for (std::size_t start = 0; start <= text->size();) {
        const auto end = std::min(text->find(u'\0', start), text->size());
        encoder.Encode(text->c_str() + start, out);
        if (end < text->size()) out.PutByte(0);
        start = end + 1;
    }
    std::cout.write(reinterpret_cast<const char*>(out.Ptr()), out.Len());
}

using Convert = void (*)(const std::string&, const std::string&, bool);

void add_stream(CLI::App& app, const char* name, const char* what, const char* trace, Convert run) {
    auto* const command = app.add_subcommand(name, what);
    const auto page = std::make_shared<std::string>();
    const auto file = std::make_shared<std::string>("-");
    const auto is_traced = std::make_shared<bool>(false);
    command->add_option("PAGE", *page, "The number or a name of a code page, or \"default\"")
        ->required();
    command->add_option("FILE", *file, "What to read; \"-\" (the default) is standard input");
    command->add_flag("--trace", *is_traced, trace);
    command->callback([=] { run(*page, *file, *is_traced); });
}

const tool::Command kCommand([](CLI::App& app) {
    auto* const codepage =
        app.add_subcommand("codepage", "Show the code pages that terminal sessions are offered");
    codepage->require_subcommand(1);
    const auto add = [codepage](const char* name, const char* what, void (*run)(bool)) {
        auto* const command = codepage->add_subcommand(name, what);
        const auto json = std::make_shared<bool>(false);
        tool::add_json_flag(*command, *json);
        command->callback([json, run] { run(*json); });
    };
    add("list", "Number, font character set, language group and name, in the order of display",
        list_pages);
    add("default", "The page of the system's language, and why it is the one", show_default);

    add_stream(app, "decode",
               "Print the text of a stream of bytes as they arrive; \".\" stands for "
               "a bad sequence",
               "Print a line for each byte: what became complete, what waits", decode);
    add_stream(app, "encode",
               "Write UTF-8 text as bytes of a code page; \"?\" stands for what the "
               "page doesn't hold",
               "Print a line for each 16-bit unit and its bytes", encode);
});

}  // namespace
