// Dialogs as objects, and the exchange of their data.
//
// A dialog's object hears the messages of its window from the first one on; what its map doesn't
// want is handled as dialogs do. DoModal and Create look for the template in the module that
// AfxFindResourceHandle names, in the language that the system chooses.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/process/message_box.h"

class TVUTIL_API CDialog : public CWnd {
    DECLARE_DYNAMIC(CDialog)
  public:
    CDialog() = default;
    /// To be run by DoModal. A null parent stands for the thread's main window.
    explicit CDialog(UINT id, CWnd* parent = nullptr);
    explicit CDialog(const char16_t* name, CWnd* parent = nullptr);

    /// Beside the others. FALSE when it can't be made, with the error of
    /// CreateDialogIndirectParamW.
    virtual BOOL Create(const char16_t* name, CWnd* parent = nullptr);
    virtual BOOL Create(UINT id, CWnd* parent = nullptr);
    virtual BOOL CreateIndirect(const void* dialog_template, CWnd* parent = nullptr);

    /// The template that DoModal takes: in memory, which must stay until then, or a resource.
    BOOL InitModalIndirect(const void* dialog_template, CWnd* parent = nullptr);
    BOOL InitModalIndirect(HGLOBAL dialog_template, CWnd* parent = nullptr);
    /// Runs it until EndDialog, with its owner disabled, in the loop of the thread's object, so
    /// that PreTranslateMessage is asked: what EndDialog was given, or -1 when the dialog can't be
    /// made, its window goes away or the program is to quit.
    virtual INT_PTR DoModal();
    /// Once the message is handled that calls it.
    void EndDialog(int result);

    void NextDlgCtrl() const;
    void PrevDlgCtrl() const;
    void GotoDlgCtrl(CWnd* control);
    void SetDefID(UINT id);
    void MapDialogRect(RECT* rect) const;

    /// What the keyboard means in dialogs (IsDialogMessageW).
    BOOL PreTranslateMessage(MSG* message) override;

    /// When the controls are there: puts the data into them. 0 when it has set the focus itself.
    virtual BOOL OnInitDialog();

  protected:
    /// The button IDOK: takes the data and ends the dialog, unless the exchange fails.
    virtual void OnOK();
    /// The button IDCANCEL, Esc, and closing.
    virtual void OnCancel();

    DECLARE_MESSAGE_MAP()

  private:
    static INT_PTR procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    const void* find_template(const char16_t* name, HINSTANCE& module);

    const char16_t* m_name = nullptr;
    const void* m_template = nullptr;
    CWnd* m_parent = nullptr;
};

/// One exchange of data between members and controls.
class TVUTIL_API CDataExchange {
  public:
    CDataExchange(CWnd* window, BOOL save) : m_bSaveAndValidate(save), m_pDlgWnd(window) {}

    /// The control with that id. Throws CInvalidArgException when there is none.
    HWND PrepareCtrl(int id);
    HWND PrepareEditCtrl(int id);
    /// Ends the exchange, with the focus in the last edit control (throws CUserException).
    [[noreturn]] void Fail();
    /// The control of the last PrepareEditCtrl; null behind another control.
    [[nodiscard]] HWND edit() const { return m_edit; }

    BOOL m_bSaveAndValidate;  ///< from the controls to the members
    CWnd* m_pDlgWnd;

  private:
    HWND m_edit = nullptr;
};

/// Lets the member hear the control's messages from the first exchange on.
TVUTIL_API void DDX_Control(CDataExchange* exchange, int id, CWnd& control);
TVUTIL_API void DDX_Text(CDataExchange* exchange, int id, CString& text);
/// Numbers: what is none, or one too large, is said to the person, and fails.
TVUTIL_API void DDX_Text(CDataExchange* exchange, int id, int& number);
TVUTIL_API void DDX_Text(CDataExchange* exchange, int id, UINT& number);
/// 0, 1, or 2 for neither.
TVUTIL_API void DDX_Check(CDataExchange* exchange, int id, int& check);
/// The index in the group that begins with the radio button of that id, or -1.
TVUTIL_API void DDX_Radio(CDataExchange* exchange, int id, int& index);
/// The index of the selection, or -1.
TVUTIL_API void DDX_CBIndex(CDataExchange* exchange, int id, int& index);
TVUTIL_API void DDX_LBIndex(CDataExchange* exchange, int id, int& index);
/// The text of the field, or of the selection. To a control: the item that begins so is selected,
/// or with Exact the one that is so; a field that can be typed into takes any text.
TVUTIL_API void DDX_CBString(CDataExchange* exchange, int id, CString& text);
TVUTIL_API void DDX_CBStringExact(CDataExchange* exchange, int id, CString& text);
TVUTIL_API void DDX_LBString(CDataExchange* exchange, int id, CString& text);

// Behind DDX_Text of the same value.

/// Lets no more characters be typed.
TVUTIL_API void DDV_MaxChars(CDataExchange* exchange, const CString& text, int count);
/// What is outside is said to the person, and fails.
TVUTIL_API void DDV_MinMaxInt(CDataExchange* exchange, int number, int least, int most);
TVUTIL_API void DDV_MinMaxUInt(CDataExchange* exchange, UINT number, UINT least, UINT most);
