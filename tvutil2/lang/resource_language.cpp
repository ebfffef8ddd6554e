#include "tvutil2/lang/resource_language.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/lang/language_choice.h"
#include "tvutil2/lang/language_key.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/menus/menu.h"

#include <algorithm>

using tvutil2::kEnglish;
using tvutil2::LanguageKey;

namespace {

// Primary languages that there are resources for, English apart, and what they map to; 0 keeps the
// sub-language.
struct Spoken {
    WORD primary;
    WORD mapped;
};
constexpr Spoken kSpoken[] = {
    {0x04, 0},       // Chinese
    {0x07, 0x0407},  // German
    {0x0A, 0x0C0A},  // Spanish
    {0x0C, 0x040C},  // French
    {0x11, 0},       // Japanese
    {0x12, 0},       // Korean
    {0x16, 0x0416},  // Portuguese
    {0x19, 0},       // Russian
    {0x1B, 0},       // Slovak
};

const Spoken* spoken(WORD language) {
    const auto* found = std::find_if(
        std::begin(kSpoken), std::end(kSpoken),
        [&](const Spoken& candidate) { return candidate.primary == PRIMARYLANGID(language); });
    return found == std::end(kSpoken) ? nullptr : found;
}

WORD thread_language() {
    return LANGIDFROMLCID(GetThreadLocale());
}

// Of the product, or of the thread where none is named, as resources are asked for.
WORD language_for(const char16_t* product) {
    return product != nullptr ? MLS_TvGetResourceLanguage(product)
                              : TvMapResourceLanguage(thread_language());
}

struct Bytes {
    const void* address = nullptr;
    DWORD size = 0;
};

// A resource in a language, or else in the one that the system chooses; no address when there is
// none.
Bytes find_bytes(HINSTANCE module, const char16_t* type, const char16_t* name, WORD language) {
    HRSRC found = FindResourceExW(module, type, name, language);
    if (found == nullptr) found = FindResourceW(module, name, type);
    if (found == nullptr) return {};
    return {LockResource(LoadResource(module, found)), SizeofResource(module, found)};
}

// The same for a template, which is built through its address alone: one that is cut short within
// its fixed part is none.
const void* find_template(HINSTANCE module, const char16_t* type, const char16_t* name,
                          const char16_t* product, DWORD fixed_size) {
    const auto bytes = find_bytes(module, type, name, language_for(product));
    if (bytes.address == nullptr || bytes.size >= fixed_size) return bytes.address;
    SetLastError(ERROR_INVALID_DATA);
    return nullptr;
}

bool is_high_surrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

// Cut to what fits in `room` units. Half a surrogate pair is no text; it is left out.
std::u16string_view cut(std::u16string_view text, std::size_t room) {
    if (text.size() <= room) return text;
    if (room > 0 && is_high_surrogate(text[room - 1])) --room;
    return text.substr(0, room);
}

CString string_or_marks(HINSTANCE module, unsigned int id, const char16_t* product) {
    char16_t text[256] = u"??";
    MLS_TvLoadString(module, id, text, sizeof text, product);
    return text;
}

}  // namespace

WORD TvMapResourceLanguage(DWORD language) {
    const auto id = LOWORD(language);
    const auto* found = spoken(id);
    if (found == nullptr) return kEnglish;
    return found->mapped != 0 ? found->mapped : id;
}

WORD MLS_TvGetUserLanguage(const char16_t* product) {
    const auto choice = tvutil2::language_choice(product);
    if (choice.is_due_to_user) {
        // What this writes makes the user's key the newer one, so that his next choice stands.
        const auto user = LanguageKey::create(HKEY_CURRENT_USER, product, KEY_WRITE);
        if (user.is_open()) user.set_number(LanguageKey::kUser, choice.language);
    }
    return TvMapResourceLanguage(choice.language);
}

WORD MLS_TvGetResourceLanguage(const char16_t* product) {
    return TvMapResourceLanguage(MLS_TvGetUserLanguage(product));
}

WORD MLS_TvGetLocalLanguage() {
    return TvMapResourceLanguage(GetSystemDefaultLangID());
}

int MLS_TvLoadString(HINSTANCE module, unsigned int id, char16_t* destination, int size,
                     const char16_t* product) {
    if (destination == nullptr || size < 2) return 0;
    const auto block = static_cast<WORD>((id >> 4) + 1);
    const auto bytes =
        find_bytes(module, RT_STRING, MAKEINTRESOURCEW(block), language_for(product));
    if (bytes.address == nullptr) return 0;
    const auto text = tvutil2::string_in_block(
        {static_cast<const std::byte*>(bytes.address), bytes.size}, id & 0xF);
    if (text.empty()) return 0;
    const auto kept = cut(text, static_cast<std::size_t>(size) / 2 - 1);
    *std::copy(kept.begin(), kept.end(), destination) = 0;
    return 1;
}

HMENU MLS_TvLoadMenu(HINSTANCE module, const char16_t* menu, const char16_t* product) {
    constexpr DWORD kFixedSize = 4;
    const auto* found = find_template(module, RT_MENU, menu, product, kFixedSize);
    return found == nullptr ? nullptr : LoadMenuIndirectW(found);
}

int MLS_TvDialogBoxParam(HINSTANCE module, const char16_t* dialog, HWND parent, DLGPROC procedure,
                         LPARAM parameter, const char16_t* product) {
    constexpr DWORD kFixedSize = 18;
    const auto* found = find_template(module, RT_DIALOG, dialog, product, kFixedSize);
    if (found == nullptr) return 0;
    return static_cast<int>(DialogBoxIndirectParamW(module, found, parent, procedure, parameter));
}

CString MLS_TVUTIL_ID2STR(unsigned int id, const char16_t* product) {
    return string_or_marks(AfxGetResourceHandle(), id, product);
}

CString MLS_TVUTIL_ID2STR_DLL(HINSTANCE module, unsigned int id) {
    return string_or_marks(module, id, nullptr);
}
