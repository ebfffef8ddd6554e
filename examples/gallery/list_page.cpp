#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"
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
    LRESULT send(int id, UINT message, WPARAM first, const void* second) {
        return SendDlgItemMessage(id, message, first, reinterpret_cast<LPARAM>(second));
    }
    static char16_t* shown(const char16_t* text) { return const_cast<char16_t*>(text); }

    void add_row(int id, int row, std::initializer_list<const char16_t*> texts) {
        int column = 0;
        for (const auto* text : texts) {
            LVITEMW item{};
            item.mask = column == 0 ? LVIF_TEXT | LVIF_IMAGE : LVIF_TEXT;
            item.iItem = row;
            item.iSubItem = column;
            item.pszText = shown(text);
            item.iImage = row % 3;
            send(id, column == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0, &item);
            ++column;
        }
    }
    void select(int id, int row) {
        const LVITEMW item{
            LVIF_STATE, 0, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED, nullptr,
            0,          0, 0};
        send(id, LVM_SETITEMSTATE, static_cast<WPARAM>(row), &item);
    }
    void fill_report(int dpi) {
        const struct {
            const char16_t* title;
            int width, format;
        } columns[] = {
            {u"Name", 130, LVCFMT_LEFT}, {u"Size", 70, LVCFMT_RIGHT}, {u"Kind", 110, LVCFMT_LEFT}};
        int at = 0;
        for (const auto& each : columns) {
            const LVCOLUMNW column{LVCF_TEXT | LVCF_WIDTH | LVCF_FMT,
                                   each.format,
                                   MulDiv(each.width, dpi, 96),
                                   shown(each.title),
                                   0,
                                   0};
            send(10, LVM_INSERTCOLUMNW, static_cast<WPARAM>(at++), &column);
        }
        send(10, LVM_SETIMAGELIST, LVSIL_SMALL, m_small.m_hImageList);
        int row = 0;
        for (const auto* word : kWords) add_row(10, row++, {word, u"1,024 kB", u"Fruit or nut"});
        add_row(10, row, {u"Something with a very long name", u"7 kB", u"Sentence without an end"});
        select(10, 1);
    }
    void fill_icons() {
        send(11, LVM_SETIMAGELIST, LVSIL_NORMAL, m_large.m_hImageList);
        int row = 0;
        for (const auto* word : kWords) add_row(11, row++, {word});
        select(11, 2);
    }
    HTREEITEM add_below(HTREEITEM parent, const char16_t* text) {
        TVINSERTSTRUCTW insert{};
        insert.hParent = parent;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT | TVIF_IMAGE;
        insert.item.pszText = shown(text);
        insert.item.iImage = 1;
        return reinterpret_cast<HTREEITEM>(send(12, TVM_INSERTITEMW, 0, &insert));
    }
    void fill_tree() {
        send(12, TVM_SETIMAGELIST, 0, m_small.m_hImageList);
        auto* const root = add_below(TVI_ROOT, u"Sessions");
        for (const auto* word : kWords) {
            auto* const item = add_below(root, word);
            add_below(item, u"Something below");
            if (word == kWords[1]) send(12, TVM_EXPAND, TVE_EXPAND, item);
        }
        send(12, TVM_EXPAND, TVE_EXPAND, root);
        send(12, TVM_SELECTITEM, TVGN_CARET, root);
    }

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
