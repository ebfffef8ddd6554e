#include "tvutil2/platform/base/global_memory.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "examples/gallery/pages.h"

namespace gallery {
namespace {

constexpr int kSize = 64;
constexpr double kMiddle = kSize / 2.0;
constexpr int kDots = 12;

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::initializer_list<int> values) {
    for (const int value : values) bytes.push_back(static_cast<std::uint8_t>(value));
}

// Codes of three bits: a clearing one behind every second pixel keeps them at that.
Bytes packed(const Bytes& pixels) {
    Bytes bytes;
    unsigned int waiting = 0;
    int bits = 0;
    const auto put = [&](unsigned int code) {
        waiting |= code << bits;
        for (bits += 3; bits >= 8; bits -= 8, waiting >>= 8) {
            bytes.push_back(static_cast<std::uint8_t>(waiting));
        }
    };
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i % 2 == 0) put(4);
        put(pixels[i]);
    }
    put(5);
    bytes.push_back(static_cast<std::uint8_t>(waiting));
    return bytes;
}

// Dots on a circle, of which one is dark, and those behind it ever lighter.
Bytes frame(int turn) {
    Bytes pixels(std::size_t{kSize} * kSize, 0);
    for (int dot = 0; dot < kDots; ++dot) {
        const auto angle = 2 * std::numbers::pi * dot / kDots;
        const auto x = kMiddle + 24 * std::sin(angle);
        const auto y = kMiddle - 24 * std::cos(angle);
        const auto behind = (turn - dot + kDots) % kDots;
        for (int i = 0; i < kSize * kSize; ++i) {
            const int row = i / kSize;
            if (std::hypot(i % kSize + 0.5 - x, row + 0.5 - y) > 5) continue;
            pixels[static_cast<std::size_t>(i)] =
                static_cast<std::uint8_t>(std::max(3 - behind / 2, 1));
        }
    }
    return pixels;
}

void append_frame(Bytes& gif, int turn) {
    // Shown for 80 ms, then taken back to the background; colour 0 is transparent.
    append(gif, {0x21, 0xF9, 4, 0x09, 8, 0, 0, 0});
    append(gif, {0x2C, 0, 0, 0, 0, kSize, 0, kSize, 0, 0, 2});
    const auto bytes = packed(frame(turn));
    for (std::size_t at = 0; at < bytes.size(); at += 255) {
        const auto count = std::min<std::size_t>(bytes.size() - at, 255);
        gif.push_back(static_cast<std::uint8_t>(count));
        gif.insert(gif.end(), bytes.data() + at, bytes.data() + at + count);
    }
    gif.push_back(0);
}

Bytes turning_dots() {
    Bytes gif{'G', 'I', 'F', '8', '9', 'a'};
    append(gif, {kSize, 0, kSize, 0, 0x91, 0, 0});
    append(gif, {0, 0, 0, 0xC4, 0xD7, 0xF2, 0x7A, 0xA7, 0xE6, 0x1A, 0x5F, 0xB4});
    append(gif, {0x21, 0xFF, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0'});
    append(gif, {3, 1, 0, 0, 0});
    for (int turn = 0; turn < kDots; ++turn) append_frame(gif, turn);
    gif.push_back(0x3B);
    return gif;
}

class Animation : public CDialog {
  public:
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        m_picture.SubclassDlgItem(10, this);
        const auto gif = turning_dots();
        auto* const block = GlobalAlloc(GMEM_MOVEABLE, gif.size());
        std::copy(gif.begin(), gif.end(), static_cast<std::uint8_t*>(GlobalLock(block)));
        GlobalUnlock(block);
        if (m_picture.Load(block, static_cast<DWORD>(gif.size()))) m_picture.Draw();
        GlobalFree(block);
        return TRUE;
    }

  protected:
    void play() { m_picture.Draw(); }
    void stop() { m_picture.Stop(); }
    DECLARE_MESSAGE_MAP()

  private:
    CPictureEx m_picture;
};

BEGIN_MESSAGE_MAP(Animation, CDialog)
ON_BN_CLICKED(11, &Animation::play)
ON_BN_CLICKED(12, &Animation::stop)
END_MESSAGE_MAP()

}  // namespace

std::unique_ptr<CDialog> make_animation() {
    return std::make_unique<Animation>();
}

}  // namespace gallery
