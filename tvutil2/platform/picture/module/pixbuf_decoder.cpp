#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/picture/decoder.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace tvutil2 {
namespace {

struct ObjectEnd {
    void operator()(void* object) const { g_object_unref(object); }
};
using Loader = std::unique_ptr<GdkPixbufLoader, ObjectEnd>;
using Pixbuf = std::unique_ptr<GdkPixbuf, ObjectEnd>;

struct Limit {
    std::int64_t most;
    bool is_passed = false;
};

// Called when the size is known and nothing is decoded yet.
void refuse_if_too_large(GdkPixbufLoader* loader, int width, int height, void* data) {
    auto& limit = *static_cast<Limit*>(data);
    if (width <= Surface::kLongest && height <= Surface::kLongest &&
        std::int64_t{width} * height <= limit.most) {
        return;
    }
    limit.is_passed = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

// All of the data, or less when it isn't a picture.
bool feed(GdkPixbufLoader* loader, std::span<const std::byte> bytes, const Limit& limit) {
    constexpr std::size_t kPiece = 65536;
    while (!bytes.empty() && !limit.is_passed) {
        const auto piece = bytes.first(std::min(bytes.size(), kPiece));
        const auto* const data = reinterpret_cast<const guchar*>(piece.data());
        if (gdk_pixbuf_loader_write(loader, data, piece.size(), nullptr) == FALSE) return false;
        bytes = bytes.subspan(piece.size());
    }
    return !limit.is_passed;
}

// As a Surface has it.
std::uint32_t pixel_of(const guchar* channels, std::uint32_t alpha) {
    if (alpha == 0) return 0;
    const auto part = [alpha](std::uint32_t value) {
        return alpha == 255 ? value : (value * alpha + 127) / 255;
    };
    return alpha << 24U | part(channels[0]) << 16U | part(channels[1]) << 8U | part(channels[2]);
}

DWORD copy_pixels(const GdkPixbuf* from, PictureRoom& room) {
    const auto width = gdk_pixbuf_get_width(from);
    const auto height = gdk_pixbuf_get_height(from);
    auto* pixel = room.make(width, height);
    if (pixel == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    const auto channels = gdk_pixbuf_get_n_channels(from);
    const bool has_alpha = gdk_pixbuf_get_has_alpha(from) != FALSE;
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(from));
    const auto* row = gdk_pixbuf_read_pixels(from);
    for (int y = 0; y < height; ++y, row += stride) {
        const auto* at = row;
        for (int x = 0; x < width; ++x, at += channels) {
            *pixel++ = pixel_of(at, has_alpha ? at[3] : 255);
        }
    }
    return 0;
}

// A bitmap file whose header is longer than the file, or whose pixels begin behind its end. The
// library would make room for the header first, up to 4 GB of it.
bool is_bitmap_beyond_its_file(std::span<const std::byte> bytes) {
    constexpr std::size_t kPixelsAt = 10, kHeaderSizeAt = 14, kSizes = 18;
    if (bytes.size() < kSizes || bytes[0] != std::byte{'B'} || bytes[1] != std::byte{'M'}) {
        return false;
    }
    const auto number_at = [&](std::size_t at) {
        std::uint32_t number = 0;
        std::memcpy(&number, &bytes[at], sizeof number);
        return number;
    };
    return number_at(kPixelsAt) > bytes.size() || number_at(kHeaderSizeAt) > bytes.size();
}

DWORD decode(std::span<const std::byte> bytes, std::int64_t most, PictureRoom& room) {
    if (is_bitmap_beyond_its_file(bytes)) return ERROR_INVALID_DATA;
    const Loader loader(gdk_pixbuf_loader_new());
    Limit limit{most};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(&refuse_if_too_large), &limit);
    const bool is_whole = feed(loader.get(), bytes, limit);
    const bool is_closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    if (limit.is_passed) return ERROR_NOT_ENOUGH_MEMORY;
    auto* const found = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!is_whole || !is_closed || found == nullptr) return ERROR_INVALID_DATA;
    // Photographs say which way up they were taken.
    const Pixbuf upright(gdk_pixbuf_apply_embedded_orientation(found));
    return copy_pixels(upright ? upright.get() : found, room);
}

}  // namespace

extern "C" TVUTIL_API DWORD tvutil2_decode_picture(std::span<const std::byte> bytes,
                                                   std::int64_t most, PictureRoom& room);

DWORD tvutil2_decode_picture(std::span<const std::byte> bytes, std::int64_t most,
                             PictureRoom& room) {
    try {
        return decode(bytes, most, room);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

}  // namespace tvutil2
