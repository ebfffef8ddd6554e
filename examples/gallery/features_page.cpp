#include "tvutil2/data/text.h"
#include "tvutil2/platform/base/language_rows.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/geometry.h"

#include <array>

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

// The products bring the control in which features are switched; here it is a list view.
void register_grid() {
    WNDCLASSW description{};
    if (GetClassInfoW(nullptr, u"MfcPropertyGrid", &description) != 0) return;
    if (GetClassInfoW(nullptr, WC_LISTVIEWW, &description) == 0) return;
    description.style |= CS_GLOBALCLASS;
    description.lpszClassName = u"MfcPropertyGrid";
    RegisterClassW(&description);
}

struct Words {
    WORD language;
    const char16_t *feature, *use, *yes, *no;
};
constexpr Words kWords[] = {
    {0x09, u"Feature", u"Use", u"Yes", u"No"},
    {0x0804, u"功能", u"使用", u"是", u"否"},
    {0x04, u"功能", u"使用", u"是", u"否"},
    {0x07, u"Funktion", u"Verwenden", u"Ja", u"Nein"},
    {0x0A, u"Característica", u"Usar", u"Sí", u"No"},
    {0x0C, u"Fonctionnalité", u"Utiliser", u"Oui", u"Non"},
    {0x11, u"機能", u"使用", u"はい", u"いいえ"},
    {0x12, u"기능", u"사용", u"예", u"아니요"},
    {0x16, u"Recurso", u"Usar", u"Sim", u"Não"},
    {0x19, u"Функция", u"Включена", u"Да", u"Нет"},
    {0x1B, u"Funkcia", u"Používať", u"Áno", u"Nie"},
};

const Words& words() {
    return tvutil2::row_or_english(kWords, LANGIDFROMLCID(GetThreadLocale()));
}

class Features : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        ConvertStaticToHyperlink(m_hWnd, 14021);
        GetDlgItem(kGrid)->ModifyStyle(
            0, WS_BORDER | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS, SWP_FRAMECHANGED);
        add_column(0, words().feature, 4);
        add_column(1, words().use, 1);
        for (int row = 0; row < static_cast<int>(m_is_on.size()); ++row) {
            LVITEMW item{};
            item.mask = LVIF_TEXT;
            item.iItem = row;
            auto text = tvutil2::library_string(static_cast<UINT>(14050 + row));
            item.pszText = const_cast<char16_t*>(text.GetString());
            send(LVM_INSERTITEMW, 0, &item);
            show_switch(row);
        }
        add_description();
        select(1);
        return TRUE;
    }

  protected:
    void on_changed(NMHDR* header, LRESULT* /*result*/) {
        const auto& change = *reinterpret_cast<const NMLISTVIEW*>(header);
        if (change.iItem >= 0 && (change.uNewState & LVIS_SELECTED) != 0) describe(change.iItem);
    }
    void on_activated(NMHDR* header, LRESULT* /*result*/) {
        const auto row = reinterpret_cast<const NMLISTVIEW*>(header)->iItem;
        if (row < 0) return;
        auto& is_on = m_is_on.at(static_cast<std::size_t>(row));
        is_on = !is_on;
        show_switch(row);
    }
    DECLARE_MESSAGE_MAP()

  private:
    static constexpr int kGrid = 14020;
    static constexpr int kDescription = 10;

    LRESULT send(UINT message, WPARAM first, const void* second) {
        return SendDlgItemMessage(kGrid, message, first, reinterpret_cast<LPARAM>(second));
    }
    void add_column(WPARAM at, const char16_t* title, int fifths) {
        RECT client{};
        GetDlgItem(kGrid)->GetClientRect(&client);
        const LVCOLUMNW column{
            LVCF_TEXT | LVCF_WIDTH,       LVCFMT_LEFT, static_cast<int>(client.right) * fifths / 5,
            const_cast<char16_t*>(title), 0,           0};
        send(LVM_INSERTCOLUMNW, at, &column);
    }
    void show_switch(int row) {
        LVITEMW item{};
        item.iSubItem = 1;
        item.pszText = const_cast<char16_t*>(m_is_on[static_cast<std::size_t>(row)] ? words().yes
                                                                                    : words().no);
        send(LVM_SETITEMTEXTW, static_cast<WPARAM>(row), &item);
    }

    // What a row has no room for is told below the rows, as lists of properties do.
    void add_description() {
        auto* const grid = GetDlgItem(kGrid);
        RECT rows{};
        grid->GetWindowRect(&rows);
        ScreenToClient(&rows);
        RECT length{0, 0, 4, 34};  // the gap, and the description's height
        MapDialogRect(&length);
        const RECT text{rows.left, rows.bottom - length.bottom, rows.right, rows.bottom};
        m_description.Create(WS_CHILD | WS_VISIBLE | WS_BORDER | ES_MULTILINE | ES_READONLY, text,
                             this, kDescription);
        m_description.SetFont(GetFont());
        rows.bottom = text.top - length.right;
        grid->MoveWindow(&rows);
    }
    void select(WPARAM row) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        send(LVM_SETITEMSTATE, row, &item);
    }
    void describe(int row) {
        auto text = tvutil2::library_string(static_cast<UINT>(14050 + row));
        text.Replace(u"\n", u"\r\n");
        m_description.SetWindowText(text);
    }

    CEdit m_description;
    std::array<bool, 6> m_is_on{false, true};
};

BEGIN_MESSAGE_MAP(Features, CDialog)
ON_NOTIFY(LVN_ITEMCHANGED, kGrid, &Features::on_changed)
ON_NOTIFY(LVN_ITEMACTIVATE, kGrid, &Features::on_activated)
END_MESSAGE_MAP()

}  // namespace

std::unique_ptr<CDialog> make_features() {
    register_grid();
    return std::make_unique<Features>();
}

}  // namespace gallery
