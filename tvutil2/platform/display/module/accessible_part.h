// A control, or an item of one, as the desktop's accessibility has it. For the desktop's thread.
#pragma once

#include "tvutil2/platform/display/module/accessible_area.h"

#include <atk/atk.h>

#include <memory>
#include <vector>

namespace tvutil2 {

/// The parts below one object, which they belong to.
class AccessibleParts {
  public:
    AccessibleParts() = default;
    ~AccessibleParts();
    AccessibleParts(const AccessibleParts&) = delete;
    AccessibleParts& operator=(const AccessibleParts&) = delete;

    /// Keeps the objects of what was there before.
    void follow(AtkObject* parent, std::vector<Accessible> now,
                const std::shared_ptr<const AccessibleWishes>& wishes);
    [[nodiscard]] int count() const { return static_cast<int>(m_parts.size()); }
    /// A reference for the caller, or null.
    [[nodiscard]] AtkObject* at(int index) const;

  private:
    std::vector<AtkObject*> m_parts;
};

}  // namespace tvutil2
