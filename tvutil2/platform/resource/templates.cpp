#include "tvutil2/platform/resource/templates.h"

#include "tvutil2/platform/base/last_error.h"

#include <cstring>

namespace {

// The first two words of every template tell its kind.
struct Front {
    WORD first;
    WORD second;
};

Front front_of(const void* bytes) {
    Front front;
    std::memcpy(&front, bytes, sizeof front);
    return front;
}

// MENU has version 0, MENUEX version 1.
bool is_menu(Front front) {
    return front.first <= 1;
}

}  // namespace

HMENU LoadMenuIndirectW(const void* menu_template) {
    if (menu_template == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
    } else {
        SetLastError(is_menu(front_of(menu_template)) ? ERROR_CALL_NOT_IMPLEMENTED
                                                      : ERROR_INVALID_DATA);
    }
    return nullptr;
}
