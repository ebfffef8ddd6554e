#include "tvutil2/platform/window/simulated_input.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/window_table.h"

namespace tvutil2 {
namespace {

// Also one that is disabled.
HWND top_level_at(POINT point) {
    const TreeLock tree;
    for (auto* each = tree.table.root().first_child; each != nullptr; each = each->next) {
        if (each->top != nullptr && PtInRect(&each->rect, point)) return each->hwnd();
    }
    return nullptr;
}

void put_key(RawInput::Kind kind, int key, std::u16string_view writes) {
    RawInput input;
    input.kind = kind;
    input.key = key;
    input.text = writes;
    input.time = GetTickCount();
    put_input(std::move(input));
}

void put_pointer(RawInput::Kind kind, POINT point, int button, int delta) {
    RawInput input;
    input.kind = kind;
    input.window = top_level_at(point);
    input.point = point;
    input.button = button;
    input.delta = delta;
    input.time = GetTickCount();
    put_input(std::move(input));
}

// The key of a character on a keyboard of the US, as far as programs look at it.
int key_of(char16_t character) {
    if (character >= u'a' && character <= u'z') return character - u'a' + 'A';
    if ((character >= u'A' && character <= u'Z') || (character >= u'0' && character <= u'9')) {
        return character;
    }
    switch (character) {
        case u' ':
            return VK_SPACE;
        case u'\r':
        case u'\n':
            return VK_RETURN;
        case u'\t':
            return VK_TAB;
        default:
            return VK_PACKET;
    }
}

}  // namespace

void press_key(int key) {
    put_key(RawInput::Kind::key_down, key, {});
}

void release_key(int key) {
    put_key(RawInput::Kind::key_up, key, {});
}

void type_key(int key, std::u16string_view writes) {
    put_key(RawInput::Kind::key_down, key, writes);
    put_key(RawInput::Kind::key_up, key, {});
}

void type_text(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_pair = (text[i] & 0xFC00) == 0xD800 && i + 1 < text.size();
        type_key(key_of(text[i]), text.substr(i, is_pair ? 2 : 1));
        if (is_pair) ++i;
    }
}

void move_pointer(POINT point) {
    put_pointer(RawInput::Kind::pointer_move, point, 0, 0);
}

void press_button(POINT point, int button) {
    put_pointer(RawInput::Kind::button_down, point, button, 0);
}

void release_button(POINT point, int button) {
    put_pointer(RawInput::Kind::button_up, point, button, 0);
}

void click(POINT point, int button) {
    press_button(point, button);
    release_button(point, button);
}

void turn_wheel(POINT point, int delta) {
    put_pointer(RawInput::Kind::wheel, point, 0, delta);
}

void lose_display(HWND window) {
    RawInput input;
    input.kind = RawInput::Kind::lost;
    input.window = window;
    put_input(input);
}

}  // namespace tvutil2
