// The three numbers that stand for an installation in security identifiers.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <array>
#include <optional>
#include <span>
#include <string>

namespace tvutil2 {

using MachineNumber = std::array<DWORD, 3>;

/// The installation's numbers, from its machine id (machine-id(5)): a keyed hash, so that the id
/// itself, which is not for every program's eyes, can't be told from them. The first of `id_files`
/// that holds an id counts. On a machine without one, a random id is made in `own_folder` and kept;
/// from then on that one counts, whatever the machine is given later. Nothing, with the last error
/// set, when that can't be read or kept: a number that the next run would not find again is worth
/// nothing.
[[nodiscard]] TVUTIL_API std::optional<MachineNumber> machine_number(
    std::span<const std::string> id_files, const std::string& own_folder);

/// The same for this machine; kept for the life of the process once it is known.
[[nodiscard]] std::optional<MachineNumber> machine_number();

}  // namespace tvutil2
