// The headers of the platform's executables (the Portable Executable format).
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/system/file_bytes.h"

#include <vector>

namespace tvutil2 {

struct PeSection {
    char name[8];
    std::uint32_t virtual_size, address, raw_size, raw_offset;
    std::uint32_t relocations, lines;
    std::uint16_t relocation_count, line_count;
    std::uint32_t flags;
};

/// Offsets are in the file.
struct PeHeaders {
    std::uint64_t start = 0;           ///< of the mark "PE"
    std::uint64_t checksum_field = 0;  ///< 32 bits
    std::uint64_t directories = 0;     ///< entries of two numbers: an address and a size
    std::uint32_t directory_count = 0;
    std::vector<PeSection> sections;
    std::uint64_t end = 0;  ///< behind the table of sections

    /// Where the entry of a directory stands; nothing when the table doesn't reach so far.
    [[nodiscard]] std::optional<std::uint64_t> directory(std::uint32_t number) const {
        if (number >= directory_count) return std::nullopt;
        return directories + std::uint64_t{8} * number;
    }
};

/// Begins with the mark of such a file ("MZ").
[[nodiscard]] TVUTIL_API bool is_pe_file(const FileBytes& file);

/// Nothing for what is no such file.
[[nodiscard]] std::optional<PeHeaders> read_pe_headers(const FileBytes& file);

}  // namespace tvutil2
