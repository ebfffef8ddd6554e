// Owners of what OpenSSL allocates.
#pragma once

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/ess.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>

namespace tvutil2 {

template <auto release>
struct Releases {
    template <class T>
    void operator()(T* object) const {
        release(object);
    }
};

inline void free_certificates(STACK_OF(X509) * stack) {
    sk_X509_pop_free(stack, X509_free);
}
inline void forget_certificates(STACK_OF(X509) * stack) {
    sk_X509_free(stack);
}

using Certificate = std::unique_ptr<X509, Releases<X509_free>>;
using Certificates = std::unique_ptr<STACK_OF(X509), Releases<free_certificates>>;
/// Of certificates that others own.
using BorrowedCertificates = std::unique_ptr<STACK_OF(X509), Releases<forget_certificates>>;
using Message = std::unique_ptr<CMS_ContentInfo, Releases<CMS_ContentInfo_free>>;
using Bio = std::unique_ptr<BIO, Releases<BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Releases<EVP_PKEY_free>>;
using Store = std::unique_ptr<X509_STORE, Releases<X509_STORE_free>>;
using StoreContext = std::unique_ptr<X509_STORE_CTX, Releases<X509_STORE_CTX_free>>;
using SigningCertificates =
    std::unique_ptr<ESS_SIGNING_CERT_V2, Releases<ESS_SIGNING_CERT_V2_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Releases<EVP_MD_CTX_free>>;

}  // namespace tvutil2
