#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/picture/decoder.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <new>

namespace tvutil2 {
namespace {

struct ObjectEnd {
    void operator()(void* object) const { g_object_unref(object); }
};
using Loader = std::unique_ptr<GdkPixbufLoader, ObjectEnd>;
using Pixbuf = std::unique_ptr<GdkPixbuf, ObjectEnd>;

// Called when the size is known and nothing is decoded yet.
void refuse_if_too_large(GdkPixbufLoader* loader, int width, int height, void* is_too_large) {
    if (width <= Surface::kLongest && height <= Surface::kLongest &&
        std::int64_t{width} * height <= Surface::kMost) {
        return;
    }
    *static_cast<bool*>(is_too_large) = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

// All of the data, or less when it isn't a picture.
bool feed(GdkPixbufLoader* loader, std::span<const std::byte> bytes, const bool& is_too_large) {
    constexpr std::size_t kPiece = 65536;
    while (!bytes.empty() && !is_too_large) {
        const auto piece = bytes.first(std::min(bytes.size(), kPiece));
        const auto* const data = reinterpret_cast<const guchar*>(piece.data());
        if (gdk_pixbuf_loader_write(loader, data, piece.size(), nullptr) == FALSE) return false;
        bytes = bytes.subspan(piece.size());
    }
    return !is_too_large;
}

std::uint32_t multiplied(std::uint32_t color, std::uint32_t alpha) {
    return (color * alpha + 127) / 255;
}

void copy_pixels(const GdkPixbuf* from, DecodedPicture& to) {
    to.width = gdk_pixbuf_get_width(from);
    to.height = gdk_pixbuf_get_height(from);
    to.pixels.resize(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(to.height));
    const auto channels = gdk_pixbuf_get_n_channels(from);
    const bool has_alpha = gdk_pixbuf_get_has_alpha(from) != FALSE;
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(from));
    const auto* row = gdk_pixbuf_read_pixels(from);
    auto* pixel = to.pixels.data();
    for (int y = 0; y < to.height; ++y, row += stride) {
        const auto* at = row;
        for (int x = 0; x < to.width; ++x, at += channels) {
            const std::uint32_t alpha = has_alpha ? at[3] : 255;
            *pixel++ = alpha << 24U | multiplied(at[0], alpha) << 16U |
                       multiplied(at[1], alpha) << 8U | multiplied(at[2], alpha);
        }
    }
}

DWORD decode(std::span<const std::byte> bytes, DecodedPicture& picture) {
    const Loader loader(gdk_pixbuf_loader_new());
    bool is_too_large = false;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(&refuse_if_too_large),
                     &is_too_large);
    const bool is_whole = feed(loader.get(), bytes, is_too_large);
    const bool is_closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    if (is_too_large) return ERROR_NOT_ENOUGH_MEMORY;
    auto* const found = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!is_whole || !is_closed || found == nullptr) return ERROR_INVALID_DATA;
    // Photographs say which way up they were taken.
    const Pixbuf upright(gdk_pixbuf_apply_embedded_orientation(found));
    copy_pixels(upright ? upright.get() : found, picture);
    return 0;
}

}  // namespace

extern "C" TVUTIL_API DWORD tvutil2_decode_picture(std::span<const std::byte> bytes,
                                                   DecodedPicture& picture);

DWORD tvutil2_decode_picture(std::span<const std::byte> bytes, DecodedPicture& picture) {
    try {
        return decode(bytes, picture);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

}  // namespace tvutil2
