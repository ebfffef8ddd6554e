// Format texts and arguments that nobody would write.
//
// The input is the format up to its first zero byte; what follows is, byte by byte, the kind of the
// next argument and, for numbers, its eight bytes. Beside being harmless, an integer conversion
// without a wrong argument must print what the host's library prints.
#include "tvutil2/framework/format.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

using tvutil2::FormatArgument;

std::uint64_t take_number(std::string_view& rest) {
    std::uint64_t number = 0;
    const auto size = std::min(rest.size(), sizeof number);
    if (size != 0) std::memcpy(&number, rest.data(), size);
    rest.remove_prefix(size);
    return number;
}

double real_of(std::uint64_t bits) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::vector<FormatArgument> take_arguments(std::string_view rest, const std::u16string& wide,
                                           const std::string& narrow) {
    std::vector<FormatArgument> arguments;
    while (!rest.empty()) {
        const char kind = rest.front();
        rest.remove_prefix(1);
        switch (kind & 7) {
            case 0:
                arguments.emplace_back(static_cast<int>(take_number(rest)));
                break;
            case 1:
                arguments.emplace_back(take_number(rest));
                break;
            case 2:
                arguments.emplace_back(real_of(take_number(rest)));
                break;
            case 3:
                arguments.emplace_back(wide);
                break;
            case 4:
                arguments.emplace_back(narrow);
                break;
            case 5:
                arguments.emplace_back(nullptr);
                break;
            case 6:
                arguments.emplace_back(static_cast<char16_t>(kind));
                break;
            default:
                arguments.emplace_back(kind);
        }
    }
    return arguments;
}

// The format "%d", with flags, width and precision in front of the conversion, in both languages.
void compare_with_host(const std::string& format, int value) {
    constexpr std::string_view kField = "-+ #0123456789.";
    if (format.size() < 2 || format.size() > 16 || format.front() != '%') return;
    const auto field = std::string_view(format).substr(1, format.size() - 2);
    const bool is_plain = field.find_first_not_of(kField) == std::string_view::npos &&
                          std::string_view("duxXo").find(format.back()) != std::string_view::npos;
    if (!is_plain) return;
    char expected[2048];
    const int length = std::snprintf(expected, sizeof expected, format.c_str(), value);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof expected) return;
    std::u16string out;
    const FormatArgument argument(value);
    tvutil2::format_to(out, fuzz::widened(format), {&argument, 1});
    // What the host's library prints as it stands isn't a conversion there.
    if (expected[0] != '%') fuzz::require(out == fuzz::widened(expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string format(input.substr(0, input.find('\0')));
    auto rest = input.substr(std::min(format.size() + 1, input.size()));
    compare_with_host(format, static_cast<int>(rest.size() * 2654435761U));
    const auto wide = fuzz::widened(rest.substr(0, 5));
    const std::string narrow(rest.substr(0, 5));
    const auto arguments = take_arguments(rest, wide, narrow);
    std::u16string out(u"kept");
    if (size <= 256) tvutil2::format_to(out, fuzz::widened(format), arguments);
    fuzz::require(out.starts_with(u"kept"));
    return 0;
}
