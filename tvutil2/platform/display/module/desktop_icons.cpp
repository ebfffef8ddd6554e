#include "tvutil2/platform/display/module/desktop_icons.h"

namespace tvutil2 {
namespace {

GdkPixbuf* pixbuf_of(const Surface& pixels) {
    // Cairo reads them alone.
    auto* const bytes = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(pixels.row(0)));
    auto* const image = cairo_image_surface_create_for_data(
        bytes, CAIRO_FORMAT_ARGB32, pixels.width(), pixels.height(), pixels.width() * 4);
    auto* const made = gdk_pixbuf_get_from_surface(image, 0, 0, pixels.width(), pixels.height());
    cairo_surface_destroy(image);
    return made;
}

}  // namespace

void set_window_icons(GtkWindow* window, std::span<const std::shared_ptr<const Surface>> icons) {
    GList* list = nullptr;
    for (const auto& each : icons) {
        if (auto* const made = pixbuf_of(*each)) list = g_list_append(list, made);
    }
    gtk_window_set_icon_list(window, list);
    g_list_free_full(list, g_object_unref);
}

}  // namespace tvutil2
