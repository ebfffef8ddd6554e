// A file that gets one line after the other, with nothing open in between.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// Appends as a handle of CreateFileW would that is opened for appending, shares reading alone, and
/// is closed again: the file is made if it is missing, and while another handle, of whatever
/// process, writes the file, or forbids that, nothing is written. It sets no marks of its own,
/// which would cost as much as the whole write: an append is one step for the host, so that of two
/// at once each is whole, and it is over within microseconds. Safe from any thread.
class TVUTIL_API AppendedFile {
  public:
    /// The path is turned into the host's once and for all.
    explicit AppendedFile(const char16_t* path);
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;

    enum class Result { not_opened, failed, done };
    /// All of the bytes, or none of them: what a full disk has no room for is taken back. The last
    /// error tells why not.
    Result append(std::string_view bytes) const;

  private:
    std::u16string m_path;
    std::string m_host;  // empty when the path has no place on the host
};

}  // namespace tvutil2
