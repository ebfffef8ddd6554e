#include "examples/gallery/edits.h"

namespace gallery {

BOOL Edits::OnInitDialog() {
    CDialog::OnInitDialog();
    m_middle.SetCenter(TRUE);
    for (auto* const edit : {&m_hint, &m_middle}) edit->SetFont(edit->GetFont(), FALSE);
    m_plain.SetWindowText(u"Ctrl+A selects all of it");
    m_name.SetWindowText(u"A name of a file");
    m_button.SetWindowText(u"A text that is so long that it ends below the button, if it could");
    m_disabled.SetWindowText(u"Disabled");
    m_folder.SetWindowText(u"C:\\home");
    m_plain.SetFocus();
    return FALSE;
}

void Edits::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    DDX_Control(exchange, 10, m_plain);
    DDX_Control(exchange, 11, m_name);
    DDX_Control(exchange, 12, m_hint);
    DDX_Control(exchange, 13, m_middle);
    DDX_Control(exchange, 14, m_button);
    DDX_Control(exchange, 15, m_disabled);
    DDX_Control(exchange, 16, m_folder);
}

}  // namespace gallery
