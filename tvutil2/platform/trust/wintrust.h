// Whether a file's signature is good.
#pragma once

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/trust/trust_errors.h"

inline constexpr DWORD WTD_UI_NONE = 2;
inline constexpr DWORD WTD_REVOKE_NONE = 0;
inline constexpr DWORD WTD_CHOICE_FILE = 1;
inline constexpr DWORD WTD_STATEACTION_IGNORE = 0;
inline constexpr DWORD WTD_STATEACTION_VERIFY = 1;
inline constexpr DWORD WTD_STATEACTION_CLOSE = 2;

inline constexpr GUID WINTRUST_ACTION_GENERIC_VERIFY_V2 = {
    0x00AAC56B, 0xCD44, 0x11D0, {0x8C, 0xC2, 0x00, 0xC0, 0x4F, 0xC2, 0x95, 0xEE}};

struct WINTRUST_FILE_INFO {
    DWORD cbStruct;
    const char16_t* pcwszFilePath;
    HANDLE hFile;  ///< must be null
    const GUID* pgKnownSubject;
};

struct WINTRUST_DATA {
    DWORD cbStruct;
    void* pPolicyCallbackData;
    void* pSIPClientData;
    DWORD dwUIChoice;
    DWORD fdwRevocationChecks;
    DWORD dwUnionChoice;
    WINTRUST_FILE_INFO* pFile;
    DWORD dwStateAction;
    HANDLE hWVTStateData;
    const char16_t* pwszURLReference;
    DWORD dwProvFlags;
    DWORD dwUIContext;
    void* pSignatureSettings;
};

/// The verdict on a file's signature: 0 for one that is intact and of a chain that the machine's
/// trust folder or the host trusts; CERT_E_UNTRUSTEDROOT, CERT_E_CHAINING, CERT_E_EXPIRED or
/// CERT_E_WRONG_USAGE for one that is intact, of another chain; TRUST_E_BAD_DIGEST when the file,
/// or the signature itself, isn't what was signed. TRUST_E_NOSIGNATURE for all else, with the
/// reason as the last error: TRUST_E_SUBJECT_FORM_UNKNOWN for a file that is no executable,
/// TRUST_E_NOSIGNATURE, TRUST_E_MALFORMED_SIGNATURE, ERROR_FILE_NOT_FOUND and its kin, or
/// ERROR_MOD_NOT_FOUND without the module that knows certificates.
///
/// The action is WINTRUST_ACTION_GENERIC_VERIFY_V2 (else TRUST_E_PROVIDER_UNKNOWN), and what is
/// chosen as above: no questions, no revocation lists, a file by its path. With anything else it is
/// TRUST_E_SUBJECT_FORM_UNKNOWN. Nothing is kept between the calls; WTD_STATEACTION_CLOSE does
/// nothing and gives 0. Safe from any thread; takes as long as reading the file.
TVUTIL_API LONG WinVerifyTrust(HWND window, const GUID* action, WINTRUST_DATA* data);
