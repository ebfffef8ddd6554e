#include "tvutil2/services/signature.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/path.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/registry/open_key.h"
#include "tvutil2/platform/resource/dialog_text.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/system/version_info.h"
#include "tvutil2/platform/trust/signature_check.h"
#include "tvutil2/platform/trust/wincrypt.h"
#include "tvutil2/platform/trust/wintrust.h"
#include "tvutil2/services/verify_package_dialog.h"

#include <cstdio>
#include <string_view>
#include <vector>

namespace {

constexpr std::u16string_view kMaker = u"Tolvarine";
constexpr UINT kRunAnyway = 14138;
constexpr WORD kPackageDialog = 14034;

bool is_makers_name(std::u16string_view name) {
    return name.find(kMaker) != std::u16string_view::npos;
}

// What CryptQueryObject gives, as long as it is needed.
struct QueriedFile {
    HCERTSTORE store = nullptr;
    HCRYPTMSG message = nullptr;

    explicit QueriedFile(const char16_t* path) {
        CryptQueryObject(CERT_QUERY_OBJECT_FILE, path, CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED_EMBED,
                         CERT_QUERY_FORMAT_FLAG_BINARY, 0, nullptr, nullptr, nullptr, &store,
                         &message, nullptr);
    }
    ~QueriedFile() {
        if (store != nullptr) CertCloseStore(store, 0);
        if (message != nullptr) CryptMsgClose(message);
    }
    QueriedFile(const QueriedFile&) = delete;
    QueriedFile& operator=(const QueriedFile&) = delete;
};

class SignerCertificate {
  public:
    explicit SignerCertificate(const QueriedFile& file) {
        DWORD size = 0;
        if (CryptMsgGetParam(file.message, CMSG_SIGNER_INFO_PARAM, 0, nullptr, &size) == FALSE) {
            return;
        }
        // Of a type that is aligned as the structure at its front.
        std::vector<CMSG_SIGNER_INFO> buffer(size / sizeof(CMSG_SIGNER_INFO) + 1);
        if (CryptMsgGetParam(file.message, CMSG_SIGNER_INFO_PARAM, 0, buffer.data(), &size) ==
            FALSE) {
            return;
        }
        CERT_INFO wanted{};
        wanted.Issuer = buffer[0].Issuer;
        wanted.SerialNumber = buffer[0].SerialNumber;
        m_context = CertFindCertificateInStore(file.store, X509_ASN_ENCODING | PKCS_7_ASN_ENCODING,
                                               0, CERT_FIND_SUBJECT_CERT, &wanted, nullptr);
    }
    ~SignerCertificate() { CertFreeCertificateContext(m_context); }
    SignerCertificate(const SignerCertificate&) = delete;
    SignerCertificate& operator=(const SignerCertificate&) = delete;

    [[nodiscard]] CString display_name() const {
        if (m_context == nullptr) return {};
        const auto get = [this](char16_t* text, DWORD size) {
            return CertGetNameStringW(m_context, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, text,
                                      size);
        };
        std::vector<char16_t> name(std::size_t{get(nullptr, 0)} * 2);
        if (name.empty()) return {};
        if (get(name.data(), static_cast<DWORD>(name.size())) == 0) {
            std::fputs("CertGetNameString failed.\n", stdout);
            return {};
        }
        return CString(name.data());
    }

  private:
    const CERT_CONTEXT* m_context = nullptr;
};

// Whether the machine's hive wants more than a name.
bool only_trusted_signers() {
    CString path;
    path.Format(u"Software\\Tolvarine\\Common\\%d\\Trust", tvutil2::kMajorVersion);
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof value;
    tvutil2::OpenKey key;
    auto result = key.open(HKEY_LOCAL_MACHINE, path, KEY_READ);
    if (result == 0) {
        result = RegQueryValueExW(key.get(), u"TrustedSignersOnly", nullptr, &type,
                                  reinterpret_cast<BYTE*>(&value), &size);
    }
    if (result == ERROR_FILE_NOT_FOUND) return false;
    return result != 0 || type != REG_DWORD || value != 0;
}

// In one look at the file: its signature, its signer's name and where his chain ends.
bool is_by_trusted_maker(const char16_t* path) {
    const auto report = tvutil2::check_signature(path);
    const auto& facts = report.facts;
    return report.verdict == 0 && facts.chain_state == tvutil2::ChainState::trusted &&
           !facts.chain.empty() &&
           is_makers_name(tvutil2::to_utf16_lossy(facts.chain[0].display_name));
}

// The dialog without a window: its texts and what its buttons mean, as a question.
bool asks_for_install(const void* dialog_template, DWORD size) {
    const auto dialog = tvutil2::read_dialog_text(dialog_template, size);
    CString text;
    for (const auto& line : dialog.texts) {
        if (!text.IsEmpty()) text += u"\n\n";
        text += line.c_str();
    }
    for (const auto& [id, label] : dialog.buttons) {
        text += id == IDOK ? u"\n[OK] " : u"\n[Cancel] ";
        text += label.c_str();
    }
    return MessageBoxW(nullptr, text, dialog.caption.c_str(),
                       MB_OKCANCEL | MB_ICONWARNING | MB_DEFBUTTON2) == IDOK;
}

CString framework_library() {
    constexpr auto kName = u"mfc140u.dll";
    CString path;
    AfxGetModulePath(path, kName);
    if (DoesFileExist(path) != 0) return path;
    char16_t folder[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_SYSTEM, nullptr, SHGFP_TYPE_CURRENT, folder))) {
        return {};
    }
    path.Format(u"%s\\%s", folder, kName);
    return path;
}

