#include "tvutil2/text/text_conversion.h"

#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/text/text_units.h"

#include <climits>
#include <iterator>

namespace tvutil2 {
namespace {

// Runs `convert(out, room)`, which gives the units written or needed: into the short room when the
// source is short, else, or when a page makes more of it than expected, into storage of the size
// that is needed.
template <class Unit, std::size_t room, class Convert>
std::basic_string_view<Unit> converted(std::size_t source_size, Unit (&in_place)[room],
                                       std::basic_string<Unit>& storage, const Convert& convert) {
    if (source_size <= kShortText) {
        const int size = convert(in_place, static_cast<int>(room));
        if (size > 0) return {in_place, static_cast<std::size_t>(size)};
    }
    const int size = convert(nullptr, 0);
    if (size <= 0) return {};
    storage.resize(static_cast<std::size_t>(size));
    if (convert(storage.data(), size) != size) return {};
    return storage;
}

}  // namespace

// The zero behind the text is converted with it: whether the bytes before it are whole depends on
// it in some pages.
WideText::WideText(std::string_view bytes, UINT page) {
    const auto size = bytes.size() + 1;
    if (size > INT_MAX) return;
    m_view = before_zero(converted(size, m_short, m_long, [&](char16_t* out, int room) {
        return MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(size), out, room);
    }));
}

NarrowText::NarrowText(std::u16string_view text, UINT page, bool* data_lost, char unknown_char) {
    const auto size = text.size() + 1;
    if (size > INT_MAX) return;
    const char unknown[] = {unknown_char, '\0'};
    BOOL used_default = FALSE;
    const auto bytes = converted(size, m_short, m_long, [&](char* out, int room) {
        return WideCharToMultiByte(page, 0, text.data(), static_cast<int>(size), out, room,
                                   unknown_char != '\0' ? unknown : nullptr,
                                   data_lost != nullptr ? &used_default : nullptr);
    });
    m_view = bytes.substr(0, bytes.find('\0'));
    if (data_lost != nullptr && !bytes.empty() && used_default != FALSE) *data_lost = true;
}

}  // namespace tvutil2
