#include "tvutil2/platform/trust/module/chain.h"

#include "tvutil2/platform/trust/module/certificate.h"

#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <vector>

namespace tvutil2 {
namespace {

bool is_issuer(X509* issuer, X509* certificate) {
    return X509_NAME_cmp(X509_get_subject_name(issuer), X509_get_issuer_name(certificate)) == 0;
}

bool is_for_programs(X509* certificate) {
    const auto usage = X509_get_key_usage(certificate);
    const auto extended = X509_get_extended_key_usage(certificate);
    return (usage & KU_DIGITAL_SIGNATURE) != 0 &&
           (extended == UINT32_MAX || (extended & (XKU_CODE_SIGN | XKU_ANYEKU)) != 0);
}

Store store_of(const TrustSettings& settings) {
    Store store(X509_STORE_new());
    for (const auto& file : settings.trusted) {
        const auto certificates = read_certificates(file);
        for (int i = 0; store && i < sk_X509_num(certificates.get()); ++i) {
            X509_STORE_add_cert(store.get(), sk_X509_value(certificates.get(), i));
        }
    }
    return store;
}

// The verdict on the chain; X509_V_OK for a good one. `chain` becomes what was found of it.
int verify(X509_STORE* store, STACK_OF(X509) * certificates, X509* signer, std::int64_t now,
           Certificates& chain) {
    const StoreContext context(X509_STORE_CTX_new());
    if (!context || X509_STORE_CTX_init(context.get(), store, signer, certificates) != 1) {
        return X509_V_ERR_OUT_OF_MEM;
    }
    auto* const parameters = X509_STORE_CTX_get0_param(context.get());
    X509_VERIFY_PARAM_set_time(parameters, now);
    // Whoever puts a certificate into the folder trusts it, whatever stands above it.
    X509_VERIFY_PARAM_set_flags(parameters,
                                X509_V_FLAG_PARTIAL_CHAIN | X509_V_FLAG_CHECK_SS_SIGNATURE);
    const bool is_good = X509_verify_cert(context.get()) == 1;
    chain.reset(X509_STORE_CTX_get1_chain(context.get()));
    const int error = X509_STORE_CTX_get_error(context.get());
    return is_good ? X509_V_OK : std::max(error, static_cast<int>(X509_V_ERR_UNSPECIFIED));
}

ChainState state_of(int error) {
    switch (error) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return ChainState::expired;
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
            return ChainState::unknown_root;
        default:
            return ChainState::incomplete;
    }
}

}  // namespace

bool holds_together(STACK_OF(X509) * certificates, X509* signer, bool only_chain) {
    const int count = sk_X509_num(certificates);
    std::vector<bool> is_of_chain(static_cast<std::size_t>(count));
    std::vector<X509*> to_do{signer};
    for (int i = 0; i < count; ++i) {
        auto* const certificate = sk_X509_value(certificates, i);
        bool has_issuer = false;
        bool is_signed = false;
        for (int j = 0; j < count; ++j) {
            auto* const issuer = sk_X509_value(certificates, j);
            if (!is_issuer(issuer, certificate)) continue;
            has_issuer = true;
            auto* const key = X509_get0_pubkey(issuer);
            is_signed = is_signed || (key != nullptr && X509_verify(certificate, key) == 1);
        }
        if (has_issuer && !is_signed) return false;
        is_of_chain[static_cast<std::size_t>(i)] = certificate == signer;
    }
    while (!to_do.empty()) {
        auto* const certificate = to_do.back();
        to_do.pop_back();
        for (int i = 0; i < count; ++i) {
            const auto at = static_cast<std::size_t>(i);
            auto* const issuer = sk_X509_value(certificates, i);
            if (is_of_chain[at] || !is_issuer(issuer, certificate)) continue;
            is_of_chain[at] = true;
            to_do.push_back(issuer);
        }
    }
    return !only_chain ||
           std::find(is_of_chain.begin(), is_of_chain.end(), false) == is_of_chain.end();
}

void follow_chain(STACK_OF(X509) * certificates, X509* signer, const TrustSettings& settings,
                  SignatureFacts& facts) {
    const auto store = store_of(settings);
    if (!store) return;
    Certificates chain;
    int error = verify(store.get(), certificates, signer, settings.now, chain);
    facts.chain_state = ChainState::trusted;
    if (error != X509_V_OK) {
        // The host's own, found by name when they are asked for. No environment bends this.
        auto* const lookup = X509_STORE_add_lookup(store.get(), X509_LOOKUP_hash_dir());
        if (lookup != nullptr) {
            X509_LOOKUP_add_dir(lookup, X509_get_default_cert_dir(), X509_FILETYPE_PEM);
        }
        error = verify(store.get(), certificates, signer, settings.now, chain);
        facts.chain_state = error == X509_V_OK ? ChainState::known : state_of(error);
    }
    if (error == X509_V_OK && !is_for_programs(signer)) {
        facts.chain_state = ChainState::wrong_usage;
    }
    for (int i = 0; i < sk_X509_num(chain.get()); ++i) {
        facts.chain.push_back(facts_of(sk_X509_value(chain.get(), i)));
    }
}

}  // namespace tvutil2
