#include "tvutil2/platform/display/module/accessible_part.h"

#include "tvutil2/platform/display/module/accessible_content.h"
#include "tvutil2/platform/display/module/accessible_roles.h"
#include "tvutil2/platform/display/module/accessible_text.h"
#include "tvutil2/platform/display/module/desktop_look.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

bool is_text(const Accessible& told) {
    return told.role == AccessibleRole::edit;
}

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
    auto& content = accessible_content_of(part);
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
    const auto selected = is_list ? selected_parts(part) : std::vector<int>{};
    content.parts.follow(part, std::move(children), content.wishes);
    if (is_list && selected_parts(part) != selected)
        g_signal_emit_by_name(part, "selection-changed");
}

AtkObject* make(AtkObject* parent, Accessible told,
                const std::shared_ptr<const AccessibleWishes>& wishes) {
    auto* const part = ATK_OBJECT(g_object_new(accessible_type_of(told), nullptr));
    auto owned = std::make_unique<AccessibleContent>();
    auto* const content = owned.get();
    content->wishes = wishes;
    auto children = std::move(told.children);
    told.children.clear();
    content->told = std::move(told);
    set_accessible_content(part, std::move(owned));
    atk_object_set_parent(part, parent);
    set_texts(part, content->told);
    content->parts.follow(part, std::move(children), wishes);
    return part;
}

void let_go(AtkObject* part) {
    accessible_content_of(part).is_gone = true;
    atk_object_notify_state_change(part, ATK_STATE_DEFUNCT, TRUE);
    g_object_unref(part);
}

bool is_same(const Accessible& a, const Accessible& b) {
    return a.window == b.window && a.item == b.item &&
           accessible_type_of(a) == accessible_type_of(b);
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
        const auto& told = accessible_content_of(part).told;
        const auto is_it = [&](const Accessible& each) { return is_same(each, told); };
        if (std::any_of(now.begin(), now.end(), is_it)) continue;
        m_parts.erase(m_parts.begin() + static_cast<std::ptrdiff_t>(i));
        g_signal_emit_by_name(parent, "children-changed::remove", static_cast<guint>(i), part);
        let_go(part);
    }
    for (std::size_t i = 0; i < now.size(); ++i) {
        const auto from = m_parts.begin() + static_cast<std::ptrdiff_t>(i);
        const auto found = std::find_if(from, m_parts.end(), [&](AtkObject* part) {
            return is_same(accessible_content_of(part).told, now[i]);
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
