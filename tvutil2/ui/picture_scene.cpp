#include "tvutil2/ui/picture_scene.h"

#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/window/paint.h"

#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT kToBackground = 2;
constexpr UINT kToBefore = 3;

RECT area_of(const PictureFrame& frame) {
    return {frame.offset.cx, frame.offset.cy, frame.offset.cx + frame.size.cx,
            frame.offset.cy + frame.size.cy};
}

bool render(IPicture& picture, HDC context, const RECT& to) {
    LONG width = 0;
    LONG height = 0;
    picture.get_Width(&width);
    picture.get_Height(&height);
    return picture.Render(context, to.left, to.top, to.right - to.left, to.bottom - to.top, 0,
                          height, width, -height, nullptr) == S_OK;
}

}  // namespace

PictureTurn::PictureTurn(std::shared_ptr<PictureScene> scene, HWND window)
    : m_scene(std::move(scene)),
      m_window(window),
      m_exit(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

PictureTurn::~PictureTurn() {
    if (m_exit != nullptr) CloseHandle(m_exit);
}

void PictureTurn::end() {
    m_is_over = true;
    SetEvent(m_exit);
}

void PictureTurn::play() {
    m_is_playing = true;
    m_has_begun = true;
    m_has_begun.notify_all();
    auto& scene = *m_scene;
    std::unique_lock guard(scene.m_lock);
    // What an earlier turn has left of the frame that it ended in.
    if (!m_is_over) scene.dispose();
    while (!m_is_over) {
        const bool is_shown = scene.show();
        const auto time = frame_time(scene.current().delay);
        guard.unlock();
        if (is_shown) InvalidateRect(m_window, nullptr, FALSE);
        if (!m_is_over) WaitForSingleObject(m_exit, time);
        guard.lock();
        if (m_is_over) break;
        scene.dispose();
        scene.advance();
    }
    m_is_playing = false;
}

PictureScene::Canvas::Canvas(HDC like, SIZE size) {
    m_is_whole = m_context.Attach(CreateCompatibleDC(like)) &&
                 m_bitmap.Attach(CreateCompatibleBitmap(like, size.cx, size.cy)) &&
                 SelectObject(m_context, m_bitmap) != nullptr;
}

bool PictureScene::prepare(HDC like, SIZE size) {
    const std::lock_guard guard(m_lock);
    m_behind.reset();
    if (!m_canvas.emplace(like, size)) {
        m_canvas.reset();
        return false;
    }
    m_size = size;
    m_background = GetSysColor(COLOR_3DFACE);
    const RECT all{0, 0, size.cx, size.cy};
    FillRect(*m_canvas, &all, reinterpret_cast<HBRUSH>(std::uintptr_t{COLOR_WINDOW}));
    return true;
}

COLORREF PictureScene::background() const {
    const std::lock_guard guard(m_lock);
    return m_background;
}

void PictureScene::set_background(COLORREF color) {
    const std::lock_guard guard(m_lock);
    m_background = color;
    fill({0, 0, m_size.cx, m_size.cy});
}

bool PictureScene::draw(IPicture& picture) {
    const std::lock_guard guard(m_lock);
    return render(picture, *m_canvas, {0, 0, m_size.cx, m_size.cy});
}

void PictureScene::copy_to(HDC context, const RECT& part) const {
    const std::lock_guard guard(m_lock);
    if (!m_canvas) return;
    const auto length = [](LONG from, LONG to) { return saturated(std::int64_t{to} - from); };
    BitBlt(context, 0, 0, length(part.left, part.right), length(part.top, part.bottom), *m_canvas,
           part.left, part.top, SRCCOPY);
}

void PictureScene::fill(const RECT& rect) const {
    const CBrush brush(m_background);
    FillRect(*m_canvas, &rect, brush);
}

// Keeps what the current frame covers, if it is to come back, and draws it.
bool PictureScene::show() {
    const auto& frame = current();
    if (frame.disposal == kToBefore) {
        if (m_behind.emplace(*m_canvas, frame.size)) {
            BitBlt(*m_behind, 0, 0, frame.size.cx, frame.size.cy, *m_canvas, frame.offset.cx,
                   frame.offset.cy, SRCCOPY);
        } else {
            m_behind.reset();
        }
    }
    return render(*frame.picture, *m_canvas, area_of(frame));
}

void PictureScene::dispose() {
    const auto& frame = current();
    if (frame.disposal == kToBackground) fill(area_of(frame));
    if (frame.disposal != kToBefore || !m_behind) return;
    BitBlt(*m_canvas, frame.offset.cx, frame.offset.cy, frame.size.cx, frame.size.cy, *m_behind, 0,
           0, SRCCOPY);
    m_behind.reset();
}

void PictureScene::advance() {
    if (++m_current != m_frames.size()) return;
    m_current = 0;
    fill({0, 0, m_size.cx, m_size.cy});
}

}  // namespace tvutil2
