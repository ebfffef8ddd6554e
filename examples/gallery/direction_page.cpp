#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/geometry.h"

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

constexpr const char16_t* kNames[] = {u"שלום עולם", u"مرحبا بالعالم",   u"קובץ (1).txt",
                                      u"ملف ١٢٣",   u"C:\\בית\\מסמכים", u"תיקייה",
                                      u"مجلد جديد", u"name שם 2"};

// Hebrew and Arabic in whatever shows text, with dialogs of both directions of reading.
class Directions : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        const struct {
            int id;
            const char16_t* text;
        } texts[] = {
            {10, u"שלום, עולם! (1)"},
            {11, u"שלום, עולם! (1)"},
            {12, u"הקובץ name.txt נשמר."},
            {14,
             u"שורה ראשונה, שהיא ארוכה כל כך שהיא ממשיכה בשורה הבאה.\r\n"
             u"السطر الثاني (2).\r\nand one from left to right"},
            {27, u"טקסט ארוך שמתחיל מימין, עם &מקש קיצור, ושאינו נכנס בשורה אחת של תיבת הדו-שיח."},
            {21, u"نص إلى اليمين: ١٢٣ (abc)"},
            {22, u"סוף שנחתך כי הוא ארוך הרבה יותר מדי בשביל המקום שיש לו כאן"},
            {23, u"C:\\Users\\דוד\\מסמכים\\תיקייה ארוכה מאוד\\קובץ עם שם.txt"},
            {24, u"תיבת &סימון"},
        };
        for (const auto& each : texts) SetDlgItemText(each.id, each.text);
        send(13, EM_SETCUEBANNER, 1, u"חיפוש");
        for (const auto* name : kNames) {
            send(20, CB_ADDSTRING, 0, name);
            send(26, CB_ADDSTRING, 0, name);
            send(30, LB_ADDSTRING, 0, name);
        }
        SendDlgItemMessage(20, CB_SETCURSEL, 0);
        SendDlgItemMessage(26, CB_SETCURSEL, 7);
        SendDlgItemMessage(30, LB_SETCURSEL, 2);
        fill_tree();
        fill_list();
        GetDlgItem(10)->SetFocus();
        SendDlgItemMessage(10, EM_SETSEL, 5, 7);
        return FALSE;
    }

  private:
    LRESULT send(int id, UINT message, WPARAM first, const void* second) {
        return SendDlgItemMessage(id, message, first, reinterpret_cast<LPARAM>(second));
    }

    void fill_tree() {
        TVINSERTSTRUCTW insert{};
        insert.hParent = TVI_ROOT;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT;
        insert.item.pszText = const_cast<char16_t*>(u"הפעלות");
        auto* const root = reinterpret_cast<HTREEITEM>(send(31, TVM_INSERTITEMW, 0, &insert));
        insert.hParent = root;
        for (const auto* name : kNames) {
            insert.item.pszText = const_cast<char16_t*>(name);
            send(31, TVM_INSERTITEMW, 0, &insert);
        }
        send(31, TVM_EXPAND, TVE_EXPAND, root);
        send(31, TVM_SELECTITEM, TVGN_CARET, root);
    }

    void fill_list() {
        const auto dpi = static_cast<int>(GetDpiForWindow(m_hWnd));
        const struct {
            const char16_t* title;
            int width, format;
        } columns[] = {{u"שם", 110, LVCFMT_LEFT}, {u"الحجم", 80, LVCFMT_RIGHT}};
        int at = 0;
        for (const auto& each : columns) {
            const LVCOLUMNW column{
                LVCF_TEXT | LVCF_WIDTH | LVCF_FMT, each.format, MulDiv(each.width, dpi, 96),
                const_cast<char16_t*>(each.title), 0,           0};
            send(32, LVM_INSERTCOLUMNW, static_cast<WPARAM>(at++), &column);
        }
        for (int row = 0; row < static_cast<int>(std::size(kNames)); ++row) {
            LVITEMW item{};
            item.mask = LVIF_TEXT;
            item.iItem = row;
            item.pszText = const_cast<char16_t*>(kNames[row]);
            send(32, LVM_INSERTITEMW, 0, &item);
            item.iSubItem = 1;
            item.pszText = const_cast<char16_t*>(u"١٬٠٢٤ ك.ب");
            send(32, LVM_SETITEMW, 0, &item);
        }
    }
};

}  // namespace

std::unique_ptr<CDialog> make_directions() {
    return std::make_unique<Directions>();
}

}  // namespace gallery
