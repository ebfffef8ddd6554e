// Signatures on OpenSSL's CMS.
#include "tvutil2/platform/late/openssl_start.h"
#include "tvutil2/platform/trust/module/certificate.h"
#include "tvutil2/platform/trust/module/chain.h"
#include "tvutil2/platform/trust/module/digest.h"
#include "tvutil2/platform/trust/trust_module.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <algorithm>
#include <new>
#include <string_view>

namespace tvutil2 {
namespace {

using namespace std::string_view_literals;

bool same(DerBytes bytes, std::string_view text) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()) == text;
}

// DER of a name, and the bytes of a number.
std::string name_bytes(const X509_NAME* name) {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509_NAME(name, &bytes);
    if (size < 0) return {};
    std::string result(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    OPENSSL_free(bytes);
    return result;
}

bool is_serial(const X509* certificate, DerBytes serial) {
    unsigned char* bytes = nullptr;
    const int size =
        i2d_ASN1_INTEGER(const_cast<ASN1_INTEGER*>(X509_get0_serialNumber(certificate)), &bytes);
    if (size < 0) return false;
    const bool is_same =
        same(serial, {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)});
    OPENSSL_free(bytes);
    return is_same;
}

Certificates certificates_of(const SignedMessage& message) {
    Certificates all(sk_X509_new_null());
    for (const auto bytes : message.certificates) {
        auto one = read_certificate(bytes);
        if (!all || !one || sk_X509_push(all.get(), one.get()) == 0) return nullptr;
        static_cast<void>(one.release());
    }
    return all;
}

X509* signer_among(STACK_OF(X509) * certificates, const SignedMessage& message) {
    for (int i = 0; i < sk_X509_num(certificates); ++i) {
        auto* const certificate = sk_X509_value(certificates, i);
        if (same(message.issuer, name_bytes(X509_get_issuer_name(certificate))) &&
            is_serial(certificate, message.serial)) {
            return certificate;
        }
    }
    return nullptr;
}

// The one value of an attribute that the signer signed, of an ASN.1 type; null for none or several.
const void* signed_value(CMS_SignerInfo* signer, int attribute, int type) {
    constexpr int kOnlyOne = -3;  // the attribute stands once and has one value
    return CMS_signed_get0_data_by_OBJ(signer, OBJ_nid2obj(attribute), kOnlyOne, type);
}

bool has_content_type(CMS_SignerInfo* signer, DerBytes type) {
    const auto* const value =
        static_cast<const ASN1_OBJECT*>(signed_value(signer, NID_pkcs9_contentType, V_ASN1_OBJECT));
    return value != nullptr &&
           same(type, {reinterpret_cast<const char*>(OBJ_get0_data(value)), OBJ_length(value)});
}

bool has_message_digest(CMS_SignerInfo* signer, std::string_view digest) {
    const auto* const value = static_cast<const ASN1_OCTET_STRING*>(
        signed_value(signer, NID_pkcs9_messageDigest, V_ASN1_OCTET_STRING));
    return value != nullptr &&
           std::string_view(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                            static_cast<std::size_t>(ASN1_STRING_length(value))) == digest;
}

// The signer's first, as others want it that look for him.
BorrowedCertificates signer_first(STACK_OF(X509) * certificates, X509* signer) {
    BorrowedCertificates all(sk_X509_new_null());
    if (!all || sk_X509_push(all.get(), signer) == 0) return nullptr;
    for (int i = 0; i < sk_X509_num(certificates); ++i) {
        auto* const one = sk_X509_value(certificates, i);
        if (one != signer && sk_X509_push(all.get(), one) == 0) return nullptr;
    }
    return all;
}

// How many certificates a list (RFC 5035) has; -1 for what is none.
int entries_in(DerBytes list) {
    const auto whole = DerReader(list).next(kDerSequence);
    const auto entries = whole ? DerReader(whole->content).next(kDerSequence) : std::nullopt;
    if (!entries) return -1;
    int count = 0;
    for (DerReader reader(entries->content); !reader.is_at_end(); ++count) {
        if (!reader.next(kDerSequence)) return -1;
    }
    return count;
}

