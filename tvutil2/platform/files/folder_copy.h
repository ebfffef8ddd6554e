// Copies of whole folders that go on behind failures.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// Is told what a copy does, on the thread that carries it out. What it throws leaves the copy
/// where it is: what was told as copied is whole.
class CopyObserver {
  public:
    virtual ~CopyObserver() = default;
    /// One more file, or link to a folder, is in its place.
    virtual void copied() = 0;
    /// That file or folder, by its platform path, isn't, for this reason; nor is what lies below
    /// it.
    virtual void failed(const char16_t* from, DWORD error) = 0;
};

/// Copies the files and folders in `from` over those in `to`, which is made with its parents when
/// it is missing. Files are copied as CopyFileW copies them, a link to a folder as the link that it
/// is; what can't be copied is passed over, and so is what is neither file nor folder. A name that
/// is there in another case is the same name, unless `from` has both. A new folder has the mode of
/// the one it is a copy of, less the umask. A folder that was copied into isn't copied itself,
/// whatever name or link leads there, so that a copy into itself has an end.
///
/// False with the last error when `from` is no folder, or `to` can't be one or is the same one; the
/// observer, which may be null, hears of the latter two.
TVUTIL_API bool copy_folder(const char16_t* from, const char16_t* to,
                            CopyObserver* observer = nullptr);

}  // namespace tvutil2
