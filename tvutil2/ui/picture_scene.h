// What an animated picture looks like at a time: its frames, and the bitmap that they are composed
// on.
//
// A scene is shared by the control that shows it and the thread that plays it, so that a thread
// which hangs keeps what it holds, and touches nothing of a control that has gone on. Each function
// is one step for all threads: what is copied out of a scene is never half a frame.
#pragma once

#include "tvutil2/framework/graphics.h"
#include "tvutil2/platform/picture/ole_picture.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tvutil2 {

struct ReleasePicture {
    void operator()(IPicture* picture) const { picture->Release(); }
};
using OwnedPicture = std::unique_ptr<IPicture, ReleasePicture>;

struct PictureFrame {
    OwnedPicture picture;
    SIZE size, offset;  ///< pixels
    UINT delay;         ///< hundredths of a second, or GifFrame::kNoDelay
    UINT disposal;      ///< 0 to 7
};

/// How long a frame stays, in milliseconds.
[[nodiscard]] constexpr DWORD frame_time(UINT delay) {
    return delay < 5 ? 100 : delay * 10;
}

class PictureScene;

/// One time of playing, from its start until it is told to end.
class PictureTurn {
  public:
    PictureTurn(std::shared_ptr<PictureScene> scene, HWND window);
    ~PictureTurn();
    PictureTurn(const PictureTurn&) = delete;
    PictureTurn& operator=(const PictureTurn&) = delete;

    [[nodiscard]] bool is_playing() const { return m_is_playing && !m_is_over; }
    /// The thread's part: plays until end().
    void play();
    /// Waits until a thread has begun to play.
    void wait_for_begin() const { m_has_begun.wait(false); }
    void end();

  private:
    friend class PictureScene;
    std::shared_ptr<PictureScene> m_scene;
    HWND m_window;
    HANDLE m_exit;  // an event
    std::atomic<bool> m_has_begun = false, m_is_playing = false, m_is_over = false;
};

class PictureScene {
  public:
    /// All frames together have no more pixels than this: 1 GB of memory.
    static constexpr std::int64_t kMost = std::int64_t{1} << 28;

    /// For the thread that loads, before prepare().
    void add_frame(PictureFrame frame) { m_frames.push_back(std::move(frame)); }
    [[nodiscard]] std::size_t frame_count() const { return m_frames.size(); }

    /// Makes the bitmap, in the colour of windows. False when that fails.
    bool prepare(HDC like, SIZE size);
    [[nodiscard]] bool is_ready() const { return m_canvas.has_value(); }

    [[nodiscard]] COLORREF background() const;
    /// Fills the whole bitmap as well.
    void set_background(COLORREF color);

    /// Draws a still picture over the whole bitmap.
    bool draw(IPicture& picture);
    /// Copies a part of the bitmap to 0, 0.
    void copy_to(HDC context, const RECT& part) const;

  private:
    friend class PictureTurn;

    // A bitmap and the memory context that it is in.
    class Canvas {
      public:
        Canvas(HDC like, SIZE size);
        [[nodiscard]] explicit operator bool() const { return m_is_whole; }
        operator HDC() const { return m_context; }

      private:
        CBitmap m_bitmap;
        CDC m_context;  // destroyed first
        bool m_is_whole = false;
    };

    [[nodiscard]] const PictureFrame& current() const { return m_frames[m_current]; }
    // With the lock.
    void fill(const RECT& rect) const;
    bool show();
    void dispose();
    void advance();

    mutable std::mutex m_lock;
    std::vector<PictureFrame> m_frames;
    std::size_t m_current = 0;
    SIZE m_size{0, 0};
    COLORREF m_background = RGB(255, 255, 255);
    std::optional<Canvas> m_canvas;
    std::optional<Canvas> m_behind;  // what the current frame covers, to be brought back
};

}  // namespace tvutil2
