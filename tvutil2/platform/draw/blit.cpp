#include "tvutil2/platform/draw/blit.h"

#include "tvutil2/platform/draw/context_object.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

using tvutil2::ContextObject;
using tvutil2::Drawing;
using tvutil2::fail_with;
using tvutil2::pixel_of;
using tvutil2::Region;
using tvutil2::Surface;

namespace {

constexpr std::uint32_t kColors = 0x00FFFFFF;

constexpr unsigned code_of(DWORD operation) {
    return (operation >> 16) & 0xFF;
}
constexpr bool needs_source(unsigned code) {
    return ((code >> 2U) & 0x33U) != (code & 0x33U);
}

// Bit n of the code is the result where pattern, source and target make up n.
std::uint32_t combined(unsigned code, std::uint32_t pattern, std::uint32_t source,
                       std::uint32_t target) {
    std::uint32_t result = 0;
    for (unsigned n = 0; n < 8; ++n) {
        if ((code >> n & 1U) == 0) continue;
        result |= ((n & 4U) != 0 ? pattern : ~pattern) & ((n & 2U) != 0 ? source : ~source) &
                  ((n & 1U) != 0 ? target : ~target);
    }
    return (result & kColors) | Surface::kBlack;
}

// The pixels of two contexts, for one copy. Who locks several takes them as std::lock does.
class Copy {
  public:
    Copy(HDC target, HDC source)
        : m_target(tvutil2::object_of<ContextObject>(target)),
          m_source(tvutil2::object_of<ContextObject>(source)) {
        if (!m_target || !m_source) return;
        m_target_lock = std::unique_lock(m_target->lock, std::defer_lock);
        if (m_source == m_target) {
            m_target_lock.lock();
        } else {
            m_source_lock = std::unique_lock(m_source->lock, std::defer_lock);
            std::lock(m_target_lock, m_source_lock);
        }
        m_to = m_target->surface();
        m_from = m_source->surface();
        m_to_lock = std::unique_lock(m_to->lock(), std::defer_lock);
        if (m_to == m_from) {
            m_to_lock.lock();
        } else {
            m_from_lock = std::unique_lock(m_from->lock(), std::defer_lock);
            std::lock(m_to_lock, m_from_lock);
        }
    }
    explicit operator bool() const { return m_to != nullptr; }

    [[nodiscard]] ContextObject& target() const { return *m_target; }
    [[nodiscard]] const ContextObject& source() const { return *m_source; }
    [[nodiscard]] Surface& to() const { return *m_to; }
    [[nodiscard]] const Surface& from() const { return *m_from; }
    [[nodiscard]] bool is_within_one() const { return m_to == m_from; }

  private:
    std::shared_ptr<ContextObject> m_target;
    std::shared_ptr<ContextObject> m_source;
    std::unique_lock<std::mutex> m_target_lock;
    std::unique_lock<std::mutex> m_source_lock;
    std::shared_ptr<Surface> m_to;
    std::shared_ptr<Surface> m_from;
    std::unique_lock<std::mutex> m_to_lock;
    std::unique_lock<std::mutex> m_from_lock;
};

// Of a size that is known when this is compiled, a copy is few instructions. The C library's own
// for long rows takes three times as long where two rows lie alike in their pages.
void copy_row(std::uint32_t* to, const std::uint32_t* from, std::size_t count) {
    constexpr std::size_t kPiece = 32;
    for (; count >= kPiece; count -= kPiece, to += kPiece, from += kPiece) {
        std::memcpy(to, from, kPiece * sizeof *to);
    }
    std::memcpy(to, from, count * sizeof *to);
}

// A rectangle on its way from one surface to another, or within one; `by` leads from a pixel of the
// target to that of the source.
struct RowsToCopy {
    const Copy& copy;
    RECT rect;
    POINT by;

