#include "tvutil2/platform/window/accessibility.h"

#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"

#include "tests/platform/window/controls/control_fixture.h"

namespace {

using Role = tvutil2::AccessibleRole;

class Accessibility : public tests::ControlTest {};

TEST_F(Accessibility, TellsRoleNameAndStateOfEveryControl) {
    add(u"Static", 0, {}, u"&Name:");
    auto* const edit = add(u"Edit", WS_TABSTOP | ES_AUTOHSCROLL, {0, 0, 99, 20}, u"Alice");
    add(u"Static", 0, {}, u"Pass&word:");
    add(u"Edit", WS_TABSTOP | ES_PASSWORD | ES_AUTOHSCROLL, {0, 0, 99, 20}, u"secret");
    auto* const check = add(u"Button", WS_TABSTOP | BS_AUTOCHECKBOX, {}, u"Show && &tell");
    SendMessageW(check, BM_SETCHECK, BST_CHECKED, 0);
    add(u"Button", BS_GROUPBOX, {}, u"&Kind");
    auto* const combo = add(u"ComboBox", WS_TABSTOP | CBS_DROPDOWN, {0, 0, 99, 99});
    SetWindowTextW(combo, u"typed");
    add(u"Button", WS_TABSTOP | BS_DEFPUSHBUTTON | WS_DISABLED, {}, u"OK");
    add(u"ListBox", WS_TABSTOP, {0, 0, 99, 99});
    SetFocus(edit);
    const auto tree = tvutil2::accessible_tree(m_parent);
    EXPECT_EQ(tree.role, Role::window);
    const struct {
        Role role;
        const char16_t *name, *value;
        char16_t mnemonic;
    } wanted[] = {
        {Role::label, u"Name:", u"", u'n'},
        {Role::edit, u"Name:", u"Alice", u'n'},
        {Role::label, u"Password:", u"", u'w'},
        {Role::password, u"Password:", u"", u'w'},
        {Role::check_box, u"Show & tell", u"", u't'},
        {Role::group, u"Kind", u"", u'k'},
        {Role::combo_box, u"Kind", u"typed", u'k'},
        {Role::push_button, u"OK", u"", 0},
        {Role::list, u"", u"", 0},
    };
    ASSERT_EQ(tree.children.size(), std::size(wanted));
    for (std::size_t i = 0; i < std::size(wanted); ++i) {
        SCOPED_TRACE(i);
        const auto& found = tree.children[i];
        EXPECT_EQ(found.role, wanted[i].role);
        EXPECT_EQ(found.name, wanted[i].name);
        EXPECT_EQ(found.value, wanted[i].value);
        EXPECT_EQ(found.mnemonic, wanted[i].mnemonic);
        EXPECT_EQ(found.state.has_focus, i == 1);
        EXPECT_EQ(found.state.is_checked, i == 4);
        EXPECT_EQ(found.state.is_enabled, i != 7);
        EXPECT_EQ(found.state.is_default, i == 7);
    }
    EXPECT_EQ(tvutil2::accessible_tree(nullptr).window, nullptr);
}

}  // namespace
