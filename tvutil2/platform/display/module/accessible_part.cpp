#include "tvutil2/platform/display/module/accessible_part.h"

#include "tvutil2/platform/display/module/accessible_roles.h"
#include "tvutil2/platform/display/module/accessible_text.h"
#include "tvutil2/platform/display/module/desktop_look.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

// What an object holds beside what ATK keeps of it.
struct Content {
    Accessible told;
    std::shared_ptr<const AccessibleWishes> wishes;
    AccessibleParts parts;
    bool is_gone = false;
};

const GQuark g_content = g_quark_from_static_string("tvutil2-part");

Content& content_of(gpointer object) {
    return *static_cast<Content*>(g_object_get_qdata(G_OBJECT(object), g_content));
}

// ---- what ATK asks of an object

AtkStateSet* ref_states(AtkObject* object) {
    auto* const set = atk_state_set_new();
    const auto& content = content_of(object);
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
    return content_of(object).parts.count();
}

AtkObject* child_at(AtkObject* object, gint index) {
    return content_of(object).parts.at(index);
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
    const auto& place = content_of(component).told.place;
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
    const auto& content = content_of(component);
    const auto& state = content.told.state;
    const bool is_in_list = is_item(content.told) && content.told.role != AccessibleRole::menu_item;
    if (content.is_gone || !state.is_enabled || (!state.is_focusable && !is_in_list)) return FALSE;
    content.wishes->focus(content.told.window);
    return TRUE;
}

const char* action_name(AtkAction* action, gint index) {
    if (index != 0) return nullptr;
    return content_of(action).told.role == AccessibleRole::check_box ? "toggle" : "click";
}

gboolean do_action(AtkAction* action, gint index) {
    const auto& content = content_of(action);
    if (index != 0 || content.is_gone || !content.told.state.is_enabled) return FALSE;
    content.wishes->press(content.told.place);
    return TRUE;
}

gint count_actions(AtkAction* action) {
    switch (content_of(action).told.role) {
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
    const auto& told = content_of(object).told;
    return {told.value, told.caret};
}

// Which of the items in view are selected.
std::vector<int> selected_of(gpointer list) {
    const auto& parts = content_of(list).parts;
    std::vector<int> selected;
    for (int i = 0; i < parts.count(); ++i) {
        const std::unique_ptr<AtkObject, decltype(&g_object_unref)> item(parts.at(i),
                                                                         &g_object_unref);
        if (content_of(item.get()).told.state.is_selected) selected.push_back(i);
    }
    return selected;
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
        return made;
    }();
    return type;
}

GType value_type() {
    static const auto type = [] {
        const auto made = register_type("Tvutil2ValuePart", part_type(), nullptr);
        add_interface<AtkValueIface>(made, ATK_TYPE_VALUE, [](AtkValueIface& table) {
            table.get_value_and_text = [](AtkValue* value, gdouble* now, gchar** text) {
                *now = content_of(value).told.range.now;
                *text = nullptr;
            };
            table.get_range = [](AtkValue* value) {
                const auto& range = content_of(value).told.range;
                return atk_range_new(range.least, range.most, nullptr);
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
                return static_cast<gint>(selected_of(list).size());
            };
            table.is_child_selected = [](AtkSelection* list, gint index) -> gboolean {
                const auto selected = selected_of(list);
                return std::find(selected.begin(), selected.end(), index) != selected.end();
            };
            table.ref_selection = [](AtkSelection* list, gint index) -> AtkObject* {
                const auto selected = selected_of(list);
                const auto at = static_cast<std::size_t>(index);
                return at < selected.size() ? content_of(list).parts.at(selected[at]) : nullptr;
            };
            table.add_selection = [](AtkSelection* list, gint index) -> gboolean {
                const std::unique_ptr<AtkObject, decltype(&g_object_unref)> item(
                    content_of(list).parts.at(index), &g_object_unref);
                return item ? do_action(ATK_ACTION(item.get()), 0) : FALSE;
            };
        });
        return made;
    }();
    return type;
}

bool is_text(const Accessible& told) {
    return told.role == AccessibleRole::edit;
}

GType type_of(const Accessible& told) {
    switch (told.role) {
        case AccessibleRole::edit:
            return text_type();
        case AccessibleRole::progress:
        case AccessibleRole::scroll_bar:
            return value_type();
        case AccessibleRole::list:
        case AccessibleRole::tree:
            return list_type();
        default:
            return part_type();
    }
}

