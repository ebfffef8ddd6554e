#include "tvutil2/platform/window/controls/edit.h"

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

class Fields : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        const struct {
            int id;
            const char16_t* text;
        } texts[] = {
            {10, u"A line of text"},
            {12, u"secret"},
            {13, u"What is here can be copied"},
            {14, u"Nothing can be done here"},
            {15, u"1024"},
            {16, u"\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD (1)"},
            {17, u"In the middle"},
            {20,
             u"Several lines, of which this one is so long that it goes on in the next.\r\n\r\n"
             u"Größe, où, ação, kôň, съешь ещё\r\n日本語 한국어 简体中文\r\n"
             u"\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD\r\nand a last one"},
            {21,
             u"The first of the lines that aren't broken, with a bar below\r\nTwo\r\nThree\r\n"
             u"Four\r\nFive\r\nSix\r\nSeven\r\nEight\r\nNine\r\nTen"},
            {22, u"Several lines\r\nfor reading only"},
        };
        for (const auto& each : texts) SetDlgItemText(each.id, each.text);
        SendDlgItemMessage(11, EM_SETCUEBANNER, 1, reinterpret_cast<LPARAM>(u"A hint"));
        SendDlgItemMessage(18, EM_SETCUEBANNER, 1, reinterpret_cast<LPARAM>(u"A disabled hint"));
        return TRUE;
    }
};

}  // namespace

std::unique_ptr<CDialog> make_fields() {
    return std::make_unique<Fields>();
}

}  // namespace gallery
