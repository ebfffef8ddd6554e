#include "tvutil2/framework/item_controls.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/geometry.h"

#include <array>

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

constexpr std::array<const char16_t*, 8> kWords{u"Apple",      u"Banana", u"Cherry", u"Damson",
                                                u"Elderberry", u"Fig",    u"Grape",  u"Hazelnut"};

// List boxes and combo boxes.
class Lists : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        for (const auto* word : kWords) {
            for (const int id : {10, 11, 12}) add(id, LB_ADDSTRING, word);
            for (const int id : {20, 21, 22}) add(id, CB_ADDSTRING, word);
        }
        SendDlgItemMessage(10, LB_SETCURSEL, 2);
        for (const LPARAM row : {0, 1, 3}) SendDlgItemMessage(11, LB_SETSEL, TRUE, row);
        SendDlgItemMessage(12, LB_SETCURSEL, 1);
        SendDlgItemMessage(20, CB_SETCURSEL, 1);
        SendDlgItemMessage(21, CB_SETCURSEL, 3);
        SendDlgItemMessage(22, CB_SETCURSEL, 0);
        return TRUE;
    }

  private:
    void add(int id, UINT message, const char16_t* word) {
        SendDlgItemMessage(id, message, 0, reinterpret_cast<LPARAM>(word));
    }
};

// A sheet of paper, a folder, and a disk, of `size` pixels.
void fill_images(CImageList& list, int size) {
    list.Create(size, size, ILC_COLOR32 | ILC_MASK, 3, 1);
    CClientDC screen(nullptr);
    for (const COLORREF color :
         {RGB(0x5B, 0x8D, 0xEF), RGB(0xE3, 0xA0, 0x1B), RGB(0x3F, 0xA3, 0x5B)}) {
        CDC memory;
        memory.CreateCompatibleDC(&screen);
        CBitmap bitmap;
        bitmap.CreateCompatibleBitmap(&screen, size, size);
        auto* const before = memory.SelectObject(&bitmap);
        memory.FillSolidRect(0, 0, size, size, RGB(255, 255, 255));
        const auto side = size / 8;
        memory.FillSolidRect(side, 2 * side, size - 2 * side, size - 3 * side, color);
        memory.FillSolidRect(side, side, size / 2 - side, side, color);
        memory.SelectObject(before);
        list.Add(&bitmap, RGB(255, 255, 255));
    }
}

// List views and a tree.
class Views : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        const auto dpi = static_cast<int>(GetDpiForWindow(m_hWnd));
        fill_images(m_small, MulDiv(16, dpi, 96));
        fill_images(m_large, MulDiv(32, dpi, 96));
        fill_report(dpi);
        fill_icons();
        fill_tree();
        return TRUE;
    }

  private:
    void DoDataExchange(CDataExchange* exchange) override {
        CDialog::DoDataExchange(exchange);
        DDX_Control(exchange, 10, m_report);
        DDX_Control(exchange, 11, m_icons);
        DDX_Control(exchange, 12, m_tree);
    }
    static void select(CListCtrl& list, int row) {
        list.SetItemState(row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
    void add_row(const char16_t* name, const char16_t* size, const char16_t* kind) {
        const auto row = m_report.GetItemCount();
        m_report.InsertItem(row, name, row % 3);
        m_report.SetItemText(row, 1, size);
        m_report.SetItemText(row, 2, kind);
    }
    void fill_report(int dpi) {
        const struct {
            const char16_t* title;
            int width, format;
        } columns[] = {
            {u"Name", 130, LVCFMT_LEFT}, {u"Size", 70, LVCFMT_RIGHT}, {u"Kind", 110, LVCFMT_LEFT}};
        int at = 0;
        for (const auto& each : columns) {
            m_report.InsertColumn(at++, each.title, each.format, MulDiv(each.width, dpi, 96));
        }
        m_report.SetImageList(&m_small, LVSIL_SMALL);
        for (const auto* word : kWords) add_row(word, u"1,024 kB", u"Fruit or nut");
        add_row(u"Something with a very long name", u"7 kB", u"Sentence without an end");
        select(m_report, 1);
    }
    void fill_icons() {
        m_icons.SetImageList(&m_large, LVSIL_NORMAL);
        int row = 0;
        for (const auto* word : kWords) {
            m_icons.InsertItem(row, word, row % 3);
            ++row;
        }
        select(m_icons, 2);
    }
    void fill_tree() {
        m_tree.SetImageList(&m_small, 0);
        auto* const root = m_tree.InsertItem(u"Sessions", 1, 1);
        for (const auto* word : kWords) {
            auto* const item = m_tree.InsertItem(word, 1, 1, root);
            m_tree.InsertItem(u"Something below", 1, 1, item);
            if (word == kWords[1]) m_tree.Expand(item, TVE_EXPAND);
        }
        m_tree.Expand(root, TVE_EXPAND);
        m_tree.SelectItem(root);
    }

    CListCtrl m_report, m_icons;
    CTreeCtrl m_tree;
    CImageList m_small, m_large;
};

}  // namespace

std::unique_ptr<CDialog> make_lists() {
    return std::make_unique<Lists>();
}
std::unique_ptr<CDialog> make_views() {
    return std::make_unique<Views>();
}

}  // namespace gallery
