// Methods as handlers of a widget's events.
#pragma once

#include <gtk/gtk.h>

namespace tvutil2 {

/// Has a method called for an event of a widget, until the handlers of `self` are disconnected.
template <auto Method, class Self>
void listen(Self& self, GtkWidget* widget, const char* signal) {
    const auto call = []<class Event>(gboolean (Self::* /*method*/)(Event*)) {
        return +[](GtkWidget* /*widget*/, Event* event, gpointer listener) -> gboolean {
            return (static_cast<Self*>(listener)->*Method)(event);
        };
    };
    g_signal_connect(widget, signal, G_CALLBACK(call(Method)), &self);
}

}  // namespace tvutil2