CString product_version(const CString& path) {
    const DWORD size = GetFileVersionInfoSizeW(path, nullptr);
    std::vector<DWORD> block(size / sizeof(DWORD) + 1);
    void* value = nullptr;
    UINT length = 0;
    if (size == 0 || GetFileVersionInfoW(path, 0, size, block.data()) == FALSE ||
        VerQueryValueW(block.data(), u"\\VarFileInfo\\Translation", &value, &length) == FALSE ||
        length < sizeof(DWORD)) {
        return {};
    }
    const auto language = *static_cast<const DWORD*>(value);
    CString name;
    name.Format(u"\\StringFileInfo\\%04x%04x\\ProductVersion", LOWORD(language), HIWORD(language));
    if (VerQueryValueW(block.data(), name, &value, &length) == FALSE) return {};
    return CString(static_cast<const char16_t*>(value));
}

}  // namespace

int TvCheckFileIsSigned(const char16_t* path) {
    if (DoesFileExist(path) == 0) return 0;
    WINTRUST_FILE_INFO file{sizeof file, path, nullptr, nullptr};
    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    const auto verdict = WinVerifyTrust(nullptr, &WINTRUST_ACTION_GENERIC_VERIFY_V2, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(nullptr, &WINTRUST_ACTION_GENERIC_VERIFY_V2, &data);
    return verdict == TRUST_E_BAD_DIGEST || verdict == TRUST_E_NOSIGNATURE ? 0 : 1;
}

int TvCheckFileIsTolvarineSigned(const char16_t* path) {
    if (TvCheckFileIsSigned(path) == 0) return 0;
    const QueriedFile file(path);
    const SignerCertificate signer(file);
    if (!is_makers_name(signer.display_name().View())) return 0;
    return !only_trusted_signers() || is_by_trusted_maker(path) ? 1 : 0;
}

int TvVerifyTolvarineExe(const char16_t* path, BOOL is_silent) {
    if (DoesFileExist(path) == 0) return 0;
    if (TvCheckFileIsTolvarineSigned(path) != 0) return 1;
    if (is_silent != FALSE) return 0;
    CString question;
    question.Format(MLS_TVUTIL_ID2STR_DLL(tvutil2::resource_instance(), kRunAnyway), path);
    return AfxMessageBox(question, MB_OKCANCEL | MB_ICONERROR | MB_DEFBUTTON2) == IDOK ? 1 : 0;
}

int TvVerifyPackageSigned(const char16_t* path) {
    if (DoesFileExist(path) == 0) return 1;
    if (TvCheckFileIsTolvarineSigned(path) != 0) return 1;
    const auto found = tvutil2::find_library_dialog(kPackageDialog);
    if (found.resource == nullptr) return 1;
    if (found.loaded == nullptr) return 0;
    CVerifyPackageDlg dialog;
    dialog.InitModalIndirect(found.loaded);
    const auto answer = tvutil2::run_where_shown(dialog);
    if (answer) return *answer == IDOK ? 1 : 0;
    const auto size = SizeofResource(tvutil2::resource_instance(), found.resource);
    return asks_for_install(LockResource(found.loaded), size) ? 1 : 0;
}

void TvCheckVCRedistVersion() {
    const auto path = framework_library();
    if (path.IsEmpty() || _wcsicmp(product_version(path), u"14.0.24210.0") != 0) return;
    AfxMessageBox(
        u"An incompatible mfc140u.dll version number has been detected. Uninstall any Microsoft "
        u"Visual C++ 2015~2019 Redistributable(x86) packages and install the latest version.");
}
