#include "tvutil2/services/help_links.h"

#include "tvutil2/data/files.h"
#include "tvutil2/diag/app_log.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/framework/menus.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/services/help_program_dialog.h"
#include "tvutil2/services/http.h"
#include "tvutil2/settings/registry.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

CString g_manual;

tvutil2::SupportEntry g_entry;

constexpr const char16_t* kHelpProgram = u"HelpProgram";
constexpr WORD kHelpDialog = 14029;

bool open_settings(CRegistry& key, int create) {
    CString path;
    path.Format(u"Software\\Tolvarine\\Common\\%d\\Settings", tvutil2::kMajorVersion);
    return key.Open(HKEY_CURRENT_USER, path, create, KEY_ALL_ACCESS) != 0;
}

bool has_entry(unsigned int program) {
    return program == tvutil2::kOmbrelia || program == tvutil2::kPelrin ||
           program == tvutil2::kZemt || program == tvutil2::kDovr;
}

void read_entry(unsigned int program) {
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\%d", TvGetProductName(program), tvutil2::kMajorVersion);
    CRegistry key;
    if (key.Open(HKEY_LOCAL_MACHINE, path, 0, KEY_READ) == 0) return;
    g_entry.title = key.GetValue(u"UserMenuTitle", CString());
    g_entry.link = key.GetValue(u"UserMenuLink", CString());
}

}  // namespace

BOOL TvOpenHelpPdfFile(const char16_t* product) {
    if (g_manual.IsEmpty()) {
        auto manual = tvutil2::manual_path(product);
        if (manual.View().size() >= MAX_PATH) return 0;
        g_manual = std::move(manual);
        if (DoesFileExist(g_manual) == 0) return 0;
    }
    ShellExecuteW(nullptr, u"open", g_manual, nullptr, nullptr, SW_SHOWNORMAL);
    return 1;
}

int TvGetHelpProgram(BOOL show_dialog) {
    CRegistry key;
    open_settings(key, 0);
    const auto program = static_cast<int>(key.GetValue(kHelpProgram, DWORD{0xFFFFFFFF}));
    if (show_dialog == FALSE) return program;
    const auto found = tvutil2::find_library_dialog(kHelpDialog);
    if (found.resource == nullptr) return program;
    if (found.loaded == nullptr) return 0;
    CHelpProgramDlg dialog(program);
    dialog.InitModalIndirect(found.loaded);
    if (dialog.DoModal() != IDOK) return program;
    tvutil2::set_help_program(dialog.program());
    return dialog.program();
}

CString TvGetHTTPToken(unsigned int program, unsigned int version, HTTP_LINK_TYPE type,
                       DWORD argument) {
    CString token;
    if (TvGetProductName(program).IsEmpty()) return token;
    token.Format(u"%u.%u.%d.%u", program, version, static_cast<int>(type), argument);
    return token;
}

CString TvGetHTTPLink(unsigned int program, unsigned int version, char16_t /*language*/,
                      HTTP_LINK_TYPE type, unsigned int argument) {
    auto token = TvGetHTTPToken(program, version, type, argument);
    if (token.IsEmpty()) return token;
    return u"/verchk/move.html?data=" + token + u"&validate=1";
}

CString TvGetHelpLink(unsigned int program, unsigned int version, char16_t /*language*/,
                      const char16_t* type, const char16_t* argument) {
    const auto number = [](const char16_t* text) { return text != nullptr ? _wtoi(text) : 0; };
    auto token = TvGetHTTPToken(program, version, static_cast<HTTP_LINK_TYPE>(number(type)),
                                static_cast<DWORD>(number(argument)));
    return token.IsEmpty() ? token : u"/h/" + token;
}

BOOL TvOpenHelpFile(const char16_t* /*product*/, const char16_t* type, const char16_t* argument) {
    const auto link = TvGetHttpHelpAddress() +
                      TvGetHelpLink(static_cast<unsigned int>(TvGetProgramCodeFromInstalled()),
                                    tvutil2::kMajorVersion, 0, type, argument);
    ShellExecuteW(nullptr, nullptr, link, nullptr, nullptr, SW_SHOWNORMAL);
    return 1;
}

