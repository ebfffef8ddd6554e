// Owners of pango's objects.
#pragma once

#include <pango/pangocairo.h>

#include <memory>

namespace tvutil2 {

template <auto kEnd>
struct EndWith {
    template <class T>
    void operator()(T* object) const {
        kEnd(object);
    }
};
using FontMap = std::unique_ptr<PangoFontMap, EndWith<g_object_unref>>;
using FontContext = std::unique_ptr<PangoContext, EndWith<g_object_unref>>;
using Layout = std::unique_ptr<PangoLayout, EndWith<g_object_unref>>;
using Description = std::unique_ptr<PangoFontDescription, EndWith<pango_font_description_free>>;
using Attributes = std::unique_ptr<PangoAttrList, EndWith<pango_attr_list_unref>>;
using Tabs = std::unique_ptr<PangoTabArray, EndWith<pango_tab_array_free>>;
using FontOptions = std::unique_ptr<cairo_font_options_t, EndWith<cairo_font_options_destroy>>;

}  // namespace tvutil2
