#include "tvutil2/ui/picture.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/file.h"
#include "tvutil2/framework/window_dc.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/geometry.h"

#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <utility>

using tvutil2::OwnedPicture;

BEGIN_MESSAGE_MAP(CPictureEx, CStatic)
ON_WM_DESTROY()
ON_WM_PAINT()
END_MESSAGE_MAP()

namespace {

constexpr DWORD kLongestStop = 5000;
constexpr int kUnitsInInch = 2540;

// A movable block, for the length of a loading.
class Block {
  public:
    explicit Block(DWORD size) : m_memory(GlobalAlloc(GHND, size)) {}
    ~Block() {
        if (m_memory != nullptr) GlobalFree(m_memory);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    operator HGLOBAL() const { return m_memory; }

  private:
    HGLOBAL m_memory;
};

class LockedBytes {
  public:
    LockedBytes(HGLOBAL memory, DWORD size)
        : m_memory(memory), m_bytes(static_cast<BYTE*>(GlobalLock(memory))) {
        if (m_bytes != nullptr && size <= GlobalSize(memory)) m_size = size;
    }
    ~LockedBytes() {
        if (m_bytes != nullptr) GlobalUnlock(m_memory);
    }
    LockedBytes(const LockedBytes&) = delete;
    LockedBytes& operator=(const LockedBytes&) = delete;

    /// Empty for no block, and for one that is smaller than was said.
    [[nodiscard]] std::span<BYTE> get() const { return {m_bytes, m_size}; }