    [[nodiscard]] std::size_t width() const {
        return static_cast<std::size_t>(rect.right - rect.left);
    }
    [[nodiscard]] LONG height() const { return rect.bottom - rect.top; }
    // In the order in which none is overwritten before it is read.
    [[nodiscard]] LONG row(LONG n) const {
        const bool is_downward = copy.is_within_one() && by.y < 0;
        return is_downward ? rect.bottom - 1 - n : rect.top + n;
    }
    [[nodiscard]] std::uint32_t* to(LONG y) const { return copy.to().row(y) + rect.left; }
    [[nodiscard]] const std::uint32_t* from(LONG y) const {
        return copy.from().row(y + by.y) + rect.left + by.x;
    }
    [[nodiscard]] bool are_whole() const {
        const auto size = rect.right - rect.left;
        return copy.to().width() == size && copy.from().width() == size;
    }
};

void copy_plainly(const RowsToCopy& rows) {
    const auto width = rows.width();
    if (rows.are_whole()) {
        const auto count = width * static_cast<std::size_t>(rows.height());
        std::memmove(rows.to(rows.rect.top), rows.from(rows.rect.top),
                     count * sizeof(std::uint32_t));
        return;
    }
    for (LONG n = 0; n < rows.height(); ++n) {
        const auto y = rows.row(n);
        if (rows.copy.is_within_one()) {
            std::memmove(rows.to(y), rows.from(y), width * sizeof(std::uint32_t));
        } else {
            copy_row(rows.to(y), rows.from(y), width);
        }
    }
}

void combine(const RowsToCopy& rows, unsigned code, std::uint32_t pattern) {
    const bool is_rightward = rows.copy.is_within_one() && rows.by.y == 0 && rows.by.x < 0;
    const auto width = rows.width();
    for (LONG n = 0; n < rows.height(); ++n) {
        auto* const to = rows.to(rows.row(n));
        const auto* const from = rows.from(rows.row(n));
        for (std::size_t i = 0; i < width; ++i) {
            const auto k = is_rightward ? width - 1 - i : i;
            to[k] = combined(code, pattern, from[k], to[k]);
        }
    }
}

std::shared_ptr<Surface> snapshot(const Surface& of) {
    auto copy = Surface::create(of.width(), of.height());
    if (!copy) return nullptr;
    std::copy_n(of.row(0),
                static_cast<std::size_t>(of.width()) * static_cast<std::size_t>(of.height()),
                copy->row(0));
    return copy;
}

std::uint32_t pattern_of(const ContextObject& context) {
    const auto& brush = *context.state.brush.object;
    return brush.is_hollow() ? 0 : pixel_of(brush.color());
}

RECT sized(int x, int y, int width, int height) {
    const RECT rect{x, y, tvutil2::plus(x, width), tvutil2::plus(y, height)};
    return {std::min(rect.left, rect.right), std::min(rect.top, rect.bottom),
            std::max(rect.left, rect.right), std::max(rect.top, rect.bottom)};
}

// A span of the target, the span of the source that it shows, and which pixel shows which.
struct Axis {
    LONG to = 0;
    LONG to_size = 0;
    LONG from = 0;
    LONG from_size = 0;
    bool is_mirrored = false;

    Axis(LONG to_start, int to_length, LONG from_start, int from_length)
        : to(to_length < 0 ? tvutil2::plus(to_start, to_length) : to_start),
          to_size(tvutil2::saturated(std::abs(std::int64_t{to_length}))),
          from(from_length < 0 ? tvutil2::plus(from_start, from_length) : from_start),
          from_size(tvutil2::saturated(std::abs(std::int64_t{from_length}))),
          is_mirrored((to_length < 0) != (from_length < 0)) {}

    [[nodiscard]] std::int64_t source_of(LONG at) const {
        auto n = std::int64_t{at} - to;
        if (is_mirrored) n = to_size - 1 - n;
        return from + n * from_size / to_size;
    }
};

void stretch_by_pixels(const Copy& copy, const Region& clip, const Axis& across, const Axis& down,
                       unsigned code, const Surface& from) {
    const auto pattern = pattern_of(copy.target());
    const RECT whole = sized(across.to, down.to, across.to_size, down.to_size);
    for (const auto& part : clip.rects()) {
        const auto cut = tvutil2::common_part(part, whole);
        for (auto y = cut.top; y < cut.bottom; ++y) {
            const auto source_y = down.source_of(y);
            if (source_y < 0 || source_y >= from.height()) continue;
            auto* const to = copy.to().row(y);
            const auto* const row = from.row(static_cast<int>(source_y));
            for (auto x = cut.left; x < cut.right; ++x) {
                const auto source_x = across.source_of(x);
                if (source_x < 0 || source_x >= from.width()) continue;
                to[x] = code == code_of(SRCCOPY) ? row[source_x]
                                                 : combined(code, pattern, row[source_x], to[x]);
            }
        }
    }
}

// The smooth filter's share of a copy: only what lies inside the source.
bool stretch_smoothly(const Copy& copy, const Region& clip, const Axis& across, const Axis& down,
                      const Surface& from) {
    const auto source = sized(across.from, down.from, across.from_size, down.from_size);
    const auto inside = tvutil2::common_part(source, from.area());
    constexpr LONG kFar = 1 << 24;
    const bool is_near =
        std::max({std::abs(std::int64_t{across.to}), std::abs(std::int64_t{down.to}),
                  std::int64_t{across.to_size}, std::int64_t{down.to_size}}) < kFar;
    auto* const engine = tvutil2::drawing_engine();
    if (!tvutil2::same_rect(source, inside) || !is_near || engine == nullptr) return false;
    RECT to = sized(across.to, down.to, across.to_size, down.to_size);
    if (across.is_mirrored) std::swap(to.left, to.right);
    if (down.is_mirrored) std::swap(to.top, to.bottom);
    const tvutil2::Canvas canvas{copy.to().row(0), copy.to().width(), copy.to().height(),
                                 clip.rects()};
    engine->draw_image(canvas, to, {from.row(0), from.width(), from.height()}, inside, 1);
    return true;
}

}  // namespace

