// Conversions in every kind of page: what is asked for is what is written, nothing goes beyond its
// room, UTF-8 that is well-formed comes back, and what ICU converts as well becomes the same.
#include "tvutil2/platform/codepage/codepage.h"

#include <unicode/ustring.h>

#include <memory>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "tests/support/icu_converter.h"

namespace {

struct Page {
    UINT number;
    /// ICU's converter, for pages where the two have the same mappings.
    const char* icu = nullptr;
};
constexpr Page kPages[] = {{CP_ACP},
                           {CP_UTF8},
                           {437},
                           {932},
                           {936, "windows-936-2000"},
                           {949, "windows-949-2000"},
                           {950, "windows-950-2000"},
                           {1252, "ibm-5348_P100-1997"},
                           {1258, "ibm-5354_P100-1998"},
                           {28591, "ISO-8859-1"},
                           {54936, "gb18030"},
                           {708},
                           {20936},
                           {51932},
                           {51949}};

void hold_against(const tests::IcuConverter& icu, std::string_view bytes,
                  const std::u16string& units) {
    std::u16string out(units.size() + 8, u'\0');
    const auto count = icu.widen(bytes, out);
    // It refuses more than we do: a control character as a second byte, for one.
    if (count < 0) return;
    out.resize(static_cast<std::size_t>(count));
    fuzz::require(out == units);
}

void hold_against(const tests::IcuConverter& icu, const std::u16string& text,
                  const std::string& bytes) {
    std::string out(bytes.size() + 8, '\0');
    const auto count = icu.narrow(text, out);
    fuzz::require(count >= 0);  // what we hold, ICU holds
    out.resize(static_cast<std::size_t>(count));
    fuzz::require(out == bytes);
}

const tests::IcuConverter* icu_of(const Page& page) {
    static std::unique_ptr<tests::IcuConverter> converters[std::size(kPages)];
    if (page.icu == nullptr) return nullptr;
    auto& converter = converters[&page - kPages];
    if (!converter) converter = std::make_unique<tests::IcuConverter>(page.icu);
    fuzz::require(converter->get() != nullptr);
    return converter.get();
}

// Ill-formed text included: one replacement for each maximal subpart.
void hold_utf8_against_icu(std::string_view bytes) {
    if (bytes.empty()) return;
    std::u16string ours(bytes.size(), u'\0');
    std::u16string theirs(bytes.size() + 1, u'\0');
    const int count = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()),
                                          ours.data(), static_cast<int>(ours.size()));
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t size = 0;
    std::int32_t replaced = 0;
    u_strFromUTF8WithSub(theirs.data(), static_cast<std::int32_t>(theirs.size()), &size,
                         bytes.data(), static_cast<std::int32_t>(bytes.size()), 0xFFFD, &replaced,
                         &status);
    ours.resize(static_cast<std::size_t>(count));
    theirs.resize(static_cast<std::size_t>(size));
    fuzz::require(U_SUCCESS(status) && ours == theirs);
    const int strict = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, 0);
    fuzz::require((strict == 0) == (replaced != 0));
}

void hold_utf16_against_icu(const std::u16string& text) {
    if (text.empty()) return;
    std::string ours(text.size() * 3, '\0');
    std::string theirs(text.size() * 3 + 1, '\0');
    const int count =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), ours.data(),
                            static_cast<int>(ours.size()), nullptr, nullptr);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t size = 0;
    std::int32_t replaced = 0;
    u_strToUTF8WithSub(theirs.data(), static_cast<std::int32_t>(theirs.size()), &size, text.data(),
                       static_cast<std::int32_t>(text.size()), 0xFFFD, &replaced, &status);
    ours.resize(static_cast<std::size_t>(count));
    theirs.resize(static_cast<std::size_t>(size));
    fuzz::require(U_SUCCESS(status) && ours == theirs);
}

void widen(const Page& kind, DWORD flags, std::string_view bytes, int short_room) {
    const UINT page = kind.number;
    const auto convert = [&](char16_t* out, int room) {
        return MultiByteToWideChar(page, flags, bytes.data(), static_cast<int>(bytes.size()), out,
                                   room);
    };
    const int needed = convert(nullptr, 0);
    if (needed == 0) return;
    // Rooms of exactly their size: the sanitizer sees a unit too many.
    std::vector<char16_t> room(static_cast<std::size_t>(needed));
    fuzz::require(convert(room.data(), needed) == needed);
    if (const auto* const icu = icu_of(kind);
        icu != nullptr && (flags & MB_ERR_INVALID_CHARS) != 0) {
        hold_against(*icu, bytes, {room.begin(), room.end()});
    }
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

void narrow(const Page& kind, DWORD flags, const std::u16string& text, int short_room) {
    if (text.empty()) return;
    const UINT page = kind.number;
    BOOL used = FALSE;
    const auto convert = [&](char* out, int room) {
        return WideCharToMultiByte(page, flags, text.data(), static_cast<int>(text.size()), out,
                                   room, nullptr, page == CP_UTF8 ? nullptr : &used);
    };
    const int needed = convert(nullptr, 0);
    if (needed == 0) return;
    std::vector<char> room(static_cast<std::size_t>(needed));
    fuzz::require(convert(room.data(), needed) == needed);
    if (const auto* const icu = icu_of(kind); icu != nullptr && flags == 0 && used == FALSE) {
        hold_against(*icu, text, {room.begin(), room.end()});
    }
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
    const Page& page = kPages[data[0] % std::size(kPages)];
    const bool is_flagged = (data[1] & 1) != 0;
    const int short_room = data[1] >> 1U;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    const auto text = fuzz::wide_text(data + 2, size - 2);
    widen(page, is_flagged ? MB_ERR_INVALID_CHARS : 0, bytes, short_room);
    const bool composes = is_flagged && page.number != CP_UTF8 && page.number != 54936;
    narrow(page, composes ? WC_COMPOSITECHECK : 0, text, short_room);
    if (page.number == CP_UTF8) {
        hold_utf8_against_icu(bytes);
        hold_utf16_against_icu(text);
    }
    return 0;
}