  private:
    HGLOBAL m_memory;
    BYTE* m_bytes;
    DWORD m_size = 0;
};

// The block is freed with the stream if `owns`, and by nobody if there is no stream.
OwnedPicture decode(HGLOBAL memory, DWORD size, bool owns) {
    IStream* stream = nullptr;
    if (CreateStreamOnHGlobal(memory, owns ? TRUE : FALSE, &stream) != S_OK) {
        if (owns) GlobalFree(memory);
        return nullptr;
    }
    void* picture = nullptr;
    const auto result =
        OleLoadPicture(stream, static_cast<LONG>(size), FALSE, IID_IPicture, &picture);
    stream->Release();
    return OwnedPicture(result == S_OK ? static_cast<IPicture*>(picture) : nullptr);
}

}  // namespace

CPictureEx::~CPictureEx() {
    UnLoad();
}

BOOL CPictureEx::Load(HGLOBAL memory, DWORD size) {
    UnLoad();
    BOOL is_loaded = FALSE;
    try {
        is_loaded = load(memory, size);
    } catch (const std::bad_alloc&) {
        UnLoad();
    }
    m_parser = {};
    return is_loaded;
}

BOOL CPictureEx::Load(const char16_t* file_name) {
    CFile file;
    if (!file.Open(file_name, CFile::modeRead | CFile::shareDenyWrite)) return FALSE;
    try {
        const auto length = file.GetLength();
        if (length == 0 || length > std::numeric_limits<LONG>::max()) return FALSE;
        const auto size = static_cast<DWORD>(length);
        const Block block(size);
        {
            const LockedBytes bytes(block, size);
            if (bytes.get().empty()) return FALSE;
            file.Read(bytes.get().data(), size);
        }
        file.Close();
        return Load(block, size);
    } catch (const CFileException&) {
        return FALSE;
    }
}

BOOL CPictureEx::Load(const char16_t* resource_name, const char16_t* resource_type) {
    auto* const module = AfxGetResourceHandle();
    auto* const found = FindResourceW(module, resource_name, resource_type);
    if (found == nullptr) return FALSE;
    const auto size = SizeofResource(module, found);
    const auto* const data = LockResource(LoadResource(module, found));
    if (data == nullptr) return FALSE;
    const Block block(size);
    {
        const LockedBytes bytes(block, size);
        if (bytes.get().empty()) return FALSE;
        std::memcpy(bytes.get().data(), data, size);
    }
    return Load(block, size);
}

BOOL CPictureEx::load(HGLOBAL memory, DWORD size) {
    std::size_t graphics = 0;
    {
        const LockedBytes bytes(memory, size);
        if (bytes.get().empty()) return FALSE;
        m_parser = tvutil2::GifParser(bytes.get());
        m_is_gif = m_parser.is_gif();
        if (m_is_gif) {
            m_size = m_parser.screen();
            graphics = count_graphics();
            if (graphics > 1) load_frames();
        }
        m_parser = {};
    }
    if (m_is_gif && graphics != 1) {
        return m_scene->frame_count() != 0 ? PrepareDC(m_size.cx, m_size.cy) : FALSE;
    }
    m_still = decode(memory, size, false);
    if (!m_still) return FALSE;
    if (!m_is_gif) take_size(*m_still);
    return PrepareDC(m_size.cx, m_size.cy);
}

std::size_t CPictureEx::count_graphics() {
    std::size_t count = 0;
    while (SkipNextGraphicBlock()) ++count;
    return count;
}

void CPictureEx::load_frames() {
    ResetDataPointer();
    UINT length = 0;
    tvutil2::PictureFrame frame{nullptr, m_size, {0, 0}, 0, 0};
    std::int64_t left = tvutil2::PictureScene::kMost;
    while (auto* const memory = GetNextGraphicBlock(&length, &frame.delay, &frame.size,
                                                    &frame.offset, &frame.disposal)) {
        const auto pixels = std::int64_t{frame.size.cx} * frame.size.cy;
        if (pixels > left) {
            GlobalFree(memory);
            continue;
        }
        left -= pixels;
        frame.picture = decode(memory, length, true);
        if (!frame.picture) continue;
        m_scene->add_frame(
            {std::move(frame.picture), frame.size, frame.offset, frame.delay, frame.disposal});
    }
}

// A picture's extent tells its pixels at the scale of the control's window.
void CPictureEx::take_size(IPicture& picture) {
    LONG width = 0;
    LONG height = 0;
    picture.get_Width(&width);
    picture.get_Height(&height);
    const CClientDC context(this);
    m_size = {MulDiv(width, context.GetDeviceCaps(LOGPIXELSX), kUnitsInInch),
              MulDiv(height, context.GetDeviceCaps(LOGPIXELSY), kUnitsInInch)};
}

BOOL CPictureEx::PrepareDC(int nWidth, int nHeight) {
    ::SetWindowPos(m_hWnd, nullptr, 0, 0, nWidth, nHeight, SWP_NOMOVE | SWP_NOZORDER);
    const CClientDC context(this);
    if (context.GetSafeHdc() == nullptr) return FALSE;
    return m_scene->prepare(context, {nWidth, nHeight}) ? TRUE : FALSE;
}

void CPictureEx::UnLoad() {
    Stop();
    m_still.reset();
    m_scene = std::make_shared<tvutil2::PictureScene>();
    m_parser = {};
    m_is_gif = false;
    SetRectEmpty(&m_paint_rect);
}

BOOL CPictureEx::Draw() {
    if (!m_scene->is_ready()) return FALSE;
    if (IsAnimatedGIF()) {
        if (!m_turn) begin_turn();
        return FALSE;
    }
    if (!m_still || !m_scene->draw(*m_still)) return FALSE;
    ::InvalidateRect(m_hWnd, nullptr, FALSE);
    return TRUE;
}

void CPictureEx::begin_turn() {
    m_turn = std::make_shared<tvutil2::PictureTurn>(m_scene, m_hWnd);
    m_thread = reinterpret_cast<HANDLE>(
        _beginthreadex(nullptr, 0, &_ThreadAnimation, this, CREATE_SUSPENDED, nullptr));
    if (m_thread == nullptr) {
        m_turn.reset();
        return;
    }
    ResumeThread(m_thread);
    // Until then the thread looks at this object, and never after.
    m_turn->wait_for_begin();
}

unsigned CPictureEx::_ThreadAnimation(void* object) {
    static_cast<CPictureEx*>(object)->ThreadAnimation();
    return 0;
}

void CPictureEx::ThreadAnimation() {
    const auto turn = m_turn;
    turn->play();
}

void CPictureEx::Stop() {
    if (!m_turn) return;
    m_turn->end();
    WaitForSingleObject(m_thread, kLongestStop);
    CloseHandle(std::exchange(m_thread, nullptr));
    m_turn.reset();
}

BOOL CPictureEx::IsAnimatedGIF() const {
    return m_is_gif && m_scene->frame_count() > 1 ? TRUE : FALSE;
}

BOOL CPictureEx::IsPlaying() const {
    return m_turn && m_turn->is_playing() ? TRUE : FALSE;
}

int CPictureEx::GetFrameCount() const {
    return IsAnimatedGIF() ? static_cast<int>(m_scene->frame_count()) : 0;
}

COLORREF CPictureEx::GetBkColor() const {
    return m_scene->background();
}

void CPictureEx::SetBkColor(COLORREF color) {
    if (m_scene->is_ready()) m_scene->set_background(color);
}

int CPictureEx::GetNextBlockLen() const {
    const auto length = m_parser.next_block_length();
    return length == 0 || length > std::numeric_limits<int>::max() ? -1 : static_cast<int>(length);
}

UINT CPictureEx::GetSubBlocksLen(UINT nStartingOffset) const {
    return static_cast<UINT>(m_parser.sub_blocks_length(m_parser.offset() + nStartingOffset));
}

HGLOBAL CPictureEx::GetNextGraphicBlock(UINT* pBlockLen, UINT* pDelay, SIZE* pBlockSize,
                                        SIZE* pBlockOffset, UINT* pDisposal) {
    *pDisposal = 0;
    const auto frame = m_parser.next_graphic();
    if (!frame) return nullptr;
    *pDelay = frame->delay;
    *pDisposal = frame->disposal;
    if (frame->place) {
        *pBlockSize = frame->place->size;
        *pBlockOffset = frame->place->offset;
    }
    auto* const memory = GlobalAlloc(GMEM_FIXED, frame->file_size());
    if (memory == nullptr) return nullptr;
    frame->write_file(static_cast<BYTE*>(GlobalLock(memory)));
    *pBlockLen = static_cast<UINT>(frame->file_size());
    return memory;
}

void CPictureEx::OnPaint() {
    CPaintDC context(this);
    const RECT all{0, 0, m_size.cx, m_size.cy};
    m_scene->copy_to(context, m_paint_rect.right > m_paint_rect.left ? m_paint_rect : all);
}

void CPictureEx::OnDestroy() {
    Stop();
    CStatic::OnDestroy();
}
