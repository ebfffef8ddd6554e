// Roles and states in ATK's words.
#pragma once

#include "tvutil2/platform/display/accessible.h"

#include <atk/atk.h>

#include <array>
#include <utility>

namespace tvutil2 {

[[nodiscard]] AtkRole role_of(const Accessible& told);

/// Whether it is one of several to choose from.
[[nodiscard]] bool is_item(const Accessible& told);

using States = std::array<std::pair<AtkStateType, bool>, 16>;

/// Always in the same order.
[[nodiscard]] States states_of(const Accessible& told);

}  // namespace tvutil2
