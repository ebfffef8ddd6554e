// Conversions in every kind of page: what is asked for is what is written, nothing goes beyond its
// room, and UTF-8 that is well-formed comes back.
#include "tvutil2/platform/codepage/codepage.h"

#include <vector>

#include "fuzz/fuzz_input.h"

namespace {

constexpr UINT kPages[] = {CP_ACP, CP_UTF8, 437, 932, 936, 949, 950, 1252, 1258, 28591};

void widen(UINT page, DWORD flags, std::string_view bytes, int short_room) {
    const auto convert = [&](char16_t* out, int room) {
        return MultiByteToWideChar(page, flags, bytes.data(), static_cast<int>(bytes.size()), out,
                                   room);
    };
    const int needed = convert(nullptr, 0);
    if (needed == 0) return;
    // Rooms of exactly their size: the sanitizer sees a unit too many.
    std::vector<char16_t> room(static_cast<std::size_t>(needed));
    fuzz::require(convert(room.data(), needed) == needed);
    if (short_room > 0 && short_room < needed) {
        std::vector<char16_t> small(static_cast<std::size_t>(short_room));
        fuzz::require(convert(small.data(), short_room) == 0);
    }
    if (page != CP_UTF8 || (flags & MB_ERR_INVALID_CHARS) == 0) return;
    std::string back(bytes.size(), '\0');
    fuzz::require(WideCharToMultiByte(page, 0, room.data(), needed, back.data(),
                                      static_cast<int>(back.size()), nullptr,
                                      nullptr) == static_cast<int>(back.size()));
    fuzz::require(back == bytes);
}

void narrow(UINT page, DWORD flags, const std::u16string& text, int short_room) {
    if (text.empty()) return;
    const auto convert = [&](char* out, int room) {
        return WideCharToMultiByte(page, flags, text.data(), static_cast<int>(text.size()), out,
                                   room, nullptr, nullptr);
    };
    const int needed = convert(nullptr, 0);
    if (needed == 0) return;
    std::vector<char> room(static_cast<std::size_t>(needed));
    fuzz::require(convert(room.data(), needed) == needed);
    if (short_room > 0 && short_room < needed) {
        std::vector<char> small(static_cast<std::size_t>(short_room));
        fuzz::require(convert(small.data(), short_room) == 0);
    }
    // What a page wrote it can read.
    if (page != CP_ACP) {
        fuzz::require(
            MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, room.data(), needed, nullptr, 0) > 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const UINT page = kPages[data[0] % std::size(kPages)];
    const bool is_flagged = (data[1] & 1) != 0;
    const int short_room = data[1] >> 1U;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    widen(page, is_flagged ? MB_ERR_INVALID_CHARS : 0, bytes, short_room);
    const DWORD compose = is_flagged && page != CP_UTF8 ? WC_COMPOSITECHECK : 0;
    narrow(page, compose, fuzz::wide_text(data + 2, size - 2), short_room);
    return 0;
}
