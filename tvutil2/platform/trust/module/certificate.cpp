#include "tvutil2/platform/trust/module/certificate.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <ctime>

namespace tvutil2 {
namespace {

std::string utf8(const ASN1_STRING* text) {
    unsigned char* bytes = nullptr;
    const int size = ASN1_STRING_to_UTF8(&bytes, text);
    if (size < 0) return {};
    std::string result(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    OPENSSL_free(bytes);
    return result;
}

std::string printed(const X509_NAME* name) {
    const Bio bio(BIO_new(BIO_s_mem()));
    if (!bio || X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_RFC2253 & ~ASN1_STRFLGS_ESC_MSB) < 0)
        return {};
    char* text = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

std::string mail_address_of(X509* certificate) {
    std::string address;
    auto* const names = static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; address.empty() && i < sk_GENERAL_NAME_num(names); ++i) {
        const auto* const name = sk_GENERAL_NAME_value(names, i);
        if (name->type == GEN_EMAIL) address = utf8(name->d.rfc822Name);
    }
    GENERAL_NAMES_free(names);
    return address;
}

}  // namespace

Certificate read_certificate(DerBytes bytes) {
    const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = next + bytes.size();
    Certificate certificate(d2i_X509(nullptr, &next, static_cast<long>(bytes.size())));
    if (next != end) certificate.reset();
    return certificate;
}

Certificates read_certificates(const std::string& bytes) {
    Certificates all(sk_X509_new_null());
    const Bio bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    while (bio && all) {
        Certificate one(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
        if (!one || sk_X509_push(all.get(), one.get()) == 0) break;
        static_cast<void>(one.release());
    }
    if (all && sk_X509_num(all.get()) == 0) {
        auto one = read_certificate(std::as_bytes(std::span(bytes)));
        if (one && sk_X509_push(all.get(), one.get()) != 0) static_cast<void>(one.release());
    }
    ERR_clear_error();
    return all;
}

std::string display_name_of(X509* certificate) {
    const auto* const subject = X509_get_subject_name(certificate);
    for (const int kind : {NID_commonName, NID_organizationalUnitName, NID_organizationName,
                           NID_pkcs9_emailAddress}) {
        const int at = X509_NAME_get_index_by_NID(subject, kind, -1);
        if (at < 0) continue;
        auto name = utf8(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at)));
        if (!name.empty()) return name;
    }
    return mail_address_of(certificate);
}

std::string hex(const unsigned char* bytes, std::size_t size) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 15U];
    }
    return text;
}

std::int64_t seconds_of(const ASN1_TIME* time) {
    std::tm parts{};
    return ASN1_TIME_to_tm(time, &parts) == 1 ? timegm(&parts) : 0;
}

CertificateFacts facts_of(X509* certificate) {
    CertificateFacts facts;
    facts.display_name = display_name_of(certificate);
    facts.subject = printed(X509_get_subject_name(certificate));
    facts.issuer = printed(X509_get_issuer_name(certificate));
    const auto* const serial = X509_get0_serialNumber(certificate);
    facts.serial =
        hex(ASN1_STRING_get0_data(serial), static_cast<std::size_t>(ASN1_STRING_length(serial)));
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (X509_digest(certificate, EVP_sha256(), digest, &size) == 1) {
        facts.fingerprint = hex(digest, size);
    }
    facts.valid_from = seconds_of(X509_get0_notBefore(certificate));
    facts.valid_until = seconds_of(X509_get0_notAfter(certificate));
    return facts;
}

}  // namespace tvutil2
