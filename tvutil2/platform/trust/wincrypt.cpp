#include "tvutil2/platform/trust/wincrypt.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/system/executable_file.h"
#include "tvutil2/platform/trust/trust_module.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

using Blob = std::vector<BYTE>;

Blob blob_of(DerBytes bytes) {
    const auto* const first = reinterpret_cast<const BYTE*>(bytes.data());
    return {first, first + bytes.size()};
}

// The number itself, lowest byte first.
Blob number_of(DerBytes value) {
    const auto number = DerReader(value).next();
    auto blob = number ? blob_of(number->content) : Blob();
    std::reverse(blob.begin(), blob.end());
    return blob;
}

bool is_blob(const CRYPT_DATA_BLOB& a, const Blob& b) {
    return a.cbData == b.size() && std::equal(b.begin(), b.end(), a.pbData);
}

struct StoredCertificate {
    Blob encoded, issuer, serial;
};

// Issuer and number of a certificate (RFC 5280); nothing for what is none.
std::optional<StoredCertificate> stored(DerBytes bytes) {
    const auto whole = DerReader(bytes).next(kDerSequence);
    const auto fields = whole ? DerReader(whole->content).next(kDerSequence) : std::nullopt;
    if (!fields) return std::nullopt;
    DerReader reader(fields->content);
    if (reader.is_next(kDerContext0)) static_cast<void>(reader.next());
    const auto serial = reader.next(kDerInteger);
    const auto algorithm = serial ? reader.next(kDerSequence) : std::nullopt;
    const auto issuer = algorithm ? reader.next(kDerSequence) : std::nullopt;
    if (!issuer) return std::nullopt;
    return StoredCertificate{blob_of(bytes), blob_of(issuer->whole), number_of(serial->whole)};
}

class CertificateStore : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::certificates;
    explicit CertificateStore(const SignedMessage& message) : HandleObject(kHandleKind) {
        for (const auto bytes : message.certificates) {
            if (auto certificate = stored(bytes)) all.push_back(std::move(*certificate));
        }
    }
    std::vector<StoredCertificate> all;
};

class OpenMessage : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::message;
    explicit OpenMessage(const SignedMessage& message)
        : HandleObject(kHandleKind),
          issuer(blob_of(message.issuer)),
          serial(number_of(message.serial)) {}
    Blob issuer, serial;
};

struct FoundCertificate {
    CERT_CONTEXT context;  // what the caller sees of it
    Blob encoded;
    std::size_t index;  // in its store
};

// The context stands at the front of what it belongs to.
const FoundCertificate& found_of(const CERT_CONTEXT* context) {
    return *reinterpret_cast<const FoundCertificate*>(context);
}

// Nothing with CRYPT_E_NO_MATCH or the error of the file.
std::optional<EmbeddedSignature> signature_in(const char16_t* path) {
    const auto file = ExecutableFile::open(path);
    if (!file) return std::nullopt;
    auto signature = find_signature(*file, file->size());
    if (!signature) SetLastError(CRYPT_E_NO_MATCH);
    return signature;
}

void give(DWORD* out, DWORD value) {
    if (out != nullptr) *out = value;
}

}  // namespace
}  // namespace tvutil2

using tvutil2::fail_with;

BOOL CryptQueryObject(DWORD object_type, const void* object, DWORD content_types,
                      DWORD format_types, DWORD /*flags*/, DWORD* encoding, DWORD* content,
                      DWORD* format, HCERTSTORE* store, HCRYPTMSG* message, const void** context) {
    if (object_type != CERT_QUERY_OBJECT_FILE || object == nullptr) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    if ((content_types & CERT_QUERY_CONTENT_FLAG_PKCS7_SIGNED_EMBED) == 0 ||
        (format_types & CERT_QUERY_FORMAT_FLAG_BINARY) == 0) {
        return fail_with(CRYPT_E_NO_MATCH);
    }
    const auto signature = tvutil2::signature_in(static_cast<const char16_t*>(object));
    if (!signature) return FALSE;
    HCERTSTORE new_store = nullptr;
    if (store != nullptr) {
        new_store = tvutil2::make_handle<HCERTSTORE>(
            std::make_shared<tvutil2::CertificateStore>(signature->message));
        if (new_store == nullptr) return FALSE;
    }
    if (message != nullptr) {
        *message = tvutil2::make_handle<HCRYPTMSG>(
            std::make_shared<tvutil2::OpenMessage>(signature->message));
        if (*message == nullptr) {
            if (new_store != nullptr) CertCloseStore(new_store, 0);
            return FALSE;
        }
    }
    if (store != nullptr) *store = new_store;
    if (context != nullptr) *context = nullptr;
    tvutil2::give(encoding, X509_ASN_ENCODING | PKCS_7_ASN_ENCODING);
    tvutil2::give(content, CERT_QUERY_CONTENT_PKCS7_SIGNED_EMBED);
    tvutil2::give(format, CERT_QUERY_FORMAT_BINARY);
    return TRUE;
}

