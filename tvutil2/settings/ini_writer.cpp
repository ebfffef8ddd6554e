#include "tvutil2/settings/ini_writer.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <string>

namespace tvutil2 {
namespace {

constexpr char16_t kMark = 0xFEFF;

// Hands the pieces of the text to `piece`, the last one first: each section's keys stand below its
// header, and the section that a walk meets last stands first.
template <class Piece>
void for_each_piece_from_behind(const CIniFile& document, Piece piece) {
    document.sections.ForEach([&piece](std::u16string_view name, void* section) {
        if (section == nullptr) return;
        const auto& values = static_cast<const CIniSection*>(section)->Values();
        values.ForEach([&piece](std::u16string_view key, std::u16string_view value) {
            piece(u"\n");
            piece(value);
            piece(u"=");
            piece(key);
        });
        piece(u"]\n");
        piece(name);
        piece(u"[");
    });
}

std::size_t line_ends(std::u16string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), u'\n'));
}

// The whole text behind its mark, with CR LF at the end of each line.
std::u16string text_of(const CIniFile& document) {
    std::size_t size = 1;
    for_each_piece_from_behind(
        document, [&size](std::u16string_view piece) { size += piece.size() + line_ends(piece); });
    std::u16string text(size, u'\0');
    auto* place = text.data() + size;
    for_each_piece_from_behind(document, [&place](std::u16string_view piece) {
        while (!piece.empty()) {
            const auto line = piece.rfind(u'\n') + 1;  // 0: there is none
            place = std::copy_backward(piece.begin() + line, piece.end(), place);
            if (line == 0) return;
            *--place = u'\n';
            *--place = u'\r';
            piece = piece.substr(0, line - 1);
        }
    });
    text.front() = kMark;
    return text;
}

// Nothing when the page doesn't hold it all.
std::optional<std::string> in_ansi_page(std::u16string_view text) {
    if (text.empty()) return std::string();
    if (text.size() > INT_MAX) return std::nullopt;
    const auto units = static_cast<int>(text.size());
    BOOL used_default = FALSE;
    const int size =
        WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, "?", &used_default);
    if (size == 0 || used_default != FALSE) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, bytes.data(), size, "?", &used_default);
    return bytes;
}

bool write_at(HANDLE file, LONGLONG offset, std::string_view bytes) {
    LARGE_INTEGER distance{};
    distance.QuadPart = offset;
    if (offset != 0 && SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) == FALSE) return false;
    while (!bytes.empty()) {
        constexpr std::size_t kMost = std::size_t{1} << 30;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kMost));
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), size, &written, nullptr) == FALSE) return false;
        bytes.remove_prefix(size);
    }
    return true;
}

void cut_at(HANDLE file, LONGLONG size) {
    LARGE_INTEGER distance{};
    distance.QuadPart = size;
    if (SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE) SetEndOfFile(file);
}

// What lies beyond the old content goes first: it alone needs room on the disk, and while it fails
// nothing of the old content is gone.
void replace_content(HANDLE file, std::string_view bytes) {
    LARGE_INTEGER old{};
    GetFileSizeEx(file, &old);
    const auto kept = std::min(static_cast<std::size_t>(old.QuadPart), bytes.size());
    if (kept != 0 && !write_at(file, old.QuadPart, bytes.substr(kept))) {
        const auto error = GetLastError();
        cut_at(file, old.QuadPart);
        return SetLastError(error);
    }
    LARGE_INTEGER front{};
    if (kept != 0) SetFilePointerEx(file, front, nullptr, FILE_BEGIN);
    if (!write_at(file, 0, kept != 0 ? bytes.substr(0, kept) : bytes)) return;
    if (static_cast<std::size_t>(old.QuadPart) > bytes.size()) {
        cut_at(file, static_cast<LONGLONG>(bytes.size()));
    }
}

}  // namespace

bool write_ini(const char16_t* path, const CIniFile& document, bool is_utf16, bool is_flushed) {
    const auto text = text_of(document);
    std::optional<std::string> narrow;
    if (!is_utf16) narrow = in_ansi_page(std::u16string_view(text).substr(1));
    const auto file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    replace_content(file, narrow ? std::string_view(*narrow)
                                 : std::string_view(reinterpret_cast<const char*>(text.data()),
                                                    text.size() * sizeof(char16_t)));
    if (is_flushed && !narrow) FlushFileBuffers(file);
    CloseHandle(file);
    return true;
}

}  // namespace tvutil2
