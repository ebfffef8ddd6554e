#include "tvutil2/platform/picture/image_list.h"

#include "tvutil2/platform/draw/blend.h"
#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/draw/graphics_object.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"

#include <algorithm>
#include <utility>
#include <vector>

using tvutil2::fail_with;
using tvutil2::Surface;

namespace {

using Pixels = std::shared_ptr<const Surface>;

class ImageListObject : public tvutil2::HandleObject {
  public:
    static constexpr auto kHandleKind = tvutil2::HandleKind::image_list;
    explicit ImageListObject(SIZE size) : HandleObject(kHandleKind), m_size(size) {}
    [[nodiscard]] SIZE size() const { return m_size; }

    /// Held by whoever looks at the rest.
    std::mutex lock;
    std::vector<Pixels> images;
    COLORREF background = CLR_NONE;

    [[nodiscard]] bool has(int index) const {
        return index >= 0 && static_cast<std::size_t>(index) < images.size();
    }

  private:
    SIZE m_size;
};

std::shared_ptr<ImageListObject> list_of(HIMAGELIST list) {
    return tvutil2::object_of<ImageListObject>(list);
}

// The picture at an index; null with ERROR_INVALID_PARAMETER.
Pixels image_at(ImageListObject& list, int index) {
    const std::lock_guard guard(list.lock);
    if (!list.has(index)) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    return list.images[static_cast<std::size_t>(index)];
}

// Copies a tile, and takes the pixels away that `is_hole` is true for.
template <class IsHole>
Pixels cut(const Surface& strip, int left, SIZE size, const IsHole& is_hole) {
    auto tile = Surface::create(size.cx, size.cy, strip.dpi(), 0);
    if (!tile) return nullptr;
    for (int y = 0; y < std::min(size.cy, strip.height()); ++y) {
        for (int x = 0; x < size.cx; ++x) {
            const auto pixel = strip.row(y)[left + x];
            tile->row(y)[x] = is_hole(left + x, y, pixel) ? 0 : pixel;
        }
    }
    return tile;
}

template <class IsHole>
int add_tiles(ImageListObject& list, const Surface& strip, const IsHole& is_hole) {
    const auto size = list.size();
    std::vector<Pixels> tiles;
    for (int left = 0; left + size.cx <= strip.width(); left += size.cx) {
        auto tile = cut(strip, left, size, is_hole);
        if (!tile) return -1;
        tiles.push_back(std::move(tile));
    }
    const std::lock_guard guard(list.lock);
    const auto first = list.images.size();
    if (tiles.empty()) return fail_with(ERROR_INVALID_PARAMETER), -1;
    list.images.insert(list.images.end(), tiles.begin(), tiles.end());
    return static_cast<int>(first);
}

// An icon's picture at the list's size.
Pixels fitted(HICON icon, SIZE size) {
    SIZE own{};
    auto pixels = tvutil2::icon_pixels(icon, own);
    if (!pixels) return nullptr;
    if (pixels->width() == size.cx && pixels->height() == size.cy) return pixels;
    auto* const engine = tvutil2::drawing_engine();
    if (engine == nullptr) return nullptr;
    auto scaled = Surface::create(size.cx, size.cy, pixels->dpi(), 0);
    if (!scaled) return nullptr;
    const auto area = scaled->area();
    engine->draw_image({scaled->row(0), scaled->width(), scaled->height(), {&area, 1}}, area,
                       {pixels->row(0), pixels->width(), pixels->height()}, pixels->area(), 1);
    return scaled;
}

}  // namespace

