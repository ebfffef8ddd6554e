// The file that holds a process's listing: written in place, by one process, while others read it.
//
// All numbers are little-endian: the listing's bytes (8) and their checksum (8), then the listing,
// then anything. A reader that comes in the midst of a change sees a checksum that doesn't fit, and
// looks again. Replacing the file by another one would cost a place on the disk each time.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/files/host_files.h"

#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

/// The writer's. For one thread at a time.
class TVUTIL_API ListingFile {
  public:
    ListingFile() = default;
    /// Empties the file, or makes it. False with errno.
    bool open(int folder, const std::string& name);
    /// False with errno. Without room for more bytes than there were, the old ones stay.
    bool write(std::string_view bytes);

  private:
    bool make_room(std::size_t size);

    Descriptor m_file;
    std::size_t m_room = 0;
};

/// What the file holds now; nothing when it holds nothing whole, even after 20 ms.
[[nodiscard]] TVUTIL_API std::optional<std::string> read_listing_file(int file);

}  // namespace tvutil2