// ---- what changes

void tell_states(AtkObject* part, const Accessible& before, const Accessible& now) {
    const auto old = states_of(before);
    const auto fresh = states_of(now);
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        if (old[i].second != fresh[i].second) {
            atk_object_notify_state_change(part, fresh[i].first, fresh[i].second ? TRUE : FALSE);
        }
    }
}

// What can be said of it only in words: what is chosen, how far it is.
std::string description_of(const Accessible& told) {
    return is_text(told) ? std::string{} : utf8_of(told.value);
}

void set_texts(AtkObject* part, const Accessible& told) {
    atk_object_set_name(part, utf8_of(told.name).c_str());
    atk_object_set_description(part, description_of(told).c_str());
    atk_object_set_role(part, role_of(told));
}

void change(AtkObject* part, Accessible now) {
    auto& content = content_of(part);
    auto children = std::move(now.children);
    now.children.clear();
    const auto before = std::exchange(content.told, std::move(now));
    const auto& told = content.told;
    if (before.name != told.name || before.value != told.value || before.role != told.role) {
        set_texts(part, told);
    }
    if (is_text(told)) {
        tell_text_change(part, {before.value, before.caret}, {told.value, told.caret});
    }
    if (before.range != told.range) g_object_notify(G_OBJECT(part), "accessible-value");
    tell_states(part, before, told);
    const bool is_list = ATK_IS_SELECTION(part);
    const auto selected = is_list ? selected_of(part) : std::vector<int>{};
    content.parts.follow(part, std::move(children), content.wishes);
    if (is_list && selected_of(part) != selected) g_signal_emit_by_name(part, "selection-changed");
}

AtkObject* make(AtkObject* parent, Accessible told,
                const std::shared_ptr<const AccessibleWishes>& wishes) {
    auto* const part = ATK_OBJECT(g_object_new(type_of(told), nullptr));
    auto* const content = new Content;
    content->wishes = wishes;
    auto children = std::move(told.children);
    told.children.clear();
    content->told = std::move(told);
    g_object_set_qdata_full(G_OBJECT(part), g_content, content,
                            [](gpointer data) { delete static_cast<Content*>(data); });
    atk_object_set_parent(part, parent);
    set_texts(part, content->told);
    content->parts.follow(part, std::move(children), wishes);
    return part;
}

void let_go(AtkObject* part) {
    content_of(part).is_gone = true;
    atk_object_notify_state_change(part, ATK_STATE_DEFUNCT, TRUE);
    g_object_unref(part);
}

bool is_same(const Accessible& a, const Accessible& b) {
    return a.window == b.window && a.item == b.item && type_of(a) == type_of(b);
}

}  // namespace

AccessibleParts::~AccessibleParts() {
    for (auto* const part : m_parts) let_go(part);
}

AtkObject* AccessibleParts::at(int index) const {
    if (index < 0 || index >= count()) return nullptr;
    return ATK_OBJECT(g_object_ref(m_parts[static_cast<std::size_t>(index)]));
}

void AccessibleParts::follow(AtkObject* parent, std::vector<Accessible> now,
                             const std::shared_ptr<const AccessibleWishes>& wishes) {
    // What has gone says so from behind, so that the numbers of the others hold.
    for (auto i = m_parts.size(); i-- > 0;) {
        auto* const part = m_parts[i];
        const auto& told = content_of(part).told;
        const auto is_it = [&](const Accessible& each) { return is_same(each, told); };
        if (std::any_of(now.begin(), now.end(), is_it)) continue;
        m_parts.erase(m_parts.begin() + static_cast<std::ptrdiff_t>(i));
        g_signal_emit_by_name(parent, "children-changed::remove", static_cast<guint>(i), part);
        let_go(part);
    }
    for (std::size_t i = 0; i < now.size(); ++i) {
        const auto from = m_parts.begin() + static_cast<std::ptrdiff_t>(i);
        const auto found = std::find_if(from, m_parts.end(), [&](AtkObject* part) {
            return is_same(content_of(part).told, now[i]);
        });
        if (found != m_parts.end()) {
            std::rotate(from, found, found + 1);
            change(m_parts[i], std::move(now[i]));
        } else {
            auto* const part = make(parent, std::move(now[i]), wishes);
            m_parts.insert(from, part);
            g_signal_emit_by_name(parent, "children-changed::add", static_cast<guint>(i), part);
        }
    }
}

}  // namespace tvutil2
