#include "tvutil2/platform/trust/wintrust.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/trust/signature_check.h"

LONG WinVerifyTrust(HWND /*window*/, const GUID* action, WINTRUST_DATA* data) {
    if (action == nullptr || *action != WINTRUST_ACTION_GENERIC_VERIFY_V2) {
        return TRUST_E_PROVIDER_UNKNOWN;
    }
    if (data == nullptr) return TRUST_E_SUBJECT_FORM_UNKNOWN;
    if (data->dwStateAction == WTD_STATEACTION_CLOSE) return 0;
    const bool is_understood =
        data->dwUIChoice == WTD_UI_NONE && data->fdwRevocationChecks == WTD_REVOKE_NONE &&
        data->dwUnionChoice == WTD_CHOICE_FILE && data->pFile != nullptr &&
        data->pFile->hFile == nullptr && data->dwStateAction <= WTD_STATEACTION_VERIFY;
    if (!is_understood) return TRUST_E_SUBJECT_FORM_UNKNOWN;
    const auto report = tvutil2::check_signature(data->pFile->pcwszFilePath);
    if (report.verdict == TRUST_E_NOSIGNATURE) SetLastError(report.error);
    return report.verdict;
}
