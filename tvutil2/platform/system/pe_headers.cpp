// Offsets and structures: "PE Format", the published description of portable executables.
#include "tvutil2/platform/system/pe_headers.h"

#include <algorithm>
#include <bit>

namespace tvutil2 {
namespace {

static_assert(std::endian::native == std::endian::little, "structures are read as they stand");

constexpr std::uint16_t kDosMark = 0x5A4D;     // "MZ"
constexpr std::uint32_t kPeMark = 0x00004550;  // "PE\0\0"
constexpr std::uint64_t kPeOffsetField = 60;
constexpr std::uint64_t kChecksumInOptional = 64;
constexpr std::uint16_t kMostSections = 96;  // the platform's loader takes no more

struct FileHeader {
    std::uint16_t machine, sections;
    std::uint32_t time, symbols, symbol_count;
    std::uint16_t optional_size, flags;
};

}  // namespace

bool is_pe_file(const FileBytes& file) {
    return file.at<std::uint16_t>(0) == kDosMark;
}

std::optional<PeHeaders> read_pe_headers(const FileBytes& file) {
    const auto pe = file.at<std::uint32_t>(kPeOffsetField);
    if (!is_pe_file(file) || !pe || file.at<std::uint32_t>(*pe) != kPeMark) return std::nullopt;
    const std::uint64_t header_offset = std::uint64_t{*pe} + sizeof kPeMark;
    const auto header = file.at<FileHeader>(header_offset);
    if (!header || header->sections > kMostSections) return std::nullopt;

    const std::uint64_t optional = header_offset + sizeof(FileHeader);
    const auto magic = file.at<std::uint16_t>(optional);
    if (magic != 0x10B && magic != 0x20B) return std::nullopt;
    const std::uint64_t count_field = optional + (magic == 0x10B ? 92 : 108);
    const auto count = file.at<std::uint32_t>(count_field);
    if (!count) return std::nullopt;

    PeHeaders headers;
    headers.start = *pe;
    headers.checksum_field = optional + kChecksumInOptional;
    headers.directories = count_field + sizeof *count;
    const std::uint64_t section_table = optional + header->optional_size;
    const auto room =
        section_table > headers.directories ? (section_table - headers.directories) / 8 : 0;
    headers.directory_count = static_cast<std::uint32_t>(std::min<std::uint64_t>(*count, room));
    headers.sections.resize(header->sections);
    headers.end = section_table + std::uint64_t{sizeof(PeSection)} * header->sections;
    if (!file.read(section_table, std::as_writable_bytes(std::span(headers.sections)))) {
        return std::nullopt;
    }
    return headers;
}

}  // namespace tvutil2