void TvOpenHomePage(unsigned int program, unsigned int version, char16_t language,
                    HTTP_LINK_TYPE type, unsigned int argument) {
    const auto link =
        TvGetHttpTransactAddress() + TvGetHTTPLink(program, version, language, type, argument);
    ShellExecuteW(nullptr, nullptr, link, nullptr, nullptr, SW_SHOWNORMAL);
}

const char16_t* TvGetHomePageLink(unsigned int program, unsigned int version, HTTP_LINK_TYPE type,
                                  unsigned int argument) {
    static CString link;
    link = TvGetHttpTransactAddress() + TvGetHTTPLink(program, version, 0, type, argument);
    return link;
}

int TVUTIL_IsUserSupportMenu(unsigned int program, unsigned int /*unused*/) {
    if (!has_entry(program)) return 0;
    read_entry(program);
    if (g_entry.title.IsEmpty() || g_entry.link.IsEmpty()) return 0;
    g_entry.link = tvutil2::cleaned_link(g_entry.link);
    if (tvutil2::is_web_link(g_entry.link.View())) return g_entry.is_good = 1;
    __WriteInfoAppLog(1, u"User support menu link invalid: %s", g_entry.link);
    g_entry.link.Empty();
    return 0;
}

void TVUTIL_AddUserSupportMenu(CMFCPopupMenu* menu) {
    constexpr UINT kSupportCommand = 2999;
    if (menu == nullptr || menu->GetMenuBar()->CommandToIndex(ID_APP_ABOUT) < 0) return;
    menu->InsertSeparator();
    menu->InsertItem(CMFCToolBarMenuButton(kSupportCommand, nullptr, -1, g_entry.title));
}

void TVUTIL_OnUserSupportMenu(unsigned int /*unused*/, unsigned int /*unused_too*/) {
    if (!tvutil2::is_web_link(g_entry.link.View())) return;
    auto* const opened =
        ShellExecuteW(nullptr, u"open", g_entry.link, nullptr, nullptr, SW_SHOWNORMAL);
    const auto result = static_cast<int>(reinterpret_cast<std::intptr_t>(opened));
    if (result < 33) __WriteInfoAppLog(1, u"Failed open user support menu link: %d", result);
}

namespace tvutil2 {

CString manual_path(const char16_t* product) {
    constexpr WORD kPrimaryLanguage = 0x3FF;
    constexpr WORD kKorean = 18;
    const bool is_korean = (MLS_TvGetUserLanguage(product) & kPrimaryLanguage) == kKorean;
    char16_t own[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    const CString path(own);
    CString name;
    name.Format(u"%s7_%s.pdf", product, is_korean ? u"ko" : u"en");
    return path.Left(path.ReverseFind(u'\\') + 1) + name;
}

bool set_help_program(int program) {
    CRegistry key;
    return open_settings(key, 1) && key.SetValue(kHelpProgram, static_cast<DWORD>(program)) != 0;
}

const SupportEntry& support_entry() {
    return g_entry;
}

CString cleaned_link(CString link) {
    link.Trim();
    for (const char16_t c : std::u16string_view(u";|&`\"'")) link.Remove(c);
    return link;
}

// By hand: a pattern matcher of the language's library goes one call deeper for each character, and
// a value of the registry has room for more of them than the stack.
bool is_web_link(std::u16string_view link) {
    const auto rest = web_address_rest(link);
    const auto is_of_link = [](char16_t c) {
        constexpr std::u16string_view kForbidden = u"<>\"'";
        return !is_space(c) && kForbidden.find(c) == std::u16string_view::npos;
    };
    return !rest.empty() && std::all_of(rest.begin(), rest.end(), is_of_link);
}

}  // namespace tvutil2
