#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/process_place.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace {

constexpr UINT kFirst = 0xC000;
constexpr UINT kLast = 0xFFFF;
constexpr std::size_t kMaxMessageName = 255;

// A name as a line holds it: four hexadecimal digits for each of its units, without case.
std::string line_of(const char16_t* name) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string line;
    for (const char16_t unit : tvutil2::folded_name(name)) {
        for (int shift = 12; shift >= 0; shift -= 4) line += kDigits[(unit >> shift) & 0xF];
    }
    return line;
}

std::string read_all(int file) {
    std::string text;
    char block[4096];
    ssize_t size = 0;
    for (off_t at = 0; (size = pread(file, block, sizeof block, at)) > 0; at += size) {
        text.append(block, static_cast<std::size_t>(size));
    }
    return text;
}

// The number of the first line that is the name; 0 when there is none. Lines are never taken back,
// and one that two processes append at once counts where it stands first.
UINT number_in(std::string_view text, std::string_view line) {
    UINT number = kFirst;
    while (!text.empty()) {
        const auto end = text.find('\n');
        if (end == std::string_view::npos) return 0;
        const auto each = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (each.empty()) continue;
        if (each == line) return number <= kLast ? number : 0;
        ++number;
    }
    return 0;
}

}  // namespace

UINT RegisterWindowMessageW(const char16_t* name) {
    const auto line = name != nullptr ? line_of(name) : std::string();
    if (line.empty() || line.size() > kMaxMessageName * 4) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const auto file = tvutil2::open_shared_file("messages", O_RDWR | O_CREAT | O_APPEND);
    if (!file) {
        tvutil2::fail_with_errno();
        return 0;
    }
    if (const auto number = number_in(read_all(file.get()), line); number != 0) return number;
    // The line break in front ends what a full disk may have cut.
    const auto added = "\n" + line + "\n";
    if (write(file.get(), added.data(), added.size()) != static_cast<ssize_t>(added.size())) {
        tvutil2::fail_with_errno();
        return 0;
    }
    const auto number = number_in(read_all(file.get()), line);
    if (number == 0) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return number;
}
