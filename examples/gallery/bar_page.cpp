#include "tvutil2/platform/window/controls/progress.h"
#include "tvutil2/platform/window/scrolling.h"

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

// How far something is, and where in something one is.
class Bars : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        const struct {
            int id;
            WPARAM position;
        } bars[] = {{10, 0}, {11, 2}, {12, 50}, {13, 100}, {16, 60}, {17, 30}};
        for (const auto& each : bars) SendDlgItemMessage(each.id, PBM_SETPOS, each.position);
        SendDlgItemMessage(14, PBM_SETMARQUEE, TRUE);
        for (const int id : {20, 21, 22}) {
            const SCROLLINFO info{
                sizeof info, SIF_RANGE | SIF_PAGE | SIF_POS, 0, 99, 25, id == 21 ? 0 : 40, 0};
            SendDlgItemMessage(id, SBM_SETSCROLLINFO, TRUE, reinterpret_cast<LPARAM>(&info));
        }
        return TRUE;
    }
};

}  // namespace

std::unique_ptr<CDialog> make_bars() {
    return std::make_unique<Bars>();
}

}  // namespace gallery