// Where the signer says which certificates are his and those above it, they must be these. In a
// file of ours he says it of all that came along.
bool names_certificates(CMS_SignerInfo* signer, STACK_OF(X509) * certificates, X509* certificate,
                        bool names_all) {
    const int at = CMS_signed_get_attr_by_NID(signer, NID_id_smime_aa_signingCertificateV2, -1);
    if (at < 0) return !names_all;
    const auto* const value = static_cast<const ASN1_STRING*>(
        signed_value(signer, NID_id_smime_aa_signingCertificateV2, V_ASN1_SEQUENCE));
    const auto all = signer_first(certificates, certificate);
    if (value == nullptr || !all) return false;
    const auto* bytes = ASN1_STRING_get0_data(value);
    const auto size = static_cast<std::size_t>(ASN1_STRING_length(value));
    if (names_all && entries_in({reinterpret_cast<const std::byte*>(bytes), size}) !=
                         sk_X509_num(certificates)) {
        return false;
    }
    const SigningCertificates named(
        d2i_ESS_SIGNING_CERT_V2(nullptr, &bytes, static_cast<long>(size)));
    return named && OSSL_ESS_check_signing_certs(nullptr, named.get(), all.get(), 1) > 0;
}

bool add_names(CMS_SignerInfo* signer, STACK_OF(X509) * certificates, X509* certificate) {
    const SigningCertificates named(
        OSSL_ESS_signing_cert_v2_new_init(EVP_sha256(), certificate, certificates, 0));
    unsigned char* bytes = nullptr;
    const int size = named ? i2d_ESS_SIGNING_CERT_V2(named.get(), &bytes) : -1;
    if (size < 0) return false;
    const bool is_added = CMS_signed_add1_attr_by_NID(signer, NID_id_smime_aa_signingCertificateV2,
                                                      V_ASN1_SEQUENCE, bytes, size) == 1;
    OPENSSL_free(bytes);
    return is_added;
}

std::int64_t signing_time_of(CMS_SignerInfo* signer) {
    for (const int type : {V_ASN1_UTCTIME, V_ASN1_GENERALIZEDTIME}) {
        const auto* const time = signed_value(signer, NID_pkcs9_signingTime, type);
        if (time != nullptr) return seconds_of(static_cast<const ASN1_TIME*>(time));
    }
    return 0;
}

Message parsed(const std::vector<std::byte>& bytes) {
    const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
    return Message(d2i_CMS_ContentInfo(nullptr, &next, static_cast<long>(bytes.size())));
}

const char* name_of(DigestKind kind) {
    switch (kind) {
        case DigestKind::sha384:
            return "sha384";
        case DigestKind::sha512:
            return "sha512";
        default:
            return "sha256";
    }
}

// As the linker reckons it: a sum of numbers of 16 bits whose carry comes back in, and the size.
std::uint32_t checksum_of(std::uint64_t sum, std::uint64_t size) {
    while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16U);
    return static_cast<std::uint32_t>(sum + size);
}

class OpensslTrust final : public TrustModule {
  public:
    bool check(const FileBytes& file, const EmbeddedSignature& signature,
               const TrustSettings& settings, SignatureFacts& facts) const override {
        std::string digest;
        bool is_sum_right = false;
        if (!digest_file(file, signature, digest, is_sum_right)) return false;
        facts.digest_name = name_of(signature.message.digest);
        facts.digest = hex(reinterpret_cast<const unsigned char*>(digest.data()), digest.size());
        facts.integrity = check_message(signature, digest, settings, facts);
        if (facts.integrity == Integrity::intact && !is_sum_right) {
            facts.integrity = Integrity::changed;
        }
        ERR_clear_error();
        return true;
    }

    bool display_name(DerBytes bytes, std::string& name) const override {
        const auto certificate = read_certificate(bytes);
        if (certificate) name = display_name_of(certificate.get());
        ERR_clear_error();
        return static_cast<bool>(certificate);
    }

    std::string sign(const FileBytes& file, std::uint64_t size, const SigningIdentity& identity,
                     std::string& message) const override;

  private:
    static bool digest_file(const FileBytes& file, const EmbeddedSignature& signature,
                            std::string& digest, bool& is_sum_right) {
        const bool has_sum = signature.checksum != 0;
        std::uint64_t sum = 0;
        if (!digest_ranges(file, signature.signed_ranges, signature.message.digest, digest,
                           has_sum ? &sum : nullptr)) {
            return false;
        }
        std::uint64_t size = sizeof signature.checksum;
        for (const auto& range : signature.signed_ranges) size += range.size;
        for (const auto& range : signature.unsigned_ranges) {
            size += range.size;
            const auto add = [&sum](DerBytes part) {
                sum += sum_of_numbers(part);
                return true;
            };
            if (has_sum && !read_through(file, range, add)) return false;
        }
        is_sum_right = !has_sum || checksum_of(sum, size) == signature.checksum;
        return true;
    }

