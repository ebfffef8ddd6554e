#include "tvutil2/platform/display/module/accessible_area.h"

#include "tvutil2/platform/display/module/accessible_part.h"

#include <gtk/gtk-a11y.h>

#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

struct AreaContent {
    std::shared_ptr<const AccessibleWishes> wishes;
    bool is_wanted = false;
    AccessibleParts parts;
};

constexpr auto kContent = "tvutil2-content";

AreaContent* area_content_of(gpointer area) {
    return static_cast<AreaContent*>(g_object_get_data(G_OBJECT(area), kContent));
}

// Null once the widget has gone.
AreaContent* area_content_of(AtkObject* object) {
    auto* const widget = gtk_accessible_get_widget(GTK_ACCESSIBLE(object));
    return widget != nullptr ? area_content_of(static_cast<gpointer>(widget)) : nullptr;
}

// Somebody looks.
AreaContent* looked_at(AtkObject* object) {
    auto* const content = area_content_of(object);
    if (content != nullptr && !content->is_wanted) {
        content->is_wanted = true;
        content->wishes->describe();
    }
    return content;
}

gint count_area_children(AtkObject* object) {
    const auto* const content = looked_at(object);
    return content != nullptr ? content->parts.count() : 0;
}

AtkObject* area_child_at(AtkObject* object, gint index) {
    const auto* const content = looked_at(object);
    return content != nullptr ? content->parts.at(index) : nullptr;
}

GType object_type() {
    static const auto type = [] {
        GTypeQuery parent;
        g_type_query(GTK_TYPE_WIDGET_ACCESSIBLE, &parent);
        return g_type_register_static_simple(
            GTK_TYPE_WIDGET_ACCESSIBLE, "Tvutil2AreaAccessible", parent.class_size,
            [](gpointer made, gpointer) {
                auto* const object_class = ATK_OBJECT_CLASS(made);
                object_class->get_n_children = count_area_children;
                object_class->ref_child = area_child_at;
            },
            parent.instance_size, nullptr, G_TYPE_FLAG_NONE);
    }();
    return type;
}

GType area_type() {
    static const auto type = [] {
        GTypeQuery parent;
        g_type_query(GTK_TYPE_DRAWING_AREA, &parent);
        return g_type_register_static_simple(
            GTK_TYPE_DRAWING_AREA, "Tvutil2Area", parent.class_size,
            [](gpointer made, gpointer) {
                gtk_widget_class_set_accessible_type(GTK_WIDGET_CLASS(made), object_type());
                gtk_widget_class_set_accessible_role(GTK_WIDGET_CLASS(made), ATK_ROLE_PANEL);
            },
            parent.instance_size, nullptr, G_TYPE_FLAG_NONE);
    }();
    return type;
}

}  // namespace

GtkWidget* new_accessible_area(AccessibleWishes wishes) {
    auto* const area = GTK_WIDGET(g_object_new(area_type(), nullptr));
    auto* const content = new AreaContent;
    content->wishes = std::make_shared<const AccessibleWishes>(std::move(wishes));
    g_object_set_data_full(G_OBJECT(area), kContent, content,
                           [](gpointer data) { delete static_cast<AreaContent*>(data); });
    return area;
}

void describe_area(GtkWidget* area, const Accessible& window) {
    auto* const content = area_content_of(static_cast<gpointer>(area));
    content->parts.follow(gtk_widget_get_accessible(area), window.children, content->wishes);
}

}  // namespace tvutil2
