// Who holds which named object: small files below the user's run-time folder.
//
// A file holds the names of one hash value. Each record says that a process has an object of that
// name under a descriptor. It is a hint and nothing more: what it says holds if the descriptor can
// be opened and is that object, so a killed process's records are void and are dropped by the next
// one that comes by.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

struct Holder {
    std::u16string name;
    int process;
    int descriptor;
    int file_descriptor;  ///< of a mapped file; -1 without
    std::uint64_t inode;  ///< of the block
};

/// The content of a file and back. What isn't whole is passed over.
[[nodiscard]] TVUTIL_API std::vector<Holder> parse_holders(std::string_view bytes);
[[nodiscard]] TVUTIL_API std::string format_holders(const std::vector<Holder>& holders);

/// The records of one name's file, which nobody else reads or writes while this lives. One at a
/// time in a process.
class HolderFile {
  public:
    explicit HolderFile(const std::u16string& name);
    HolderFile(const HolderFile&) = delete;
    HolderFile& operator=(const HolderFile&) = delete;

    /// False with the last error when the folder isn't to be had, or isn't the user's alone.
    [[nodiscard]] bool is_open() const { return static_cast<bool>(m_lock); }
    [[nodiscard]] std::vector<Holder>& holders() { return m_holders; }
    /// Writes the file, which is whole before and behind that however this process ends, or removes
    /// it when nobody holds any of its names. False with the last error.
    bool save();

  private:
    [[nodiscard]] bool overwrite(const std::string& bytes) const;
    [[nodiscard]] bool replace(const std::string& bytes) const;

    Descriptor m_folder;
    std::string m_name;
    Descriptor m_lock;
    std::size_t m_size = 0;  ///< bytes of the file; 0 without one
    std::vector<Holder> m_holders;
};

}  // namespace tvutil2
