#include "tvutil2/platform/picture/ole_picture.h"

#include "tvutil2/platform/base/counted.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/blend.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/decoder.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr int kUnitsInInch = 2540;

class Picture : public tvutil2::Counted<IPicture> {
  public:
    explicit Picture(std::shared_ptr<tvutil2::Surface> pixels)
        : Counted(IID_IPicture),
          m_pixels(std::move(pixels)),
          m_width(extent(m_pixels->width())),
          m_height(extent(m_pixels->height())) {}

    HRESULT get_Type(short* type) override { return give(type, PICTYPE_BITMAP); }
    HRESULT get_Width(LONG* width) override { return give(width, m_width); }
    HRESULT get_Height(LONG* height) override { return give(height, m_height); }

    HRESULT Render(HDC context, LONG x, LONG y, LONG width, LONG height, LONG source_x,
                   LONG source_y, LONG source_width, LONG source_height,
                   const RECT* /*bounds*/) override {
        if (width == 0 || height == 0 || source_width == 0 || source_height == 0) return S_OK;
        const auto [left, across] = part(source_x, source_width, m_width, m_pixels->width());
        const auto [top, down] =
            part(m_height - source_y, -source_height, m_height, m_pixels->height());
        RECT to{x, y, tvutil2::plus(x, width), tvutil2::plus(y, height)};
        RECT from{left, top, left + across, top + down};
        if (from.left > from.right) std::swap(from.left, from.right), std::swap(to.left, to.right);
        if (from.top > from.bottom) std::swap(from.top, from.bottom), std::swap(to.top, to.bottom);
        return tvutil2::draw_surface(context, to, *m_pixels, from) ? S_OK : E_FAIL;
    }

  private:
    ~Picture() override = default;

    static LONG extent(int pixels) {
        return MulDiv(pixels, kUnitsInInch, static_cast<int>(tvutil2::system_dpi()));
    }
    template <class T>
    static HRESULT give(T* to, T value) {
        if (to == nullptr) return E_POINTER;
        *to = value;
        return S_OK;
    }
    // From the picture's units to its pixels: where a part begins, and how far it goes.
    static std::pair<LONG, LONG> part(LONG start, LONG length, LONG extent, int pixels) {
        const auto at = [&](std::int64_t value) {
            const auto place = extent == 0 ? 0 : (value * pixels + extent / 2) / extent;
            return static_cast<LONG>(std::clamp<std::int64_t>(place, 0, pixels));
        };
        const auto first = at(start);
        return {first, at(std::int64_t{start} + length) - first};
    }

    std::shared_ptr<tvutil2::Surface> m_pixels;
    LONG m_width;
    LONG m_height;
};

HRESULT read_all(IStream& stream, LONG size, std::vector<std::byte>& bytes) {
    ULONGLONG place = 0;
    if (size < 0 || stream.Seek(0, STREAM_SEEK_CUR, &place) != S_OK) return CTL_E_INVALIDPICTURE;
    const auto left = stream.Size() - std::min(place, stream.Size());
    const auto wanted = size == 0 ? left : std::min<ULONGLONG>(left, static_cast<DWORD>(size));
    if (wanted > 0x7FFFFFFF) return E_OUTOFMEMORY;
    bytes.resize(static_cast<std::size_t>(wanted));
    DWORD read = 0;
    if (wanted != 0 && FAILED(stream.Read(bytes.data(), static_cast<DWORD>(wanted), &read))) {
        return CTL_E_INVALIDPICTURE;
    }
    bytes.resize(read);
    return S_OK;
}

HRESULT load(IStream& stream, LONG size, void** picture) {
    std::vector<std::byte> bytes;
    if (const auto result = read_all(stream, size, bytes); result != S_OK) return result;
    tvutil2::crop_gif_to_image(bytes);
    auto pixels = tvutil2::decode_picture(bytes);
    if (!pixels) {
        const auto error = GetLastError();
        if (error == ERROR_NOT_ENOUGH_MEMORY) return E_OUTOFMEMORY;
        return error == ERROR_INVALID_DATA ? CTL_E_INVALIDPICTURE : E_FAIL;
    }
    *picture = static_cast<IPicture*>(new Picture(std::move(pixels)));
    return S_OK;
}

}  // namespace

HRESULT OleLoadPicture(IStream* stream, LONG size, BOOL /*run_mode*/, const IID& id,
                       void** picture) {
    if (stream == nullptr || picture == nullptr) return E_POINTER;
    *picture = nullptr;
    if (id != IID_IPicture && id != IID_IUnknown) return E_NOINTERFACE;
    try {
        return load(*stream, size, picture);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

namespace tvutil2 {
namespace {

// The layout of GIF87a and GIF89a (CompuServe, 1987 and 1990).
constexpr std::size_t kScreen = 6;
constexpr std::size_t kHeader = 13;
constexpr std::size_t kDescriptor = 11;  // with the size of codes

// The bytes of a GIF, as numbers; beyond its end they are 0.
class GifBytes {
  public:
    explicit GifBytes(std::span<const std::byte> bytes) : m_bytes(bytes) {}
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] unsigned at(std::size_t place) const {
        return place < m_bytes.size() ? std::to_integer<unsigned>(m_bytes[place]) : 0;
    }
    [[nodiscard]] static std::size_t table(unsigned packed) {
        return (packed & 0x80U) != 0 ? std::size_t{3} << ((packed & 7U) + 1) : 0;
    }
    // Where the chain of sub-blocks that begins there has ended.
    [[nodiscard]] std::size_t behind_chain(std::size_t place) const {
        while (at(place) != 0) place += at(place) + 1;
        return place + 1;
    }

  private:
    std::span<const std::byte> m_bytes;
};

bool is_gif(const GifBytes& bytes) {
    return bytes.size() >= kHeader && bytes.at(0) == 'G' && bytes.at(1) == 'I' &&
           bytes.at(2) == 'F';
}

// The place of the first image's descriptor; 0 when there is none.
std::size_t first_image(const GifBytes& bytes) {
    auto place = kHeader + GifBytes::table(bytes.at(10));
    while (bytes.at(place) == 0x21) place = bytes.behind_chain(place + 2);
    return bytes.at(place) == 0x2C && place + 10 <= bytes.size() ? place : 0;
}

}  // namespace

void crop_gif_to_image(std::vector<std::byte>& bytes) {
    const GifBytes gif(bytes);
    if (!is_gif(gif)) return;
    const auto image = first_image(gif);
    if (image == 0) return;
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(image) + 5, 4, bytes.begin() + kScreen);
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(image) + 1, 4, std::byte{0});
    const auto end = gif.behind_chain(image + kDescriptor + GifBytes::table(gif.at(image + 9)));
    if (end > bytes.size()) return;  // the image is cut off
    bytes.resize(end);
    bytes.push_back(std::byte{0x3B});
}

}  // namespace tvutil2
