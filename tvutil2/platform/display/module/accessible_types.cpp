// The types of objects that ATK asks, and their answers.
#include "tvutil2/platform/display/module/accessible_content.h"
#include "tvutil2/platform/display/module/accessible_roles.h"
#include "tvutil2/platform/display/module/accessible_text.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

const GQuark g_content = g_quark_from_static_string("tvutil2-part");

AtkStateSet* ref_states(AtkObject* object) {
    auto* const set = atk_state_set_new();
    const auto& content = accessible_content_of(object);
    if (content.is_gone) {
        atk_state_set_add_state(set, ATK_STATE_DEFUNCT);
        return set;
    }
    for (const auto& [state, is_so] : states_of(content.told)) {
        if (is_so) atk_state_set_add_state(set, state);
    }
    return set;
}

gint count_children(AtkObject* object) {
    return accessible_content_of(object).parts.count();
}

AtkObject* child_at(AtkObject* object, gint index) {
    return accessible_content_of(object).parts.at(index);
}

gint index_in_parent(AtkObject* object) {
    auto* const parent = atk_object_get_parent(object);
    if (parent == nullptr) return -1;
    for (int i = 0, count = atk_object_get_n_accessible_children(parent); i < count; ++i) {
        const std::unique_ptr<AtkObject, decltype(&g_object_unref)> each(
            atk_object_ref_accessible_child(parent, i), &g_object_unref);
        if (each.get() == object) return i;
    }
    return -1;
}

// Its place on the screen; in the window, as far as ATK can tell where that is.
void get_extents(AtkComponent* component, gint* x, gint* y, gint* width, gint* height,
                 AtkCoordType type) {
    const auto& place = accessible_content_of(component).told.place;
    *x = static_cast<int>(place.left);
    *y = static_cast<int>(place.top);
    *width = static_cast<int>(place.right - place.left);
    *height = static_cast<int>(place.bottom - place.top);
    if (type == ATK_XY_SCREEN) return;
    auto* root = ATK_OBJECT(component);
    while (root != nullptr && !ATK_IS_WINDOW(root)) root = atk_object_get_parent(root);
    if (root == nullptr) return;
    gint left = 0;
    gint top = 0;
    atk_component_get_extents(ATK_COMPONENT(root), &left, &top, nullptr, nullptr, ATK_XY_SCREEN);
    *x -= left;
    *y -= top;
}

gboolean grab_focus(AtkComponent* component) {
    const auto& content = accessible_content_of(component);
    const auto& state = content.told.state;
    const bool is_in_list = is_item(content.told) && content.told.role != AccessibleRole::menu_item;
    if (content.is_gone || !state.is_enabled || (!state.is_focusable && !is_in_list)) return FALSE;
    content.wishes->focus(content.told.window);
    return TRUE;
}

const char* action_name(AtkAction* action, gint index) {
    if (index != 0) return nullptr;
    return accessible_content_of(action).told.role == AccessibleRole::check_box ? "toggle"
                                                                                : "click";
}

bool is_in_combo(gpointer item) {
    auto* const parent = atk_object_get_parent(ATK_OBJECT(item));
    return parent != nullptr && atk_object_get_role(parent) == ATK_ROLE_COMBO_BOX;
}

gboolean do_action(AtkAction* action, gint index) {
    const auto& content = accessible_content_of(action);
    if (index != 0 || content.is_gone || !content.told.state.is_enabled) return FALSE;
    // Its list may be closed.
    if (is_item(content.told) && is_in_combo(action)) {
        content.wishes->fill(content.told.window, {}, static_cast<int>(content.told.item));
        return TRUE;
    }
    content.wishes->press(content.told.place);
    return TRUE;
}

gint count_actions(AtkAction* action) {
    switch (accessible_content_of(action).told.role) {
        case AccessibleRole::push_button:
        case AccessibleRole::check_box:
        case AccessibleRole::radio_button:
        case AccessibleRole::combo_box:
        case AccessibleRole::list_item:
        case AccessibleRole::tree_item:
        case AccessibleRole::menu_item:
            return 1;
        default:
            return 0;
    }
}

AccessibleText text_of(gpointer object) {
    const auto& told = accessible_content_of(object).told;
    return {told.value, told.caret};
}

// Nothing for a field that can't be typed in.
void put_text(gpointer object, std::u16string text) {
    const auto& [told, wishes, parts, is_gone] = accessible_content_of(object);
    const auto& state = told.state;
    if (is_gone || !state.is_enabled || state.is_read_only) return;
    wishes->fill(told.window, std::move(text), 0);
}

GType register_type(const char* name, GType parent, GClassInitFunc init) {
    GTypeQuery size;
    g_type_query(parent, &size);
    return g_type_register_static_simple(parent, name, size.class_size, init, size.instance_size,
                                         nullptr, G_TYPE_FLAG_NONE);
}

template <class Interface>
void add_interface(GType type, GType interface, void (*fill)(Interface&)) {
    const GInterfaceInfo info{
        [](gpointer table, gpointer fill_it) {
            reinterpret_cast<void (*)(Interface&)>(fill_it)(*static_cast<Interface*>(table));
        },
        nullptr, reinterpret_cast<gpointer>(fill)};
    g_type_add_interface_static(type, interface, &info);
}

