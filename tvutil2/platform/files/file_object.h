// What a file's handle stands for.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/files/host_files.h"

#include <memory>
#include <mutex>

namespace tvutil2 {

/// What another area keeps with an open file. It goes with the file.
class FileCompanion {
  public:
    FileCompanion() = default;
    virtual ~FileCompanion() = default;
    FileCompanion(const FileCompanion&) = delete;
    FileCompanion& operator=(const FileCompanion&) = delete;
};

/// An open file or folder. The sharing marks hang on the descriptor and go with it.
class FileObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::file;

    FileObject(Descriptor file, DWORD access, std::string path)
        : HandleObject(kHandleKind),
          m_file(std::move(file)),
          m_access(access),
          m_path(std::move(path)) {}

    [[nodiscard]] int descriptor() const { return m_file.get(); }
    /// FILE_ rights, without the generic ones.
    [[nodiscard]] bool may(DWORD rights) const { return (m_access & rights) != 0; }
    /// The host path under which it was opened.
    [[nodiscard]] const std::string& path() const { return m_path; }

    /// The file's companion, made by `make` where there is none; null when that makes none.
    template <class Make>
    FileCompanion* companion(Make make) {
        const std::lock_guard guard(m_lock);
        if (!m_companion) m_companion = make();
        return m_companion.get();
    }

  private:
    Descriptor m_file;
    DWORD m_access;
    std::string m_path;
    std::mutex m_lock;
    std::unique_ptr<FileCompanion> m_companion;  ///< guarded by the lock
};

}  // namespace tvutil2
