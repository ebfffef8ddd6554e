// Boxes with round corners on whole pixels, filled or as a frame: what controls mostly consist of.
//
// An outline is turned into pixels once for each kind of corner, by the drawing module. Boxes are
// then put together of four corners and plain rectangles, which takes a twentieth of the time.
#pragma once

#include "tvutil2/platform/draw/context_object.h"

#include <cstdint>
#include <vector>

namespace tvutil2 {

/// The upper left corner of a box: how much of each pixel it covers, of 255, row by row.
struct RoundCorner {
    double radius;
    int line;  ///< width of a frame; 0 is filled
    int size;  ///< pixels in each direction
    std::vector<std::uint8_t> coverage;
};

/// Kept for good, for all threads. Null when too many kinds are kept already, or for one of more
/// than 64 pixels: the box is drawn as an outline then.
[[nodiscard]] const RoundCorner* round_corner(Engine& engine, double radius, int line);

/// `box` is in pixels of the surface, and the colour opaque. False, and nothing drawn, when the box
/// has no room for four corners.
bool draw_round_box(const Drawing& drawing, const RECT& box, const RoundCorner& corner,
                    std::uint32_t pixel);

}  // namespace tvutil2