GType part_type() {
    static const auto type = [] {
        const auto made =
            register_type("Tvutil2Part", ATK_TYPE_OBJECT, [](gpointer object, gpointer) {
                auto* const object_class = ATK_OBJECT_CLASS(object);
                object_class->ref_state_set = ref_states;
                object_class->get_n_children = count_children;
                object_class->ref_child = child_at;
                object_class->get_index_in_parent = index_in_parent;
            });
        add_interface<AtkComponentIface>(made, ATK_TYPE_COMPONENT, [](AtkComponentIface& table) {
            table.get_extents = get_extents;
            table.grab_focus = grab_focus;
        });
        add_interface<AtkActionIface>(made, ATK_TYPE_ACTION, [](AtkActionIface& table) {
            table.get_n_actions = count_actions;
            table.get_name = action_name;
            table.do_action = do_action;
        });
        return made;
    }();
    return type;
}

GType text_type() {
    static const auto type = [] {
        const auto made = register_type("Tvutil2TextPart", part_type(), nullptr);
        add_interface<AtkTextIface>(made, ATK_TYPE_TEXT,
                                    [](AtkTextIface& table) { fill_text(table, text_of); });
        add_interface<AtkEditableTextIface>(
            made, ATK_TYPE_EDITABLE_TEXT,
            [](AtkEditableTextIface& table) { fill_editable_text(table, text_of, put_text); });
        return made;
    }();
    return type;
}

GType value_type() {
    static const auto type = [] {
        const auto made = register_type("Tvutil2ValuePart", part_type(), nullptr);
        add_interface<AtkValueIface>(made, ATK_TYPE_VALUE, [](AtkValueIface& table) {
            table.get_value_and_text = [](AtkValue* value, gdouble* now, gchar** text) {
                *now = accessible_content_of(value).told.range.now;
                *text = nullptr;
            };
            table.get_range = [](AtkValue* value) {
                const auto& range = accessible_content_of(value).told.range;
                return atk_range_new(range.least, range.most, nullptr);
            };
            table.set_value = [](AtkValue* value, gdouble now) {
                const auto& content = accessible_content_of(value);
                const auto& [least, most, before] = content.told.range;
                const bool can_be_set = content.told.role == AccessibleRole::scroll_bar;
                if (content.is_gone || !content.told.state.is_enabled || !can_be_set) return;
                content.wishes->fill(content.told.window, {},
                                     static_cast<int>(std::clamp<double>(now, least, most)));
            };
        });
        return made;
    }();
    return type;
}

GType list_type() {
    static const auto type = [] {
        const auto made = register_type("Tvutil2ListPart", part_type(), nullptr);
        add_interface<AtkSelectionIface>(made, ATK_TYPE_SELECTION, [](AtkSelectionIface& table) {
            table.get_selection_count = [](AtkSelection* list) {
                return static_cast<gint>(selected_parts(list).size());
            };
            table.is_child_selected = [](AtkSelection* list, gint index) -> gboolean {
                const auto selected = selected_parts(list);
                return std::find(selected.begin(), selected.end(), index) != selected.end();
            };
            table.ref_selection = [](AtkSelection* list, gint index) -> AtkObject* {
                const auto selected = selected_parts(list);
                const auto at = static_cast<std::size_t>(index);
                return at < selected.size() ? accessible_content_of(list).parts.at(selected[at])
                                            : nullptr;
            };
            table.add_selection = [](AtkSelection* list, gint index) -> gboolean {
                const std::unique_ptr<AtkObject, decltype(&g_object_unref)> item(
                    accessible_content_of(list).parts.at(index), &g_object_unref);
                return item ? do_action(ATK_ACTION(item.get()), 0) : FALSE;
            };
        });
        return made;
    }();
    return type;
}

}  // namespace

AccessibleContent& accessible_content_of(gpointer object) {
    return *static_cast<AccessibleContent*>(g_object_get_qdata(G_OBJECT(object), g_content));
}

void set_accessible_content(gpointer object, std::unique_ptr<AccessibleContent> content) {
    g_object_set_qdata_full(G_OBJECT(object), g_content, content.release(),
                            [](gpointer data) { delete static_cast<AccessibleContent*>(data); });
}

std::vector<int> selected_parts(gpointer list) {
    const auto& parts = accessible_content_of(list).parts;
    std::vector<int> selected;
    for (int i = 0; i < parts.count(); ++i) {
        const std::unique_ptr<AtkObject, decltype(&g_object_unref)> item(parts.at(i),
                                                                         &g_object_unref);
        if (accessible_content_of(item.get()).told.state.is_selected) selected.push_back(i);
    }
    return selected;
}

GType accessible_type_of(const Accessible& told) {
    switch (told.role) {
        case AccessibleRole::edit:
            return text_type();
        case AccessibleRole::progress:
        case AccessibleRole::scroll_bar:
            return value_type();
        case AccessibleRole::list:
        case AccessibleRole::combo_box:
        case AccessibleRole::tree:
            return list_type();
        default:
            return part_type();
    }
}

}  // namespace tvutil2
