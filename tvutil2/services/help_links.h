// The Help menu of a product: the manual beside it, the paths and tokens of service links, and an
// entry whose title and link an administrator puts into the registry.
//
// A link of the entry is trimmed and loses the characters that a shell would read something into;
// what is left must be an http or https address without white space, quotes and angle brackets.
//
// Nothing here shows a message. The manual's path and the entry are kept for
// the process without a lock: the functions belong to the thread of the user interface, but for
// those of tokens and of links, which keep nothing.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

#include <string_view>

class CMFCPopupMenu;

/// What a link is for: numbers of the products' own, which only go into the token.
enum HTTP_LINK_TYPE : int {};

/// Opens "<product>7_<ko or en>.pdf" beside the executable, by the language in force for the
/// product. The path is made by the first call and serves all later ones, whatever they name. 0
/// when the first call finds no such file, or its path has no room in MAX_PATH; otherwise 1,
/// whether or not a program opens it.
extern "C" TVUTIL_API BOOL TvOpenHelpPdfFile(const char16_t* product);

/// The program that is to open the manual, as the user's "HelpProgram" says: the browser, 0 to 2 in
/// the order of the dialog, or -1 for the help pages on the web, which is what a missing value
/// means and one that is no number. With `show_dialog` the user may choose another one first, by
/// dialog 14029; without a display nobody is asked, and what is stored stays. 0 when the dialog's
/// template is there and can't be read.
TVUTIL_API int TvGetHelpProgram(BOOL show_dialog);

/// "<program>.8.<type>.<argument>" for version 8, in decimal: digits, dots and a minus, as a URL
/// may hold them anywhere. Empty for a program code of 8 or above.
TVUTIL_API CString TvGetHTTPToken(unsigned int program, unsigned int version, HTTP_LINK_TYPE type,
                                  DWORD argument);
/// "/verchk/move.html?data=<token>&validate=1"; empty where the token is. The language doesn't
/// count.
TVUTIL_API CString TvGetHTTPLink(unsigned int program, unsigned int version, char16_t language,
                                 HTTP_LINK_TYPE type, unsigned int argument);
/// "/h/<token>", with the numbers at the front of both texts (_wtoi); empty where the token is. The
/// language doesn't count.
TVUTIL_API CString TvGetHelpLink(unsigned int program, unsigned int version, char16_t language,
                                 const char16_t* type, const char16_t* argument);

/// Opens TvGetHelpLink for the running product and this version below TvGetHttpHelpAddress. 1,
/// whether or not a program opens it. The product's name doesn't count.
extern "C" TVUTIL_API BOOL TvOpenHelpFile(const char16_t* product, const char16_t* type,
                                          const char16_t* argument);
/// Opens TvGetHTTPLink below TvGetHttpTransactAddress.
extern "C" TVUTIL_API void TvOpenHomePage(unsigned int program, unsigned int version,
                                          char16_t language, HTTP_LINK_TYPE type,
                                          unsigned int argument);
/// What TvOpenHomePage opens, in a text that the next call overwrites.
extern "C" TVUTIL_API const char16_t* TvGetHomePageLink(unsigned int program, unsigned int version,
                                                        HTTP_LINK_TYPE type, unsigned int argument);

/// Reads "UserMenuTitle" and "UserMenuLink" of the machine's key of the program: Ombrelia, Pelrin,
/// Zemt or Dovr. 1 when there is a title, and a link that is good; a bad one goes into the log and
/// is forgotten. What was read before stays while the key can't be opened.
TVUTIL_API int TVUTIL_IsUserSupportMenu(unsigned int program, unsigned int unused);
/// Puts a separator and the entry, with command 2999, at the end of a menu that has the About
/// command, which is the Help menu. Other menus stay, and null is allowed.
TVUTIL_API void TVUTIL_AddUserSupportMenu(CMFCPopupMenu* menu);
/// Opens the link that TVUTIL_IsUserSupportMenu found good, if any. A failure goes into the log.
TVUTIL_API void TVUTIL_OnUserSupportMenu(unsigned int unused, unsigned int unused_too);

namespace tvutil2 {

/// Where TvOpenHelpPdfFile looks first for the manual of a product.
[[nodiscard]] TVUTIL_API CString manual_path(const char16_t* product);

/// Stores what TvGetHelpProgram gives; false when it can't be stored.
TVUTIL_API bool set_help_program(int program);

struct SupportEntry {
    CString title;
    CString link;
    int is_good = 0;  ///< 1 from the first good link on
};
/// What TVUTIL_IsUserSupportMenu read last.
[[nodiscard]] TVUTIL_API const SupportEntry& support_entry();

/// The link of the entry as it is kept: trimmed, and without semicolons, bars, ampersands,
/// backquotes and quotes.
[[nodiscard]] TVUTIL_API CString cleaned_link(CString link);
/// Whether the whole text is "http://" or "https://", in any case, with something behind it that
/// holds no white space, quote or angle bracket.
[[nodiscard]] TVUTIL_API bool is_web_link(std::u16string_view link);

}  // namespace tvutil2
