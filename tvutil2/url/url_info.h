// CUrlInfo: a connection as the family's programs hand it to one another, and its written form, the
// session URL.
//
//     [scheme "://"] [user [":" protected-password] "@"] host [":" port] ["/" path]
//         ["?" key "=" value ["&" key "=" value ...]]
//
// User, password, host, path, keys and values are escaped (url_text.h), the scheme isn't; so a
// written URL has no blank and at most one raw "/" behind the "://". A password and a value of
// "Passphrase" never stand in it in the clear: they are protected strings (string_protection.h)
// with a digest, under the key text of the current account for version "5.3".
//
// A record belongs to one thread at a time; nothing here holds state of its own.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

class TVUTIL_API CUrlInfo {
  public:
    /// Whether a protected string has a digest of the plain bytes behind it, by which the reader
    /// tells a wrong key or a damaged string from a good one.
    enum MAC : int { MAC_NONE = 0, MAC_MD5 = 1 };
    /// The cipher of protected strings: there is one.
    enum ENC : int { ENC_RC4 = 0 };

    CUrlInfo() = default;
    CUrlInfo(const CUrlInfo&) = default;
    CUrlInfo& operator=(const CUrlInfo&) = default;
    virtual ~CUrlInfo();

    /// Reads a URL: 1, or 0 when it is refused: nothing before "://", "@", "?", "/" or the last
    /// ":", no host, or a secret and no account to read it under. The fields then hold what was
    /// read so far.
    ///
    /// Scheme, user, host, path and port are set anew; the password and the query items of an
    /// earlier URL stay unless this one replaces them. A secret that can't be read under this
    /// account stays as it was written. `unescape` 0 leaves the escapes of all fields as they are.
    ///
    /// The user part ends at the last "@", the query begins at the last "?"; "rdp" has the port
    /// 3389 unless another is given. Query items without a key or a "=" are dropped. Keys are
    /// known without regard to case: "Session", "UserKey" and "Proxy" are stored under that
    /// spelling and under the one they came in, "Agent" under that one only; a "UserKey", and an
    /// "Agent" other than "0", set "AuthMethod" to "11".
    int Parse_URL(const char16_t* url, int unescape);

    /// Writes the URL: 1, or 0 when there is a secret to write and no account to protect it under;
    /// `url` then holds what was written so far.
    ///
    /// `dup` adds "DupSession=1". `secrets` 0 leaves the password and any "Passphrase" out. A
    /// password without a user isn't written.
    int MakeURL(CString& url, int dup, int secrets) const;

    /// 1 when the last ":" of `text` separates a port: when what stands before it is in brackets,
    /// or has no ":" itself.
    static int IsURLWithPort(const CString& text);

    /// Protects `text` in its place: 1, or 0 for a `mac` that is none, with `text` as it was. A
    /// null key is TvGetCipherKey(). What the ANSI code page can't hold becomes "?". `enc` isn't
    /// looked at.
    static int EncryptString(const char* key, CString& text, MAC mac, ENC enc);

    /// Reads a protected string in its place: 1, or 0, with `text` as it was, when it isn't Base64,
    /// its digest doesn't match or `mac` is none. Without a digest a wrong key goes unnoticed. A
    /// zero byte ends the text. A null key is TvGetCipherKey() here, too.
    static int DecryptString(const char* key, CString& text, MAC mac, ENC enc);

    CString m_strScheme;  ///< as written
    CString m_strUser;    ///< plain, as are password and host
    CString m_strPassword;
    CString m_strHost;
    WORD m_nPort = 0;   ///< 0: none
    CString m_strPath;  ///< with its leading "/"
    /// Carried for the products: nothing here reads them.
    CString m_strReserved;
    DWORD m_nReserved1 = 0;
    DWORD m_nReserved2 = 0;
    DWORD m_nReserved3 = 0;
    DWORD m_nReserved4 = 0;
    DWORD m_nReserved5 = 12;
    DWORD m_nReserved6 = 8;
    DWORD m_nReserved7 = 0;
    DWORD m_nReserved8 = 0;
    DWORD m_nReserved9 = 0;
    CMapStringToString m_mapParams{10};  ///< query items; keys are case-sensitive
};

/// Names of the methods of authentication, and of the sources of a key, for the products' lists.
TVUTIL_API extern const char16_t* const kAuthMethodNames[6];
TVUTIL_API extern const char16_t* const kKeySourceNames[4];
