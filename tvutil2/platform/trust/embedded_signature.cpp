#include "tvutil2/platform/trust/embedded_signature.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/system/elf_note.h"
#include "tvutil2/platform/system/pe_headers.h"
#include "tvutil2/platform/trust/trust_errors.h"

#include <algorithm>
#include <string_view>

namespace tvutil2 {
namespace {

// Signatures have some kilobytes; those with a digest of each page of a large file have more.
constexpr std::uint64_t kLargestMessage = std::uint64_t{4} << 20U;
constexpr std::uint32_t kLayout = 1;
constexpr std::string_view kMark = "TvSigned";

// An entry of the certificate table.
struct CertificateEntry {
    std::uint32_t length;  // with this head and the padding
    std::uint16_t revision, type;
};
constexpr std::uint32_t kCertificateDirectory = 4;
constexpr std::uint16_t kRevision2 = 0x0200;
constexpr std::uint16_t kPkcsSignedData = 2;
constexpr std::uint64_t kTableAlignment = 8;

bool fail_for(LONG reason) {
    return fail_with(static_cast<DWORD>(reason));
}

bool is_zero(DerBytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

bool read_message(const FileBytes& file, ByteRange range, EmbeddedSignature& found) {
    if (range.size > kLargestMessage) return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    found.bytes.resize(range.size);
    if (!file.read(range.offset, found.bytes)) return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    // What a table is padded with isn't the message's.
    DerReader reader(found.bytes);
    const auto whole = reader.next();
    if (!whole) return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    const auto padding = DerBytes(found.bytes).subspan(whole->whole.size());
    const auto message = read_signed_message(whole->whole, found.kind);
    const std::size_t most = found.kind == SignedKind::pe ? kTableAlignment - 1 : 0;
    if (!message || padding.size() > most || !is_zero(padding)) {
        return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    }
    found.message = *message;
    found.detached = detached_message(*message);
    return true;
}

bool find_in_pe(const FileBytes& file, std::uint64_t size, EmbeddedSignature& found) {
    found.kind = SignedKind::pe;
    const auto headers = read_pe_headers(file);
    if (!headers) return fail_for(TRUST_E_SUBJECT_FORM_UNKNOWN);
    const auto field = headers->directory(kCertificateDirectory);
    if (!field) return fail_for(TRUST_E_NOSIGNATURE);
    struct Directory {
        std::uint32_t offset, size;
    };
    const auto table = file.at<Directory>(*field);
    if (!table || (table->offset == 0 && table->size == 0)) return fail_for(TRUST_E_NOSIGNATURE);
    const auto entry = file.at<CertificateEntry>(table->offset);
    // Words are summed up, and tables aligned: no loader takes a file whose headers aren't.
    const bool is_aligned = headers->start % 4 == 0 && table->offset % kTableAlignment == 0 &&
                            table->size % kTableAlignment == 0;
    if (!entry || !is_aligned || table->offset < headers->end ||
        std::uint64_t{table->offset} + table->size != size || entry->length != table->size ||
        entry->length <= sizeof *entry || entry->revision != kRevision2 ||
        entry->type != kPkcsSignedData) {
        return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    }
    const auto checksum = file.at<std::uint32_t>(headers->checksum_field);
    if (!checksum) return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    found.checksum = *checksum;
    const auto behind_checksum = headers->checksum_field + sizeof *checksum;
    const auto behind_field = *field + sizeof *table;
    found.signed_ranges = {{0, headers->checksum_field},
                           {behind_checksum, *field - behind_checksum},
                           {behind_field, table->offset - behind_field}};
    found.unsigned_ranges = {{*field, sizeof *table}, {table->offset, table->size}};
    return read_message(file, {table->offset + sizeof *entry, entry->length - sizeof *entry},
                        found);
}

std::optional<ElfSignatureEnd> end_of(const FileBytes& file, std::uint64_t size) {
    if (size < sizeof(ElfSignatureEnd)) return std::nullopt;
    const auto end = file.at<ElfSignatureEnd>(size - sizeof(ElfSignatureEnd));
    if (!end || std::string_view(end->mark, sizeof end->mark) != kMark) return std::nullopt;
    return end;
}

bool find_in_elf(const FileBytes& file, std::uint64_t size, EmbeddedSignature& found) {
    found.kind = SignedKind::elf;
    const auto end = end_of(file, size);
    if (!end) return fail_for(TRUST_E_NOSIGNATURE);
    const auto rest = size - sizeof *end;
    if (end->layout != kLayout || end->message_size > rest ||
        end->file_size != rest - end->message_size) {
        return fail_for(TRUST_E_MALFORMED_SIGNATURE);
    }
    found.signed_ranges = {{0, end->file_size}};
    return read_message(file, {end->file_size, end->message_size}, found);
}

}  // namespace

std::optional<EmbeddedSignature> find_signature(const FileBytes& file, std::uint64_t size) {
    EmbeddedSignature found;
    bool is_found = false;
    if (is_elf_file(file)) {
        is_found = find_in_elf(file, size, found);
    } else if (is_pe_file(file)) {
        is_found = find_in_pe(file, size, found);
    } else {
        fail_for(TRUST_E_SUBJECT_FORM_UNKNOWN);
    }
    if (!is_found) return std::nullopt;
    return found;
}

ElfSignatureEnd elf_signature_end(std::uint64_t file_size, std::uint32_t message_size) {
    ElfSignatureEnd end{file_size, message_size, kLayout, {}};
    kMark.copy(end.mark, sizeof end.mark);
    return end;
}

std::uint64_t size_without_signature(const FileBytes& file, std::uint64_t size) {
    const auto end = end_of(file, size);
    return end && end->file_size < size ? end->file_size : size;
}

}  // namespace tvutil2
