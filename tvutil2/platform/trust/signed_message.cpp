#include "tvutil2/platform/trust/signed_message.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace tvutil2 {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMostCertificates = 32;

// Object ids, encoded.
constexpr auto kSignedData = "\x2A\x86\x48\x86\xF7\x0D\x01\x07\x02"sv;
constexpr auto kData = "\x2A\x86\x48\x86\xF7\x0D\x01\x07\x01"sv;
constexpr auto kIndirectData = "\x2B\x06\x01\x04\x01\x82\x37\x02\x01\x04"sv;
constexpr auto kPeImageData = "\x2B\x06\x01\x04\x01\x82\x37\x02\x01\x0F"sv;
constexpr auto kRsa = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01"sv;
constexpr struct {
    std::string_view digest;
    std::string_view ecdsa;
    DigestKind kind;
} kAlgorithms[] = {
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x01"sv, "\x2A\x86\x48\xCE\x3D\x04\x03\x02"sv,
     DigestKind::sha256},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x02"sv, "\x2A\x86\x48\xCE\x3D\x04\x03\x03"sv,
     DigestKind::sha384},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x03"sv, "\x2A\x86\x48\xCE\x3D\x04\x03\x04"sv,
     DigestKind::sha512},
};

std::string_view text_of(DerBytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool same(DerBytes a, DerBytes b) {
    return text_of(a) == text_of(b);
}

// An algorithm without parameters, which may be there as a null.
std::optional<std::string_view> algorithm_in(const DerValue& sequence) {
    DerReader reader(sequence.content);
    const auto id = reader.next(kDerObjectId);
    if (!id) return std::nullopt;
    if (!reader.is_at_end()) {
        const auto none = reader.next(kDerNull);
        if (!none || !none->content.empty() || !reader.is_at_end()) return std::nullopt;
    }
    return text_of(id->content);
}

std::optional<DigestKind> digest_in(const DerValue& sequence) {
    const auto id = algorithm_in(sequence);
    for (const auto& algorithm : kAlgorithms) {
        if (id == algorithm.digest) return algorithm.kind;
    }
    return std::nullopt;
}

bool is_signature_algorithm(const DerValue& sequence, DigestKind digest) {
    const auto id = algorithm_in(sequence);
    return id == kRsa ||
           std::any_of(std::begin(kAlgorithms), std::end(kAlgorithms), [&](const auto& algorithm) {
               return algorithm.kind == digest && id == algorithm.ecdsa;
           });
}

bool is_version_1(DerReader& reader) {
    const auto version = reader.next(kDerInteger);
    return version && text_of(version->content) == "\1"sv;
}

// SpcIndirectDataContent: what is signed, and its digest.
bool read_indirect_data(SignedMessage& message) {
    DerReader reader(message.content);
    const auto data = reader.next(kDerSequence);
    const auto digest = data ? reader.next(kDerSequence) : std::nullopt;
    if (!digest || !reader.is_at_end()) return false;
    const auto type = DerReader(data->content).next(kDerObjectId);
    DerReader info(digest->content);
    const auto algorithm = info.next(kDerSequence);
    const auto value = algorithm ? info.next(kDerOctets) : std::nullopt;
    if (!type || text_of(type->content) != kPeImageData || !value || !info.is_at_end()) {
        return false;
    }
    message.file_digest = value->content;
    return digest_in(*algorithm) == message.digest &&
           value->content.size() == static_cast<std::size_t>(message.digest);
}

bool read_content(const DerValue& sequence, SignedKind kind, SignedMessage& message) {
    DerReader reader(sequence.content);
    const auto type = reader.next(kDerObjectId);
    if (!type) return false;
    message.content_type = type->content;
    if (kind == SignedKind::elf) return text_of(type->content) == kData && reader.is_at_end();
    const auto outer = reader.next(kDerContext0);
    if (text_of(type->content) != kIndirectData || !outer || !reader.is_at_end()) return false;
    DerReader inside(outer->content);
    const auto content = inside.next(kDerSequence);
    if (!content || !inside.is_at_end()) return false;
    message.content = content->content;
    return read_indirect_data(message);
}

bool read_certificates(const DerValue& set, SignedMessage& message) {
    DerReader reader(set.content);
    while (!reader.is_at_end()) {
        const auto certificate = reader.next(kDerSequence);
        if (!certificate || message.certificates.size() == kMostCertificates) return false;
        message.certificates.push_back(certificate->whole);
    }
    return true;
}

// The attributes that the signer signed are signed as they are read, so they are read strictly too.
bool are_attributes(const DerValue& set) {
    DerReader reader(set.content);
    while (!reader.is_at_end()) {
        const auto attribute = reader.next(kDerSequence);
        if (!attribute) return false;
        DerReader inside(attribute->content);
        if (!inside.next(kDerObjectId) || !inside.next(kDerSet) || !inside.is_at_end()) {
            return false;
        }
    }
    return true;
}

bool read_signer(const DerValue& sequence, DerBytes digest, SignedMessage& message) {
    DerReader reader(sequence.content);
    const auto id = is_version_1(reader) ? reader.next(kDerSequence) : std::nullopt;
    const auto algorithm = id ? reader.next(kDerSequence) : std::nullopt;
    if (!algorithm || !same(algorithm->whole, digest)) return false;
    DerReader inside(id->content);
    const auto issuer = inside.next(kDerSequence);
    const auto serial = issuer ? inside.next(kDerInteger) : std::nullopt;
    if (!serial || !inside.is_at_end()) return false;
    message.issuer = issuer->whole;
    message.serial = serial->whole;
    const auto attributes = reader.next(kDerContext0);
    const auto how =
        attributes && are_attributes(*attributes) ? reader.next(kDerSequence) : std::nullopt;
    if (!how || !is_signature_algorithm(*how, message.digest) || !reader.next(kDerOctets)) {
        return false;
    }
    message.has_unsigned_attributes = !reader.is_at_end();
    return !message.has_unsigned_attributes ||
           (reader.next(kDerContext1).has_value() && reader.is_at_end());
}

// The only value in a structure.
std::optional<DerValue> only(const DerValue& structure, std::uint8_t tag) {
    DerReader reader(structure.content);
    auto value = reader.next(tag);
    return reader.is_at_end() ? value : std::nullopt;
}

std::optional<DerValue> signed_data(DerBytes bytes) {
    DerReader reader(bytes);
    const auto info = reader.next(kDerSequence);
    if (!info || !reader.is_at_end()) return std::nullopt;
    DerReader inside(info->content);
    const auto type = inside.next(kDerObjectId);
    const auto content = type ? inside.next(kDerContext0) : std::nullopt;
    if (!content || text_of(type->content) != kSignedData || !inside.is_at_end()) {
        return std::nullopt;
    }
    return only(*content, kDerSequence);
}

void put_head(std::vector<std::byte>& out, std::uint8_t tag, std::size_t length) {
    out.push_back(std::byte{tag});
    const auto put = [&out](std::size_t value) {
        out.push_back(static_cast<std::byte>(value & 0xFF));
    };
    if (length < 0x80) return put(length);
    unsigned int count = 1;
    while (length >> (8 * count) != 0) ++count;
    put(0x80 + count);
    while (count-- > 0) put(length >> (8 * count));
}

std::vector<std::byte> wrapped(std::uint8_t tag, std::initializer_list<DerBytes> parts) {
    std::size_t length = 0;
    for (const auto part : parts) length += part.size();
    std::vector<std::byte> out;
    out.reserve(length + 6);
    put_head(out, tag, length);
    for (const auto part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

}  // namespace

std::optional<SignedMessage> read_signed_message(DerBytes bytes, SignedKind kind) {
    const auto data = signed_data(bytes);
    if (!data) return std::nullopt;
    SignedMessage message;
    DerReader reader(data->content);
    const auto digests = is_version_1(reader) ? reader.next(kDerSet) : std::nullopt;
    const auto digest = digests ? only(*digests, kDerSequence) : std::nullopt;
    const auto digest_kind = digest ? digest_in(*digest) : std::nullopt;
    const auto content = digest_kind ? reader.next(kDerSequence) : std::nullopt;
    if (!content) return std::nullopt;
    message.digest = *digest_kind;
    const auto from_here = [&](DerBytes part) { return part.data() - data->content.data(); };
    message.front = data->content.first(static_cast<std::size_t>(from_here(content->whole)));
    message.behind = data->content.subspan(message.front.size() + content->whole.size());
    const auto certificates = reader.next(kDerContext0);
    const auto signers = certificates ? reader.next(kDerSet) : std::nullopt;
    const auto signer = signers ? only(*signers, kDerSequence) : std::nullopt;
    if (!signer || !reader.is_at_end() || !read_content(*content, kind, message) ||
        !read_certificates(*certificates, message) ||
        !read_signer(*signer, digest->whole, message) ||
        (kind == SignedKind::elf && message.has_unsigned_attributes)) {
        return std::nullopt;
    }
    return message;
}

std::vector<std::byte> detached_message(const SignedMessage& message) {
    const auto id = [](DerBytes bytes) { return wrapped(kDerObjectId, {bytes}); };
    const auto content = wrapped(kDerSequence, {id(message.content_type)});
    const auto data = wrapped(kDerSequence, {message.front, content, message.behind});
    const auto outer = wrapped(kDerContext0, {data});
    return wrapped(kDerSequence, {id(std::as_bytes(std::span(kSignedData))), outer});
}

}  // namespace tvutil2
