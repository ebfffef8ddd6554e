// The message of a signature that somebody else made: taken apart, and then by OpenSSL.
#include "tvutil2/platform/trust/signed_message.h"
#include "tvutil2/platform/trust/trust_module.h"

#include <memory>
#include <string>

#include "fuzz/fuzz_input.h"

namespace {

using tvutil2::SignedKind;

void read_as(SignedKind kind, tvutil2::DerBytes bytes) {
    const auto message = tvutil2::read_signed_message(bytes, kind);
    if (!message) return;
    tvutil2::EmbeddedSignature signature;
    signature.kind = kind;
    signature.message = *message;
    signature.detached = tvutil2::detached_message(*message);
    if (kind == SignedKind::elf) {
        fuzz::require(std::equal(bytes.begin(), bytes.end(), signature.detached.begin(),
                                 signature.detached.end()));
    }
    static const auto* const module = tvutil2::trust_module();
    if (module == nullptr) std::abort();
    tvutil2::SignatureFacts facts;
    const std::string nothing;
    const tvutil2::MemoryBytes file(std::as_bytes(std::span(nothing)));
    fuzz::require(module->check(file, signature, {}, facts));
    for (const auto certificate : message->certificates) {
        std::string name;
        static_cast<void>(module->display_name(certificate, name));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto copy = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(copy.get(), data, size);
    read_as(SignedKind::pe, {copy.get(), size});
    read_as(SignedKind::elf, {copy.get(), size});
    return 0;
}
