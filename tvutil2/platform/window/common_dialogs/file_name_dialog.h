// Our own dialog for files, where the desktop has none.
#pragma once

#include "tvutil2/platform/display/driver.h"

namespace tvutil2 {

struct FileNameRules {
    std::u16string extension;  ///< for names without one; without a dot
    bool file_must_exist = false;
    bool path_must_exist = false;
};

/// Asks: platform paths, or none when the person cancels or nobody can be asked. The question's
/// folder is a platform path here.
struct ChosenNames {
    std::vector<std::u16string> paths;
    std::size_t filter = 0;
};
[[nodiscard]] ChosenNames ask_for_files(const FileQuestion& question, const std::u16string& folder,
                                        const FileNameRules& rules);

}  // namespace tvutil2
