// Scroll bars and progress bars as objects: each member sends the control the message of its name,
// or calls the platform's function.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/controls/progress.h"
#include "tvutil2/platform/window/scrolling.h"

class TVUTIL_API CScrollBar : public CWnd {
    DECLARE_DYNAMIC(CScrollBar)
  public:
    /// SBS_HORZ or SBS_VERT.
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(u"ScrollBar", u"", style, rect, parent, id);
    }
    int SetScrollPos(int position, BOOL redraw = TRUE) {
        return CWnd::SetScrollPos(SB_CTL, position, redraw);
    }
    [[nodiscard]] int GetScrollPos() const { return CWnd::GetScrollPos(SB_CTL); }
    void SetScrollRange(int least, int most, BOOL redraw = TRUE) {
        CWnd::SetScrollRange(SB_CTL, least, most, redraw);
    }
    void GetScrollRange(int* least, int* most) const {
        SendMessage(SBM_GETRANGE, reinterpret_cast<WPARAM>(least), reinterpret_cast<LPARAM>(most));
    }
    BOOL SetScrollInfo(SCROLLINFO* info, BOOL redraw = TRUE) {
        return CWnd::SetScrollInfo(SB_CTL, info, redraw);
    }
    BOOL GetScrollInfo(SCROLLINFO* info, UINT what = SIF_ALL) const {
        return CWnd::GetScrollInfo(SB_CTL, info, what);
    }
};

class TVUTIL_API CProgressCtrl : public CWnd {
    DECLARE_DYNAMIC(CProgressCtrl)
  public:
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(PROGRESS_CLASSW, u"", style, rect, parent, id);
    }
    void SetRange(short least, short most) {
        SendMessage(PBM_SETRANGE, 0, MAKELONG(static_cast<WORD>(least), static_cast<WORD>(most)));
    }
    void SetRange32(int least, int most) {
        SendMessage(PBM_SETRANGE32, static_cast<WPARAM>(least), most);
    }
    void GetRange(int& least, int& most) const {
        least = static_cast<int>(SendMessage(PBM_GETRANGE, TRUE));
        most = static_cast<int>(SendMessage(PBM_GETRANGE, FALSE));
    }
    [[nodiscard]] int GetPos() const { return static_cast<int>(SendMessage(PBM_GETPOS)); }
    // The position before; of SetStep the step.
    int SetPos(int position) { return tell(PBM_SETPOS, position); }
    int OffsetPos(int by) { return tell(PBM_DELTAPOS, by); }
    int SetStep(int step) { return tell(PBM_SETSTEP, step); }
    int StepIt() { return tell(PBM_STEPIT, 0); }
    /// With PBS_MARQUEE; a step each so many milliseconds, 0 for the usual time.
    BOOL SetMarquee(BOOL moves, int milliseconds) {
        return SendMessage(PBM_SETMARQUEE, static_cast<WPARAM>(moves), milliseconds) != 0 ? TRUE
                                                                                          : FALSE;
    }

  private:
    int tell(UINT message, int value) {
        return static_cast<int>(SendMessage(message, static_cast<WPARAM>(value)));
    }
};
