// What stands behind an object of ATK's, and of which type it is. For the desktop's thread.
#pragma once

#include "tvutil2/platform/display/module/accessible_part.h"

#include <memory>
#include <vector>

namespace tvutil2 {

struct AccessibleContent {
    Accessible told;
    std::shared_ptr<const AccessibleWishes> wishes;
    AccessibleParts parts;
    bool is_gone = false;
};

/// Of an object of the types below.
[[nodiscard]] AccessibleContent& accessible_content_of(gpointer object);
/// The object's from now on.
void set_accessible_content(gpointer object, std::unique_ptr<AccessibleContent> content);

/// The type whose interfaces suit what is told.
[[nodiscard]] GType accessible_type_of(const Accessible& told);
/// Which of the items in view are selected.
[[nodiscard]] std::vector<int> selected_parts(gpointer list);

}  // namespace tvutil2
