// One HTTP GET, and where the maker's web services are.
#pragma once

#include "tvutil2/framework/strings.h"

/// Fetches an http or https address and appends the body to `response`, which the caller passes
/// empty. Waits for as long as the network takes, shows and logs nothing, and shares nothing with
/// other calls.
///
/// 0 for success, whatever the server's status: an error page is a body. Otherwise the last error
/// at the failure, which may be 0 too (for an address of another scheme, say), so that 0 and an
/// empty body may stand for a failure; 1 for an exception of the framework, whose message then
/// replaces `response`, and in the same way for a body that there is no memory for or that has more
/// than 2^31 - 1 units. A body that breaks off gives 0, as far as it came.
///
/// The body is taken in pieces of 4096 bytes, each of them up to its first zero and in the ANSI
/// code page: a character of several bytes that falls across two pieces is lost.
///
/// What is asked for is the address's text behind the first place where the server's name stands,
/// whatever stands there, less a port: a server whose name is part of the scheme is asked for the
/// rest of the scheme too.
///
/// An https server's certificate may be anybody's, for any name and of any time: the connection
/// hides what passes from bystanders, and proves nothing. Nothing fetched here may be run, or
/// believed, without a check of its own.
TVUTIL_API DWORD TvHTTPConnection(CString url, CString& response);

/// "https://transact." and "https://api.", with the domain that the string value "TransactDomain"
/// or "HelpDomain" of the user's Software\Tolvarine\Common\LiveUpdate holds, or the maker's own.
/// Worked out once in the life of the process. Safe from any thread.
TVUTIL_API CString TvGetHttpTransactAddress();
TVUTIL_API CString TvGetHttpHelpAddress();