    static Integrity check_message(const EmbeddedSignature& signature, const std::string& digest,
                                   const TrustSettings& settings, SignatureFacts& facts) {
        const auto& message = signature.message;
        const auto certificates = certificates_of(message);
        auto* const certificate = signer_among(certificates.get(), message);
        const auto parsed_message = parsed(signature.detached);
        if (certificate == nullptr || !parsed_message) return Integrity::malformed;
        auto* const signers = CMS_get0_SignerInfos(parsed_message.get());
        if (sk_CMS_SignerInfo_num(signers) != 1) return Integrity::malformed;
        auto* const signer = sk_CMS_SignerInfo_value(signers, 0);
        CMS_SignerInfo_set1_signer_cert(signer, certificate);
        // A PE file's message signs a content, and the content has the digest of the file.
        std::string signed_digest = digest;
        if (!message.file_digest.empty()) {
            if (!same(message.file_digest, digest)) return Integrity::changed;
            const MemoryBytes content(message.content);
            if (!digest_ranges(content, {{0, message.content.size()}}, message.digest,
                               signed_digest, nullptr)) {
                return Integrity::malformed;
            }
        }
        // Others' certificates come along with a counter-signature alone.
        const bool only_chain = !message.has_unsigned_attributes;
        const bool is_intact = has_content_type(signer, message.content_type) &&
                               has_message_digest(signer, signed_digest) &&
                               CMS_SignerInfo_verify(signer) == 1 &&
                               names_certificates(signer, certificates.get(), certificate,
                                                  signature.kind == SignedKind::elf) &&
                               holds_together(certificates.get(), certificate, only_chain);
        if (!is_intact) return Integrity::changed;
        facts.signing_time = signing_time_of(signer);
        follow_chain(certificates.get(), certificate, settings, facts);
        return Integrity::intact;
    }
};

int give_password(char* buffer, int size, int /*is_new*/, void* data) {
    const auto& password = *static_cast<const std::string*>(data);
    if (password.empty() || password.size() > static_cast<std::size_t>(size)) return -1;
    password.copy(buffer, password.size());
    return static_cast<int>(password.size());
}

std::string OpensslTrust::sign(const FileBytes& file, std::uint64_t size,
                               const SigningIdentity& identity, std::string& message) const {
    const auto certificates = read_certificates(identity.certificates);
    const Bio key_bytes(
        BIO_new_mem_buf(identity.key.data(), static_cast<int>(identity.key.size())));
    const Key key(key_bytes ? PEM_read_bio_PrivateKey(key_bytes.get(), nullptr, give_password,
                                                      const_cast<std::string*>(&identity.password))
                            : nullptr);
    ERR_clear_error();
    if (sk_X509_num(certificates.get()) < 1) return "there is no certificate";
    if (!key) return "the private key can't be read: it is none, or its password is another";
    const Certificate signer(sk_X509_shift(certificates.get()));
    const bool fits = X509_check_private_key(signer.get(), key.get()) == 1;
    ERR_clear_error();
    if (!fits) return "the private key isn't the certificate's";

    constexpr unsigned int kForm = CMS_DETACHED | CMS_BINARY | CMS_PARTIAL | CMS_NOSMIMECAP;
    const Message signature(CMS_sign(nullptr, nullptr, certificates.get(), nullptr, kForm));
    auto* const info =
        signature ? CMS_add1_signer(signature.get(), signer.get(), key.get(), EVP_sha256(), kForm)
                  : nullptr;
    if (info == nullptr || !add_names(info, certificates.get(), signer.get())) {
        ERR_clear_error();
        return "the certificate can't sign";
    }
    const Bio chain(CMS_dataInit(signature.get(), nullptr));
    const auto put = [&chain](DerBytes part) {
        return BIO_write(chain.get(), part.data(), static_cast<int>(part.size())) ==
               static_cast<int>(part.size());
    };
    if (!chain || !read_through(file, {0, size}, put)) return "the file can't be read";
    static_cast<void>(BIO_flush(chain.get()));
    unsigned char* bytes = nullptr;
    const bool is_done = CMS_dataFinal(signature.get(), chain.get()) == 1;
    const int length = is_done ? i2d_CMS_ContentInfo(signature.get(), &bytes) : -1;
    ERR_clear_error();
    if (length < 0) return "the certificate can't sign";
    message.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    OPENSSL_free(bytes);
    return {};
}

}  // namespace

extern "C" TVUTIL_API const TrustModule* tvutil2_trust();

const TrustModule* tvutil2_trust() {
    static const int is_started = OPENSSL_init_crypto(tvutil2::kOpensslStart, nullptr);
    static const OpensslTrust trust;
    return is_started == 1 ? &trust : nullptr;
}

}  // namespace tvutil2
