#include "tvutil2/lang/language_selection.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/frame/dll_loader.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/lang/language_key.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/language_rows.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/data_module.h"
#include "tvutil2/platform/system/runtime_locale.h"

#include <clocale>
#include <iterator>

using tvutil2::kEnglish;
using tvutil2::LanguageKey;

namespace {

// Empty for a module that has no path, or a longer one than fits.
CString satellite_path(HINSTANCE module, const char16_t* suffix) {
    char16_t file[260] = {}, drive[3] = {}, folder[256] = {}, name[256] = {};
    const auto length = GetModuleFileNameW(module, file, std::size(file));
    if (length == 0 || length == std::size(file)) return {};
    _wsplitpath_s(file, drive, std::size(drive), folder, std::size(folder), name, std::size(name),
                  nullptr, 0);
    CString path;
    path.Format(u"%s%sLanguages\\%s%s", drive, folder, name, suffix);
    return path;
}

// By a language (16 bits), or by its primary one (10 bits).
const char16_t* locale_name_of(WORD language) {
    static constexpr struct {
        WORD language;
        const char16_t* name;
    } kNames[] = {
        {0x0009, u"English"}, {0x0012, u"Korean"},  {0x000C, u"French"},     {0x0011, u"Japanese"},
        {0x0804, u"zh-CN"},   {0x0404, u"zh-TW"},   {0x0C04, u"zh-HK"},      {0x1004, u"zh-SG"},
        {0x1404, u"zh-MO"},   {0x0007, u"German"},  {0x0016, u"Portuguese"}, {0x0019, u"Russian"},
        {0x001B, u"Slovak"},  {0x000A, u"Spanish"},
    };
    const auto* const found = tvutil2::find_row(kNames, language);
    return found != std::end(kNames) ? found->name : u"";
}

}  // namespace

void MLS_TvSaveLanguage(const char16_t* product, WORD language, int temporary) {
    const auto key = LanguageKey::create(HKEY_CURRENT_USER, product, KEY_ALL_ACCESS);
    if (!key.is_open()) return;
    if (temporary != 0) return key.set_number(LanguageKey::kTemporary, language);
    if (language == 0) language = LOWORD(key.number(LanguageKey::kTemporary).value_or(0));
    if (language != 0) key.set_number(LanguageKey::kUser, language);
    key.set_number(LanguageKey::kTemporary, 0);
}

HINSTANCE TvLoadAppLangResourceDLL(HINSTANCE module, const char16_t* product) {
    const auto& language = tvutil2::spoken_language(MLS_TvGetUserLanguage(product));
    const bool has_satellite = *language.satellite_suffix != 0;
    const auto path = has_satellite ? satellite_path(module, language.satellite_suffix) : CString();
    if (path.IsEmpty()) {
        TvSetThreadLocale(kEnglish);
        return nullptr;
    }
    constexpr DWORD kAsImage = LOAD_LIBRARY_AS_IMAGE_RESOURCE | LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE;
    auto* satellite = LoadLibraryExW(path, nullptr, kAsImage);
    if (satellite == nullptr) satellite = LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (satellite != nullptr) TvSetThreadLocale(language.id);
    return satellite;
}

int TvSetThreadLocale(DWORD locale) {
    const CDllLoader system(u"kernel32.dll", TRUE);
    const auto address = system.GetProcAddress("SetThreadUILanguage");
    if (address == nullptr) return 0;
    const auto taken = tvutil2::as_function<LANGID(LANGID)>(address)(LOWORD(locale));
    SetThreadLocale(locale);
    CString line;
    line.Format(u"Set Thread Locale: %d", locale);
    _WriteApplicationLog(line, 1);
    return taken == LOWORD(locale) ? 1 : 0;
}

void TvSetLocale() {
    _wsetlocale(LC_ALL, locale_name_of(MLS_TvGetLocalLanguage()));
}
