#include "tvutil2/platform/display/module/accessible_part.h"

#include "tvutil2/platform/display/module/accessible_text.h"
#include "tvutil2/platform/display/module/desktop_look.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

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

AtkRole role_of(const Accessible& told) {
    switch (told.role) {
        case AccessibleRole::window:
        case AccessibleRole::dialog:
            return ATK_ROLE_PANEL;
        case AccessibleRole::push_button:
            return ATK_ROLE_PUSH_BUTTON;
        case AccessibleRole::check_box:
            return ATK_ROLE_CHECK_BOX;
        case AccessibleRole::radio_button:
            return ATK_ROLE_RADIO_BUTTON;
        case AccessibleRole::group:
            return ATK_ROLE_GROUPING;
        case AccessibleRole::label:
            return ATK_ROLE_LABEL;
        case AccessibleRole::picture:
            return ATK_ROLE_IMAGE;
        case AccessibleRole::separator:
            return ATK_ROLE_SEPARATOR;
        case AccessibleRole::edit:
            return told.state.is_multiline ? ATK_ROLE_TEXT : ATK_ROLE_ENTRY;
        case AccessibleRole::password:
            return ATK_ROLE_PASSWORD_TEXT;
        case AccessibleRole::list:
            return ATK_ROLE_LIST;
        case AccessibleRole::list_item:
            return ATK_ROLE_LIST_ITEM;
        case AccessibleRole::tree:
            return ATK_ROLE_TREE;
        case AccessibleRole::tree_item:
            return ATK_ROLE_TREE_ITEM;
        case AccessibleRole::combo_box:
            return ATK_ROLE_COMBO_BOX;
        case AccessibleRole::scroll_bar:
            return ATK_ROLE_SCROLL_BAR;
        case AccessibleRole::progress:
            return ATK_ROLE_PROGRESS_BAR;
        case AccessibleRole::menu:
            return ATK_ROLE_MENU;
        case AccessibleRole::custom:
            break;
    }
    return ATK_ROLE_UNKNOWN;
}

bool is_item(const Accessible& told) {
    return told.role == AccessibleRole::list_item || told.role == AccessibleRole::tree_item;
}

using States = std::array<std::pair<AtkStateType, bool>, 16>;

States states_of(const Accessible& told) {
    const auto& state = told.state;
    const bool is_field =
        told.role == AccessibleRole::edit || told.role == AccessibleRole::password;
    return {{{ATK_STATE_VISIBLE, state.is_visible},
             {ATK_STATE_SHOWING, state.is_visible},
             {ATK_STATE_ENABLED, state.is_enabled},
             {ATK_STATE_SENSITIVE, state.is_enabled},
             {ATK_STATE_FOCUSABLE, state.is_focusable || is_item(told)},
             {ATK_STATE_FOCUSED, state.has_focus},
             {ATK_STATE_CHECKED, state.is_checked},
             {ATK_STATE_INDETERMINATE, state.is_mixed},
             {ATK_STATE_DEFAULT, state.is_default},
             {ATK_STATE_READ_ONLY, state.is_read_only},
             {ATK_STATE_EDITABLE, is_field && !state.is_read_only},
             {ATK_STATE_MULTI_LINE, state.is_multiline},
             {ATK_STATE_SELECTABLE, is_item(told)},
             {ATK_STATE_SELECTED, state.is_selected},
             {ATK_STATE_EXPANDABLE, state.is_expandable || told.role == AccessibleRole::combo_box},
             {ATK_STATE_EXPANDED, state.is_expanded}}};
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
            return 1;
        default:
            return 0;
    }
}

AccessibleText text_of(gpointer object) {
    const auto& told = content_of(object).told;
    return {told.value, told.caret};
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

bool is_text(const Accessible& told) {
    return told.role == AccessibleRole::edit;
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
    tell_states(part, before, told);
    content.parts.follow(part, std::move(children), content.wishes);
}

AtkObject* make(AtkObject* parent, Accessible told,
                const std::shared_ptr<const AccessibleWishes>& wishes) {
    auto* const part = ATK_OBJECT(g_object_new(is_text(told) ? text_type() : part_type(), nullptr));
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
    return a.window == b.window && a.item == b.item && is_text(a) == is_text(b);
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
