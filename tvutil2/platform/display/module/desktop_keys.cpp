#include "tvutil2/platform/display/module/desktop_keys.h"

#include "tvutil2/platform/window/keys.h"

#include <memory>

namespace tvutil2 {
namespace {

constexpr struct {
    guint value;
    Key key;
} kKeys[] = {
    {GDK_KEY_BackSpace, {VK_BACK}},
    {GDK_KEY_Tab, {VK_TAB}},
    {GDK_KEY_ISO_Left_Tab, {VK_TAB}},
    {GDK_KEY_Return, {VK_RETURN}},
    {GDK_KEY_KP_Enter, {VK_RETURN, true}},
    {GDK_KEY_Shift_L, {VK_SHIFT}},
    {GDK_KEY_Shift_R, {VK_SHIFT}},
    {GDK_KEY_Control_L, {VK_CONTROL}},
    {GDK_KEY_Control_R, {VK_CONTROL, true}},
    {GDK_KEY_Alt_L, {VK_MENU}},
    {GDK_KEY_Alt_R, {VK_MENU, true}},
    {GDK_KEY_Meta_L, {VK_MENU}},
    {GDK_KEY_Meta_R, {VK_MENU, true}},
    {GDK_KEY_Pause, {VK_PAUSE}},
    {GDK_KEY_Caps_Lock, {VK_CAPITAL}},
    {GDK_KEY_Num_Lock, {VK_NUMLOCK}},
    {GDK_KEY_Escape, {VK_ESCAPE}},
    {GDK_KEY_space, {VK_SPACE}},
    {GDK_KEY_Page_Up, {VK_PRIOR, true}},
    {GDK_KEY_Page_Down, {VK_NEXT, true}},
    {GDK_KEY_End, {VK_END, true}},
    {GDK_KEY_Home, {VK_HOME, true}},
    {GDK_KEY_Left, {VK_LEFT, true}},
    {GDK_KEY_Up, {VK_UP, true}},
    {GDK_KEY_Right, {VK_RIGHT, true}},
    {GDK_KEY_Down, {VK_DOWN, true}},
    {GDK_KEY_Insert, {VK_INSERT, true}},
    {GDK_KEY_Delete, {VK_DELETE, true}},
    {GDK_KEY_KP_Page_Up, {VK_PRIOR}},
    {GDK_KEY_KP_Page_Down, {VK_NEXT}},
    {GDK_KEY_KP_End, {VK_END}},
    {GDK_KEY_KP_Home, {VK_HOME}},
    {GDK_KEY_KP_Left, {VK_LEFT}},
    {GDK_KEY_KP_Up, {VK_UP}},
    {GDK_KEY_KP_Right, {VK_RIGHT}},
    {GDK_KEY_KP_Down, {VK_DOWN}},
    {GDK_KEY_KP_Insert, {VK_INSERT}},
    {GDK_KEY_KP_Delete, {VK_DELETE}},
    {GDK_KEY_KP_Multiply, {VK_MULTIPLY}},
    {GDK_KEY_KP_Add, {VK_ADD}},
    {GDK_KEY_KP_Subtract, {VK_SUBTRACT}},
    {GDK_KEY_KP_Decimal, {VK_DECIMAL}},
    {GDK_KEY_KP_Separator, {VK_DECIMAL}},
    {GDK_KEY_KP_Divide, {VK_DIVIDE, true}},
    {GDK_KEY_Super_L, {VK_LWIN, true}},
    {GDK_KEY_Menu, {VK_APPS, true}},
    {GDK_KEY_semicolon, {VK_OEM_1}},
    {GDK_KEY_plus, {VK_OEM_PLUS}},
    {GDK_KEY_equal, {VK_OEM_PLUS}},
    {GDK_KEY_comma, {VK_OEM_COMMA}},
    {GDK_KEY_minus, {VK_OEM_MINUS}},
    {GDK_KEY_period, {VK_OEM_PERIOD}},
};

Key key_of_value(guint value) {
    if (value >= GDK_KEY_a && value <= GDK_KEY_z) {
        return {static_cast<int>(value - GDK_KEY_a) + 'A'};
    }
    if (value >= GDK_KEY_A && value <= GDK_KEY_Z) {
        return {static_cast<int>(value - GDK_KEY_A) + 'A'};
    }
    if (value >= GDK_KEY_0 && value <= GDK_KEY_9) {
        return {static_cast<int>(value - GDK_KEY_0) + '0'};
    }
    if (value >= GDK_KEY_KP_0 && value <= GDK_KEY_KP_9) {
        return {static_cast<int>(value - GDK_KEY_KP_0) + VK_NUMPAD0};
    }
    if (value >= GDK_KEY_F1 && value <= GDK_KEY_F24) {
        return {static_cast<int>(value - GDK_KEY_F1) + VK_F1};
    }
    for (const auto& [known, key] : kKeys) {
        if (known == value) return key;
    }
    return {};
}

// What the key is without modifiers, in the first layout that knows it as something.
Key key_on_keyboard(guint keycode, int group) {
    auto* const keymap = gdk_keymap_get_for_display(gdk_display_get_default());
    GdkKeymapKey* keys = nullptr;
    guint* values = nullptr;
    gint count = 0;
    if (!gdk_keymap_get_entries_for_keycode(keymap, keycode, &keys, &values, &count)) return {};
    const std::unique_ptr<GdkKeymapKey, decltype(&g_free)> keys_owner(keys, &g_free);
    const std::unique_ptr<guint, decltype(&g_free)> values_owner(values, &g_free);
    Key found;
    for (int i = 0; i < count; ++i) {
        if (keys[i].level != 0) continue;
        const auto key = key_of_value(values[i]);
        if (key.key == 0) continue;
        if (keys[i].group == group) return key;
        if (found.key == 0) found = key;
    }
    return found;
}

bool is_of_keypad(guint value) {
    return value >= GDK_KEY_KP_Space && value <= GDK_KEY_KP_9;
}

}  // namespace

Key key_of(const GdkEventKey& event) {
    // What a key of the keypad is depends on Num Lock.
    if (is_of_keypad(event.keyval)) return key_of_value(event.keyval);
    if (event.keyval == GDK_KEY_ISO_Level3_Shift) return {};
    const auto key = key_on_keyboard(event.hardware_keycode, event.group);
    return key.key != 0 ? key : key_of_value(event.keyval);
}

}  // namespace tvutil2
