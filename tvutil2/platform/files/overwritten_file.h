// Small text files that are overwritten where they stand: for those that others keep open and watch
// by their name, and where no other file can take the place of the old one.
//
// Those who write a file this way take turns, and readers wait for them, by a lock on a byte far
// behind any content that belongs to the open file (F_OFD_SETLK): it holds between processes and
// threads, on whatever name the file was opened, and is gone with its process. A wait ends after
// five seconds with ERROR_LOCK_VIOLATION. Where a file system has no locks, nobody takes turns.
//
// What can fail is done before the first byte changes: the content is made, and room for it
// reserved. Then it is written by one call, filled up with line ends to the size of the old one,
// and the file is cut last. So a writer that is killed between two calls leaves the old content or
// the new one, perhaps with empty lines behind it; one that is killed within the call leaves the
// old or the new content of each page (4096 bytes, often more). A write that fails all the same is
// taken back.
#pragma once

#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/replaced_file.h"

namespace tvutil2 {

/// read_whole_file between two writers of this kind.
TVUTIL_API bool read_between_writers(const std::string& path, struct stat& info,
                                     std::string& bytes);
TVUTIL_API bool read_between_writers(const std::string& path, std::string& bytes);

/// The turn to write one file, from its making to its end.
class TVUTIL_API OverwrittenFile {
  public:
    /// Opens the file and waits for its turn. With `may_be_new` a missing one is made, and taken
    /// away again at the end if nothing was put in it. `path` is a host path.
    OverwrittenFile(const std::string& path, bool may_be_new);
    ~OverwrittenFile();
    OverwrittenFile(const OverwrittenFile&) = delete;
    OverwrittenFile& operator=(const OverwrittenFile&) = delete;

    /// False, with the last error, when there is no turn: the file can't be read and written, is no
    /// file, is too large, or the wait has come to its end.
    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_file); }

    /// Puts what `edit` makes of the content in its place, and on the disk if `flush` says so.
    /// False with the last error; the file is then what it was, as far as the disk takes that. Only
    /// what couldn't be flushed stays written.
    bool overwrite(const ContentEdit& edit, bool flush);

  private:
    bool open(bool may_be_new);
    [[nodiscard]] bool stands_under_its_name() const;
    [[nodiscard]] bool reserve(std::size_t size) const;
    [[nodiscard]] bool put(std::string_view content, std::string_view old) const;

    std::string m_path;
    Descriptor m_file;
    bool m_is_new = false;
};

}  // namespace tvutil2
