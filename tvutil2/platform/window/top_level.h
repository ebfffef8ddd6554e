// What a top-level window has while a display shows it.
#pragma once

#include "tvutil2/platform/crash/reported_picture.h"
#include "tvutil2/platform/draw/surface.h"

#include <memory>

namespace tvutil2 {

/// Belongs to the lock of the tree; who keeps the surface beyond it shares it.
struct TopLevel {
    std::shared_ptr<Surface> surface;  ///< of the window's size; null until something is painted
    Region damage;                     ///< painted and not presented yet
    ReportedPicture reported;          ///< of a window without an owner
};

}  // namespace tvutil2
