#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/system_metrics.h"

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

HMENU menu_of_sorts() {
    auto* const orders = CreatePopupMenu();
    for (const auto* text : {u"By &name", u"By &size", u"By &date"}) {
        const auto count = static_cast<UINT>(GetMenuItemCount(orders));
        AppendMenuW(orders, MF_STRING, 200 + count, text);
    }
    CheckMenuRadioItem(orders, 0, 2, 1, MF_BYPOSITION);
    return orders;
}

HMENU build_menu() {
    auto* const menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, 101, u"&Open");
    SetMenuDefaultItem(menu, 101, FALSE);
    AppendMenuW(menu, MF_STRING, 102, u"Open in a new &window\tCtrl+Shift+N");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, 103, u"Cu&t\tCtrl+X");
    AppendMenuW(menu, MF_STRING, 104, u"&Copy\tCtrl+C");
    AppendMenuW(menu, MF_STRING | MF_GRAYED, 105, u"&Paste\tCtrl+V");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(menu_of_sorts()), u"&Arrange");
    AppendMenuW(menu, MF_STRING | MF_CHECKED, 106, u"Show &hidden files");
    AppendMenuW(menu, MF_STRING | MF_CHECKED | MF_GRAYED, 107, u"&Read only");
    AppendMenuW(menu, MF_STRING, 108, u"P&roperties\tAlt+Enter");
    return menu;
}

// A place for menus to open at: with the secondary button, or the button for it.
class Menus : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        ::SetMenu(m_hWnd, LoadMenuW(nullptr, MAKEINTRESOURCEW(108)));
        // The bar isn't to take the page's room.
        RECT place{};
        GetWindowRect(&place);
        SetWindowPos(nullptr, 0, 0, static_cast<int>(place.right - place.left),
                     static_cast<int>(place.bottom - place.top) +
                         GetSystemMetricsForDpi(SM_CYMENU, GetDpiForWindow(m_hWnd)),
                     SWP_NOMOVE | SWP_NOZORDER);
        return TRUE;
    }
    void open_at(POINT point) {
        auto* const menu = build_menu();
        TrackPopupMenu(menu, 0, static_cast<int>(point.x), static_cast<int>(point.y), 0, m_hWnd,
                       nullptr);
        DestroyMenu(menu);
    }
    void open_below_button() {
        RECT place{};
        GetDlgItem(10)->GetWindowRect(&place);
        open_at({place.left, place.bottom});
    }

  protected:
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Menus, CDialog)
ON_BN_CLICKED(10, &Menus::open_below_button)
END_MESSAGE_MAP()

}  // namespace

std::unique_ptr<CDialog> make_menus() {
    return std::make_unique<Menus>();
}

void open_menu(CDialog& page) {
    static_cast<Menus&>(page).open_below_button();
}

}  // namespace gallery
