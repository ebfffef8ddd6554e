// The three numbers of an account's security identifier that nobody else can work out.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <array>
#include <optional>
#include <span>
#include <string>

namespace tvutil2 {

using MachineNumber = std::array<DWORD, 3>;

/// The numbers of the calling thread's account on this machine: a hash of the machine's id
/// (machine-id(5)) under a secret of the account, so that neither can be told from them, and nobody
/// who hasn't the secret can tell them. The first of `id_files` that holds an id counts.
///
/// The secret is the file "account-secret" in `own_folder`: random, made once, mode 0600. On a
/// machine without an id a random one is kept beside it; from then on that one counts, whatever the
/// machine is given later. Nothing, with the last error set, when one of them can't be read or
/// kept, or when the folder or the file isn't the account's alone: numbers that the next run would
/// not find again, or that others may know, are worth nothing.
[[nodiscard]] TVUTIL_API std::optional<MachineNumber> machine_number(
    std::span<const std::string> id_files, const std::string& own_folder);

/// The same with this machine's id.
[[nodiscard]] std::optional<MachineNumber> machine_number(const std::string& own_folder);

}  // namespace tvutil2
