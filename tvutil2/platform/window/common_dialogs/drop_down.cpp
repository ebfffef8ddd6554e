#include "tvutil2/platform/window/common_dialogs/drop_down.h"

#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {

DropDown::DropDown(HWND box, bool while_typing, Offers offers)
    : m_box(box), m_while_typing(while_typing), m_offers(std::move(offers)) {}

bool DropDown::is_open() const {
    return SendMessageW(m_box, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

void DropDown::select(std::size_t first, std::size_t last) {
    SendMessageW(m_box, CB_SETEDITSEL, 0,
                 MAKELPARAM(static_cast<WORD>(first), static_cast<WORD>(last)));
}

// A box whose list closes goes back to what was chosen before, which is nothing here.
void DropDown::keep_text(const std::function<void()>& change) {
    DWORD first = 0;
    DWORD last = 0;
    SendMessageW(m_box, CB_GETEDITSEL, reinterpret_cast<WPARAM>(&first),
                 reinterpret_cast<LPARAM>(&last));
    const auto text = text_of(m_box);
    m_is_busy = true;
    change();
    if (text_of(m_box) != text) SetWindowTextW(m_box, text.c_str());
    m_is_busy = false;
    select(first, last);
}

void DropDown::close() {
    if (!is_open()) return;
    keep_text([this] { SendMessageW(m_box, CB_SHOWDROPDOWN, FALSE, 0); });
}

void DropDown::fill(const std::vector<std::u16string>& offers) {
    // CB_RESETCONTENT would empty the field.
    for (auto count = SendMessageW(m_box, CB_GETCOUNT, 0, 0); count > 0; --count) {
        SendMessageW(m_box, CB_DELETESTRING, 0, 0);
    }
    for (const auto& each : offers) {
        SendMessageW(m_box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(each.c_str()));
    }
}

// The open list is as high as what was in it.
void DropDown::typed() {
    m_typed = text_of(m_box);
    auto offers = m_typed.empty() ? std::vector<std::u16string>{} : m_offers(m_typed);
    std::erase(offers, m_typed);
    close();
    if (offers.empty()) return;
    keep_text([&] {
        fill(offers);
        SendMessageW(m_box, CB_SHOWDROPDOWN, TRUE, 0);
    });
}

std::optional<std::u16string> DropDown::heard(WORD code) {
    if (m_is_busy) return std::nullopt;
    switch (code) {
        case CBN_EDITCHANGE:
            if (m_while_typing) typed();
            return std::nullopt;
        case CBN_DROPDOWN:
            m_typed = text_of(m_box);
            keep_text([this] { fill(m_offers(m_while_typing ? u"" : m_typed)); });
            m_is_taken = false;
            return std::nullopt;
        case CBN_SELENDOK:
            m_is_taken = true;
            return std::nullopt;
        case CBN_CLOSEUP:
            if (std::exchange(m_is_taken, false)) return text_of(m_box);
            SetWindowTextW(m_box, m_typed.c_str());
            select(m_typed.size(), m_typed.size());
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

}  // namespace tvutil2