HIMAGELIST ImageList_Create(int width, int height, UINT /*flags*/, int /*initial*/, int /*grow*/) {
    if (width < 1 || height < 1 || width > Surface::kLongest || height > Surface::kLongest) {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    return tvutil2::make_handle<HIMAGELIST>(std::make_shared<ImageListObject>(SIZE{width, height}));
}

BOOL ImageList_Destroy(HIMAGELIST list) {
    return tvutil2::close_handle_of<ImageListObject>(list) ? TRUE : FALSE;
}

int ImageList_GetImageCount(HIMAGELIST list) {
    const auto object = list_of(list);
    if (!object) return 0;
    const std::lock_guard guard(object->lock);
    return static_cast<int>(object->images.size());
}

BOOL ImageList_GetIconSize(HIMAGELIST list, int* width, int* height) {
    const auto object = list_of(list);
    if (!object || width == nullptr || height == nullptr) return FALSE;
    *width = object->size().cx;
    *height = object->size().cy;
    return TRUE;
}

int ImageList_Add(HIMAGELIST list, HBITMAP bitmap, HBITMAP mask) {
    const auto object = list_of(list);
    const auto strip = tvutil2::graphics_object<tvutil2::BitmapObject>(bitmap);
    if (!object || !strip) return -1;
    std::shared_ptr<tvutil2::BitmapObject> holes;
    if (mask != nullptr) {
        holes = tvutil2::graphics_object<tvutil2::BitmapObject>(mask);
        if (!holes) return -1;
    }
    const auto is_hole = [&holes](int x, int y, std::uint32_t) {
        if (!holes) return false;
        const auto& surface = *holes->surface();
        return x < surface.width() && y < surface.height() && (surface.row(y)[x] & 0xFFFFFFU) != 0;
    };
    if (!holes || holes->surface() == strip->surface()) {
        const std::lock_guard guard(strip->surface()->lock());
        return add_tiles(*object, *strip->surface(), is_hole);
    }
    const std::scoped_lock guard(strip->surface()->lock(), holes->surface()->lock());
    return add_tiles(*object, *strip->surface(), is_hole);
}

int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask) {
    const auto object = list_of(list);
    const auto strip = tvutil2::graphics_object<tvutil2::BitmapObject>(bitmap);
    if (!object || !strip) return -1;
    const auto hole = tvutil2::pixel_of(mask);
    const std::lock_guard guard(strip->surface()->lock());
    return add_tiles(*object, *strip->surface(),
                     [hole](int, int, std::uint32_t pixel) { return pixel == hole; });
}

int ImageList_ReplaceIcon(HIMAGELIST list, int index, HICON icon) {
    const auto object = list_of(list);
    if (!object) return -1;
    auto image = fitted(icon, object->size());
    if (!image) return -1;
    const std::lock_guard guard(object->lock);
    if (index == -1) {
        object->images.push_back(std::move(image));
        return static_cast<int>(object->images.size()) - 1;
    }
    if (!object->has(index)) return fail_with(ERROR_INVALID_PARAMETER), -1;
    object->images[static_cast<std::size_t>(index)] = std::move(image);
    return index;
}

HICON ImageList_GetIcon(HIMAGELIST list, int index, UINT /*flags*/) {
    const auto object = list_of(list);
    if (!object) return nullptr;
    auto image = image_at(*object, index);
    return image ? tvutil2::make_icon(std::move(image), object->size()) : nullptr;
}

BOOL ImageList_Remove(HIMAGELIST list, int index) {
    const auto object = list_of(list);
    if (!object) return FALSE;
    const std::lock_guard guard(object->lock);
    if (index == -1) {
        object->images.clear();
        return TRUE;
    }
    if (!object->has(index)) return fail_with(ERROR_INVALID_PARAMETER);
    object->images.erase(object->images.begin() + index);
    return TRUE;
}

COLORREF ImageList_SetBkColor(HIMAGELIST list, COLORREF color) {
    const auto object = list_of(list);
    if (!object) return CLR_NONE;
    const std::lock_guard guard(object->lock);
    return std::exchange(object->background, color);
}

COLORREF ImageList_GetBkColor(HIMAGELIST list) {
    const auto object = list_of(list);
    if (!object) return CLR_NONE;
    const std::lock_guard guard(object->lock);
    return object->background;
}

BOOL ImageList_Draw(HIMAGELIST list, int index, HDC context, int x, int y, UINT style) {
    const auto object = list_of(list);
    if (!object) return FALSE;
    const auto image = image_at(*object, index);
    if (!image) return FALSE;
    const auto size = object->size();
    const RECT to{x, y, tvutil2::plus(x, size.cx), tvutil2::plus(y, size.cy)};
    const auto background = ImageList_GetBkColor(list);
    if (style == ILD_NORMAL && background != CLR_NONE) {
        const auto brush = CreateSolidBrush(background);
        FillRect(context, &to, brush);
        DeleteObject(brush);
    }
    return tvutil2::draw_surface(context, to, *image, image->area()) ? TRUE : FALSE;
}