BOOL PatBlt(HDC target, int x, int y, int width, int height, DWORD operation) {
    const auto code = code_of(operation);
    if (needs_source(code)) return fail_with(ERROR_INVALID_PARAMETER);
    const Drawing drawing(target);
    if (!drawing) return FALSE;
    const auto rect = drawing.to_device(sized(x, y, width, height));
    const auto pattern = pattern_of(drawing.context());
    const bool needs_target = ((code >> 1U) & 0x55U) != (code & 0x55U);
    if (!needs_target) {
        if (code == code_of(PATCOPY) && drawing.state().brush.object->is_hollow()) return TRUE;
        drawing.fill(rect, combined(code, pattern, 0, 0));
        return TRUE;
    }
    for (const auto& part : drawing.clip().rects()) {
        const auto cut = tvutil2::common_part(part, rect);
        for (auto row = cut.top; row < cut.bottom; ++row) {
            auto* const pixels = drawing.surface().row(row);
            for (auto at = cut.left; at < cut.right; ++at) {
                pixels[at] = combined(code, pattern, 0, pixels[at]);
            }
        }
    }
    return TRUE;
}

BOOL BitBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x, int source_y,
            DWORD operation) {
    const auto code = code_of(operation);
    if (!needs_source(code)) return PatBlt(target, x, y, width, height, operation);
    const Copy copy(target, source);
    if (!copy) return FALSE;
    const auto to = copy.target().to_device(sized(x, y, width, height));
    const auto shift = copy.source().shift();
    const auto from =
        sized(tvutil2::plus(source_x, shift.x), tvutil2::plus(source_y, shift.y), width, height);
    const auto by_x = std::int64_t{from.left} - to.left;
    const auto by_y = std::int64_t{from.top} - to.top;
    const POINT by{tvutil2::saturated(by_x), tvutil2::saturated(by_y)};
    // What of the target has a source.
    const auto area = copy.from().area();
    const RECT there{tvutil2::saturated(area.left - by_x), tvutil2::saturated(area.top - by_y),
                     tvutil2::saturated(area.right - by_x), tvutil2::saturated(area.bottom - by_y)};
    Region parts = copy.target().clip();
    parts.intersect(Region(tvutil2::common_part(to, there)));
    const auto pattern = pattern_of(copy.target());
    // Of several parts on the same pixels, one might overwrite what another is yet to read.
    if (copy.is_within_one() && !parts.is_rectangle() && !parts.is_empty()) {
        const auto kept = snapshot(copy.from());
        if (!kept) return FALSE;
        const Axis across(to.left, to.right - to.left, from.left, to.right - to.left);
        const Axis down(to.top, to.bottom - to.top, from.top, to.bottom - to.top);
        stretch_by_pixels(copy, parts, across, down, code, *kept);
        return TRUE;
    }
    for (const auto& part : parts.rects()) {
        const RowsToCopy rows{copy, part, by};
        if (code == code_of(SRCCOPY)) {
            copy_plainly(rows);
        } else {
            combine(rows, code, pattern);
        }
    }
    return TRUE;
}

BOOL StretchBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x,
                int source_y, int source_width, int source_height, DWORD operation) {
    const auto code = code_of(operation);
    if (!needs_source(code)) return PatBlt(target, x, y, width, height, operation);
    if (width == source_width && height == source_height && width >= 0 && height >= 0) {
        return BitBlt(target, x, y, width, height, source, source_x, source_y, operation);
    }
    const Copy copy(target, source);
    if (!copy) return FALSE;
    if (width == 0 || height == 0 || source_width == 0 || source_height == 0) return TRUE;
    const auto to = copy.target().shift();
    const auto from = copy.source().shift();
    const Axis across(tvutil2::plus(x, to.x), width, tvutil2::plus(source_x, from.x), source_width);
    const Axis down(tvutil2::plus(y, to.y), height, tvutil2::plus(source_y, from.y), source_height);
    std::shared_ptr<Surface> kept;
    if (copy.is_within_one()) {
        kept = snapshot(copy.from());
        if (!kept) return FALSE;
    }
    const auto& pixels = kept ? *kept : copy.from();
    const auto& clip = copy.target().clip();
    const bool is_smooth = copy.target().state.stretch_mode == HALFTONE && code == code_of(SRCCOPY);
    if (is_smooth && stretch_smoothly(copy, clip, across, down, pixels)) return TRUE;
    stretch_by_pixels(copy, clip, across, down, code, pixels);
    return TRUE;
}
