// The start of a sibling product from a session URL.
//
// Nothing here holds state or shows a message. A secret never stands in the clear on a command
// line: the URL that the sibling gets carries protected strings, which it reads back under the same
// account only.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

class CUrlInfo;

/// Reads a URL and launches it: 1 when the sibling was started; 0 when the URL is refused, no
/// product takes its scheme, its host can't be one (anything but letters, digits, "-._~:[]%" and
/// what isn't ASCII, or a "-" in front), the product isn't found or doesn't start. The program
/// isn't waited for.
///
/// Whatever the record holds, the product gets two arguments, "-url" and the URL, or three of which
/// the last is the host; the record that it reads from the URL is the one that was launched.
TVUTIL_API int ExecuteURL(const char16_t* url);
TVUTIL_API int ExecuteURL(const CUrlInfo& info);

/// Finds a product's executable by its name: beside the running one, else where the registry says
/// that its highest version is installed (HKLM\Software\Tolvarine\<name>\<version>). The result is
/// the major version, 8 for one that lies beside; 0 when there is none, and `path` then holds
/// nothing to rely on.
TVUTIL_API unsigned int GetProductPath(const char16_t* name, CString& path);

/// The acknowledgment of the family's translators, in the language of the thread.
TVUTIL_API CString GetMsgAckTranslation();
