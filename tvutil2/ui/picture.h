// A control that shows a picture, and plays one that is animated.
//
// Formats: whatever OleLoadPicture decodes. A GIF of several graphics is taken apart, its frames
// are decoded at once and played by a thread of the control's own, again and again, until Stop. An
// object belongs to the thread of its window; its thread only composes frames and asks for paint.
#pragma once

#include "tvutil2/framework/controls.h"
#include "tvutil2/ui/gif_parser.h"
#include "tvutil2/ui/picture_scene.h"

class TVUTIL_API CPictureEx : public CStatic {
  public:
    CPictureEx() = default;
    ~CPictureEx() override;

    // Loading ends what was there, even when it fails, and gives the control the size of the
    // picture. 0 for what can't be read or decoded, and for a picture that is larger than a bitmap
    // may be. Frames that can't be decoded, and those that would take an animation's memory over
    // PictureScene::kMost, are left out; with none left it is 0 as well.

    /// From `size` bytes of a block, which stays the caller's and isn't needed any more.
    BOOL Load(HGLOBAL memory, DWORD size);
    /// From a file; what was there stays when it can't be read.
    BOOL Load(const char16_t* file_name);
    /// From the resources of AfxGetResourceHandle; what was there stays when there is none.
    BOOL Load(const char16_t* resource_name, const char16_t* resource_type);
    void UnLoad();

    /// Shows what was loaded: non-zero for a still picture. For an animation it is 0; it plays from
    /// here on, from the frame where it was stopped. One that plays already goes on.
    BOOL Draw();
    /// Ends playing; the last picture stays. Waits up to 5 seconds for the thread, which touches
    /// nothing more in any case.
    void Stop();

    /// Pixels, of the latest picture that there was.
    [[nodiscard]] SIZE GetSize() const { return m_size; }
    [[nodiscard]] BOOL IsGIF() const { return m_is_gif ? TRUE : FALSE; }
    [[nodiscard]] BOOL IsAnimatedGIF() const;
    [[nodiscard]] BOOL IsPlaying() const;
    /// 0 for what isn't animated.
    [[nodiscard]] int GetFrameCount() const;

    /// What frames leave behind that ask for the background: COLOR_3DFACE from each loading on.
    [[nodiscard]] COLORREF GetBkColor() const;
    /// Fills the picture as well, without asking for paint. Nothing before anything is loaded.
    void SetBkColor(COLORREF color);

    /// The part of the picture that is shown, at 0, 0; all of it while that has no width.
    BOOL SetPaintRect(const RECT* rect) { return CopyRect(&m_paint_rect, rect); }
    BOOL GetPaintRect(RECT* rect) const { return CopyRect(rect, &m_paint_rect); }

  protected:
    // The walk through the blocks of the GIF that is being loaded; outside of a loading there is
    // none, and all fail.
    [[nodiscard]] GIFBlockTypes GetNextBlock() const { return m_parser.next_block(); }
    /// -1 for an unknown block and for one that leaves the data.
    [[nodiscard]] int GetNextBlockLen() const;
    /// Of the chain that begins so many bytes behind the block's first one; 0 when it leaves the
    /// data.
    [[nodiscard]] UINT GetSubBlocksLen(UINT nStartingOffset) const;
    BOOL SkipNextBlock() { return m_parser.skip_next_block() ? TRUE : FALSE; }
    BOOL SkipNextGraphicBlock() { return m_parser.skip_next_graphic() ? TRUE : FALSE; }
    /// A fixed block with a GIF of the next graphic alone, for the caller to free; null at the end.
    /// Size and offset aren't written for a plain text.
    HGLOBAL GetNextGraphicBlock(UINT* pBlockLen, UINT* pDelay, SIZE* pBlockSize, SIZE* pBlockOffset,
                                UINT* pDisposal);
    void ResetDataPointer() { m_parser.rewind(); }

    /// Sizes the control, and makes the bitmap for what is shown.
    BOOL PrepareDC(int nWidth, int nHeight);
    /// The thread; takes the object.
    static unsigned _ThreadAnimation(void* object);
    void ThreadAnimation();

    void OnPaint();
    void OnDestroy();
    DECLARE_MESSAGE_MAP()

  private:
    BOOL load(HGLOBAL memory, DWORD size);
    std::size_t count_graphics();
    void load_frames();
    void take_size(IPicture& picture);
    void begin_turn();

    RECT m_paint_rect{0, 0, 0, 0};
    SIZE m_size{0, 0};
    bool m_is_gif = false;
    tvutil2::GifParser m_parser;
    tvutil2::OwnedPicture m_still;
    std::shared_ptr<tvutil2::PictureScene> m_scene = std::make_shared<tvutil2::PictureScene>();
    std::shared_ptr<tvutil2::PictureTurn> m_turn;
    HANDLE m_thread = nullptr;
};