BOOL CryptMsgGetParam(HCRYPTMSG message, DWORD parameter, DWORD index, void* data, DWORD* size) {
    if (parameter != CMSG_SIGNER_INFO_PARAM || index != 0 || size == nullptr) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    const auto opened = tvutil2::object_of<tvutil2::OpenMessage>(message);
    if (!opened) return FALSE;
    const auto& issuer = opened->issuer;
    const auto& serial = opened->serial;
    const auto needed =
        static_cast<DWORD>(sizeof(CMSG_SIGNER_INFO) + issuer.size() + serial.size());
    const DWORD room = std::exchange(*size, needed);
    if (data == nullptr) return TRUE;
    if (room < needed) return fail_with(ERROR_MORE_DATA);
    auto* const bytes = static_cast<BYTE*>(data) + sizeof(CMSG_SIGNER_INFO);
    auto* const behind = std::copy(issuer.begin(), issuer.end(), bytes);
    std::copy(serial.begin(), serial.end(), behind);
    const CMSG_SIGNER_INFO info{
        1, {static_cast<DWORD>(issuer.size()), bytes}, {static_cast<DWORD>(serial.size()), behind}};
    std::memcpy(data, &info, sizeof info);
    return TRUE;
}

BOOL CryptMsgClose(HCRYPTMSG message) {
    return message == nullptr || tvutil2::close_handle_of<tvutil2::OpenMessage>(message);
}

const CERT_CONTEXT* CertFindCertificateInStore(HCERTSTORE store, DWORD /*encoding*/,
                                               DWORD /*flags*/, DWORD type, const void* parameter,
                                               const CERT_CONTEXT* previous) {
    std::size_t next = previous != nullptr ? tvutil2::found_of(previous).index + 1 : 0;
    CertFreeCertificateContext(previous);
    const auto opened = tvutil2::object_of<tvutil2::CertificateStore>(store);
    if (!opened) return nullptr;
    if (type != CERT_FIND_SUBJECT_CERT || parameter == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const auto& wanted = *static_cast<const CERT_INFO*>(parameter);
    for (; next < opened->all.size(); ++next) {
        const auto& certificate = opened->all[next];
        if (!tvutil2::is_blob(wanted.Issuer, certificate.issuer) ||
            !tvutil2::is_blob(wanted.SerialNumber, certificate.serial)) {
            continue;
        }
        auto found = std::make_unique<tvutil2::FoundCertificate>();
        found->encoded = certificate.encoded;
        found->index = next;
        found->context = {X509_ASN_ENCODING, found->encoded.data(),
                          static_cast<DWORD>(found->encoded.size())};
        return &found.release()->context;
    }
    SetLastError(CRYPT_E_NOT_FOUND);
    return nullptr;
}

BOOL CertFreeCertificateContext(const CERT_CONTEXT* certificate) {
    if (certificate == nullptr) return TRUE;
    const std::unique_ptr<const tvutil2::FoundCertificate> owner(&tvutil2::found_of(certificate));
    return TRUE;
}

BOOL CertCloseStore(HCERTSTORE store, DWORD /*flags*/) {
    return store == nullptr || tvutil2::close_handle_of<tvutil2::CertificateStore>(store);
}

DWORD CertGetNameStringW(const CERT_CONTEXT* certificate, DWORD type, DWORD /*flags*/,
                         const void* /*parameter*/, char16_t* text, DWORD size) {
    std::string name;
    const auto* const module = tvutil2::trust_module();
    if (certificate != nullptr && type == CERT_NAME_SIMPLE_DISPLAY_TYPE && module != nullptr) {
        const tvutil2::DerBytes bytes(
            reinterpret_cast<const std::byte*>(certificate->pbCertEncoded),
            certificate->cbCertEncoded);
        static_cast<void>(module->display_name(bytes, name));
    }
    const auto wide = tvutil2::to_utf16_lossy(name);
    const auto needed = static_cast<DWORD>(wide.size()) + 1;
    if (text == nullptr || size == 0) return needed;
    const auto count = std::min(needed, size);
    *std::copy_n(wide.begin(), count - 1, text) = u'\0';
    return count;
}
