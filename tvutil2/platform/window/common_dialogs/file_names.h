// Names as a person types them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

/// One name, or, where several are taken, those between double quotes.
[[nodiscard]] std::vector<std::u16string> names_in(const std::u16string& typed, bool takes_several);
/// The other way.
[[nodiscard]] std::u16string typed_names(const std::vector<std::u16string>& names);
/// The path of a name, which may be a path itself; nothing for one that can't be.
[[nodiscard]] std::optional<std::u16string> path_in(const std::u16string& folder,
                                                    const std::u16string& name);
/// Of a path: the folder that it lies in; the path itself for a root.
[[nodiscard]] std::u16string folder_above(const std::u16string& path);

}  // namespace tvutil2
