// Archives of report folders.
#pragma once

#include <filesystem>
#include <string>

namespace crash {

/// Packs the files of `folder` into a ZIP archive, below the folder `name` there. The archive has
/// its own name when it is whole; false, and nothing is left, when it can't be made.
[[nodiscard]] bool pack(const std::filesystem::path& folder, const std::string& name,
                        const std::filesystem::path& archive);

}  // namespace crash
