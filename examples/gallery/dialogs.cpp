#include "examples/gallery/dialogs.h"

#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/window.h"

#include "examples/gallery/edits.h"
#include "examples/gallery/pages.h"

namespace gallery {
namespace {

class Buttons : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        CheckDlgButton(21, BST_CHECKED);
        CheckDlgButton(22, BST_INDETERMINATE);
        CheckRadioButton(30, 32, 31);
        SendDlgItemMessage(40, BCM_SETNOTE, 0,
                           reinterpret_cast<LPARAM>(u"What happens when it is chosen"));
        return TRUE;
    }
};

class Texts : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        const struct {
            int id;
            const char16_t* icon;
        } icons[] = {{71, IDI_ERROR}, {72, IDI_WARNING}, {73, IDI_QUESTION}, {74, IDI_INFORMATION}};
        for (const auto& each : icons) {
            SendDlgItemMessage(each.id, STM_SETIMAGE, IMAGE_ICON,
                               reinterpret_cast<LPARAM>(LoadIconW(nullptr, each.icon)));
        }
        return TRUE;
    }
};

class Resizing : public CResizingDialog {
  public:
    Resizing() : CResizingDialog(103) {
        SetRememberSize(FALSE);
        SetControlInfo(10, CTRL_SIZE_X | CTRL_SIZE_Y);
        SetControlInfo(11, CTRL_SIZE_X);
        SetControlInfo(12, CTRL_MOVE_Y);
        SetControlInfo(IDOK, CTRL_MOVE_X | CTRL_MOVE_Y);
        SetControlInfo(IDCANCEL, CTRL_MOVE_X | CTRL_MOVE_Y);
    }
};

// The question of TvSelectCommandFolder.
class SelectFolder : public CSelectCommandDlg {
  public:
    SelectFolder() : CSelectCommandDlg(&m_param) {
        m_param.m_strTitle = tvutil2::library_string(14056);
        m_param.m_strDescription.Format(tvutil2::library_string(14057), u"C:\\folder");
        m_param.m_strCommand1 = tvutil2::library_string(14058);
        m_param.m_strCommand2 = tvutil2::library_string(14059);
        m_param.m_strCommand3 = tvutil2::library_string(14060);
        m_param.m_strCommand4 = tvutil2::library_string(14061);
    }

    // Its check box as the library words it.
    BOOL OnInitDialog() override {
        GetDlgItemText(14028, m_param.m_strCheck);
        return CSelectCommandDlg::OnInitDialog();
    }

  private:
    TvSelectCommandParam m_param;
};

// The question for the folder of all products, before the first start of one.
class DataFolder : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        CString text;
        GetDlgItemText(14022, text);
        CString shown;
        shown.Format(text, 8);
        SetDlgItemText(14022, shown);
        SetDlgItemText(14015, u"C:\\Users\\somebody\\Documents\\Tolvarine Computer");
        return TRUE;
    }

  protected:
    void allow_change() {
        const BOOL is_wanted = IsDlgButtonChecked(14016) != 0;
        for (const int id : {14015, 14017}) GetDlgItem(id)->EnableWindow(is_wanted);
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(DataFolder, CDialog)
ON_BN_CLICKED(14016, &DataFolder::allow_change)
END_MESSAGE_MAP()

POINT middle_of(const CDialog& dialog, int id) {
    RECT place{};
    GetWindowRect(GetDlgItem(dialog.m_hWnd, id), &place);
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}
HWND point_at_button(CDialog& dialog) {
    tvutil2::move_pointer(middle_of(dialog, 10));
    return dialog.m_hWnd;
}
HWND press_button(CDialog& dialog) {
    tvutil2::press_button(middle_of(dialog, 10));
    return dialog.m_hWnd;
}
HWND point_at_bar(CDialog& dialog) {
    const auto place = tvutil2::menu_bar_places(dialog.m_hWnd).at(1);
    tvutil2::move_pointer({place.left + 4, place.top + 4});
    return dialog.m_hWnd;
}
HWND tab_twice(CDialog& dialog) {
    for (int i = 0; i < 2; ++i) tvutil2::type_key(VK_TAB);
    return dialog.m_hWnd;
}
HWND make_larger(CDialog& dialog) {
    const auto dpi = static_cast<int>(GetDpiForWindow(dialog.m_hWnd));
    dialog.SetWindowPos(nullptr, 0, 0, MulDiv(500, dpi, 96), MulDiv(300, dpi, 96),
                        SWP_NOMOVE | SWP_NOZORDER);
    return dialog.m_hWnd;
}
HWND open_box(CDialog& dialog) {
    dialog.SendDlgItemMessage(20, CB_SHOWDROPDOWN, TRUE);
    return FindWindowW(u"ComboLBox", nullptr);
}

template <class Dialog>
std::unique_ptr<CDialog> make() {
    return std::make_unique<Dialog>();
}

HICON own_icon(const CDialog& dialog, int side) {
    const auto pixels = MulDiv(side, static_cast<int>(GetDpiForWindow(dialog.m_hWnd)), 96);
    return reinterpret_cast<HICON>(
        LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(1), IMAGE_ICON, pixels, pixels, 0));
}

class MainWindow : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        SetIcon(own_icon(*this, 16), FALSE);
        SetIcon(own_icon(*this, 32), TRUE);
        CheckDlgButton(60, tvutil2::theme().mode == tvutil2::ThemeMode::dark ? 1 : 0);
        return TRUE;
    }

  protected:
    void open(UINT id) {
        for (const auto& entry : entries()) {
            if (entry.id != id && entry.id != 14000 + id) continue;
            const auto dialog = entry.make();
            dialog->InitModalIndirect(template_of(entry), this);
            dialog->DoModal();
        }
    }
    void ask() {
        MessageBox(u"Is this what a question looks like?", u"Gallery",
                   MB_YESNOCANCEL | MB_ICONQUESTION);
    }
    void choose_folder() {
        CFolderOpenDlg folder(this);
        if (folder.DoModal() == IDOK) MessageBox(folder.m_strPath, u"Gallery");
    }
    void change_look() {
        tvutil2::set_theme_mode(IsDlgButtonChecked(60) != 0 ? tvutil2::ThemeMode::dark
                                                            : tvutil2::ThemeMode::light);
        RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(MainWindow, CDialog)
ON_COMMAND_RANGE(101, 129, &MainWindow::open)
ON_COMMAND_RANGE(10, 40, &MainWindow::open)
ON_BN_CLICKED(50, &MainWindow::ask)
ON_BN_CLICKED(51, &MainWindow::choose_folder)
ON_BN_CLICKED(60, &MainWindow::change_look)
END_MESSAGE_MAP()

const void* own_template(UINT id) {
    const auto* const name = MAKEINTRESOURCEW(static_cast<WORD>(id));
    return LockResource(LoadResource(nullptr, FindResourceW(nullptr, name, RT_DIALOG)));
}

}  // namespace

const std::vector<Entry>& entries() {
    static const std::vector<Entry> all{
        {"buttons",
         101,
         false,
         make<Buttons>,
         {{"hot", point_at_button}, {"focus", tab_twice}, {"pressed", press_button}}},
        {"texts", 102, false, make<Texts>},
        {"resizing", 103, false, make<Resizing>, {{"larger", make_larger}}},
        {"fields", 104, false, make_fields, {{"filled", tab_twice}}},
        {"lists", 105, false, make_lists, {{"open", open_box}}},
        {"views", 106, false, make_views},
        {"bars", 107, false, make_bars},
        {"menus", 108, false, make_menus, {{"hot", point_at_bar}}},
        {"animation", 109, false, make_animation},
        {"directions", 110, false, make_directions, {{"open", open_box}}},
        {"edits", 120, false, make<Edits>},
        {"language", 14010, true, make<CChangeLangDlg>},
        {"help", 14029, true, make<CHelpProgramDlg>},
        {"select", 14023, true, make<SelectFolder>},
        {"package", 14034, true, make<CVerifyPackageDlg>},
        {"previous", 14012, true, make<CDialog>},
        {"folder", 14013, true, make<DataFolder>},
        {"features", 14014, true, make_features},
    };
    return all;
}

const void* template_of(const Entry& entry) {
    return entry.is_library
               ? LockResource(tvutil2::find_library_dialog(static_cast<WORD>(entry.id)).loaded)
               : own_template(entry.id);
}

int run_main_window() {
    MainWindow window;
    window.InitModalIndirect(own_template(100));
    return static_cast<int>(window.DoModal());
}

}  // namespace gallery
