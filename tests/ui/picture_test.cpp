#include "tvutil2/ui/picture.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>

#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

using namespace std::string_literals;

constexpr int kRow = 20;  // pixels of the screen
const std::string kEnd = ";";
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

std::string word(unsigned value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

// A screen with a table of red, blue, green and white.
std::string front(unsigned width = kRow, unsigned height = 2) {
    return "GIF89a" + word(width) + word(height) + "\x81\0\0"s +
           "\xFF\0\0\0\0\xFF\0\xFF\0\xFF\xFF\xFF"s;
}

std::string control(unsigned delay, unsigned disposal) {
    return "\x21\xF9\x04"s + static_cast<char>(disposal << 2) + word(delay) + "\0\0"s;
}

// One colour, coded so that the table of codes never grows: it is cleared behind two pixels.
std::string image(unsigned left, unsigned width, unsigned color, unsigned height = 2) {
    std::string data;
    unsigned bits = 0;
    unsigned count = 0;
    const auto put = [&](unsigned code) {
        bits |= code << count;
        for (count += 3; count >= 8; count -= 8, bits >>= 8) data += static_cast<char>(bits);
    };
    for (unsigned i = 0; i < width * height; ++i) {
        if (i % 2 == 0) put(4);
        put(color);
    }
    put(5);
    if (count != 0) data += static_cast<char>(bits);
    auto block = "\x2C" + word(left) + word(0) + word(width) + word(height) + "\0\x02"s;
    for (std::size_t at = 0; at < data.size(); at += 255) {
        const auto piece = data.substr(at, 255);
        block += static_cast<char>(piece.size()) + piece;
    }
    return block + '\0';
}

// The size of codes that it names doesn't exist.
std::string bad_image() {
    auto block = image(0, 2, 0);
    block[10] = '\x0F';
    return block;
}

const std::string kTwoFrames =
    front() + control(5, 0) + image(0, 4, 0) + control(5, 0) + image(8, 4, 1) + kEnd;

class Picture : public CPictureEx {
  public:
    std::function<void()> on_paint = [] {};

    BOOL load(const std::string& data) {
        auto* const memory = GlobalAlloc(GMEM_MOVEABLE, data.size());
        if (!data.empty()) std::memcpy(GlobalLock(memory), data.data(), data.size());
        const auto loaded = Load(memory, static_cast<DWORD>(data.size()));
        EXPECT_TRUE(data.empty() || !GlobalUnlock(memory)) << "nobody else has it locked";
        EXPECT_EQ(GlobalFree(memory), nullptr);
        return loaded;
    }

  protected:
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        const auto result = CPictureEx::WindowProc(message, wparam, lparam);
        if (message == WM_PAINT) on_paint();
        return result;
    }
};

class Pictures : public testing::Test {
  protected:
    Pictures() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        m_parent.CreateEx(0, nullptr, u"pictures", WS_POPUP | WS_VISIBLE, {0, 0, 60, 40}, nullptr,
                          0);
        create();
    }
    void create() { m_picture.Create(u"", WS_VISIBLE, {3, 4, 5, 6}, &m_parent, 100); }

    std::uint32_t pixel(int x, int y = 1) {
        return tvutil2::picture_of(m_parent)->row(4 + y)[3 + x];
    }
    std::uint32_t background() {
        const auto color = m_picture.GetBkColor();
        return 0xFF000000U | static_cast<std::uint32_t>(GetRValue(color)) << 16 |
               static_cast<std::uint32_t>(GetGValue(color)) << 8 | GetBValue(color);
    }
    // Handles messages until the picture is as wanted; hangs when it never is.
    void paint_until(const std::function<bool()>& is_as_wanted) {
        MSG message;
        while (!is_as_wanted()) {
            GetMessageW(&message, nullptr, 0, 0);
            DispatchMessageW(&message);
        }
    }

    CWnd m_parent;
    Picture m_picture;
};

TEST_F(Pictures, FramesAreDisposedOfAsTheyAsk) {
    // All red, a blue pixel in each way, and green that rests.
    auto gif = front() + control(5, 0) + image(0, kRow, 0);
    for (unsigned disposal = 0; disposal < 8; ++disposal) {
        gif += control(5, disposal) + image(2 * disposal, 1, 1);
    }
    ASSERT_TRUE(m_picture.load(gif + image(18, 2, 2) + kEnd));
    EXPECT_EQ(m_picture.GetFrameCount(), 10);
    EXPECT_EQ(m_picture.GetSize().cx, kRow);
    RECT client{};
    GetClientRect(m_picture, &client);
    EXPECT_EQ(client.right * 10 + client.bottom, kRow * 10 + 2);
    m_picture.SetBkColor(RGB(0x11, 0x22, 0x33));
    EXPECT_EQ(m_picture.Draw(), FALSE);
    EXPECT_TRUE(m_picture.IsPlaying());
    paint_until([&] { return pixel(19) == 0xFF00FF00; });
    for (int disposal = 0; disposal < 8; ++disposal) {
        const auto wanted = disposal == 2 ? background() : disposal == 3 ? kRed : kBlue;
        EXPECT_EQ(pixel(2 * disposal), wanted) << disposal;
        EXPECT_EQ(pixel(2 * disposal + 1), kRed);
    }
    // A part is shown at the corner; a width of none is all.
    const RECT part{18, 0, 20, 2};
    m_picture.SetPaintRect(&part);
    InvalidateRect(m_picture, nullptr, FALSE);
    EXPECT_EQ(pixel(0), 0xFF00FF00);
    m_picture.Stop();
    EXPECT_FALSE(m_picture.IsPlaying());
    EXPECT_EQ(m_picture.GetFrameCount(), 10);
}

TEST_F(Pictures, PlayAgainFromABlankPictureAndGoOnAfterAStop) {
    ASSERT_TRUE(m_picture.load(kTwoFrames));
    m_picture.Draw();
    m_picture.Draw();  // goes on
    paint_until([&] { return pixel(9) == kBlue; });
    paint_until([&] { return pixel(9) == background() && pixel(1) == kRed; });
    m_picture.Stop();
    paint_until([&] { return !m_picture.Draw() && m_picture.IsPlaying() && pixel(9) == kBlue; });
    // What a handler does is done.
    int turns = 0;
    m_picture.on_paint = [&] {
        m_picture.Stop();
        if (++turns < 5) m_picture.Draw();
        if (turns == 5) m_picture.UnLoad();
    };
    paint_until([&] { return turns >= 5; });
    EXPECT_EQ(m_picture.GetFrameCount(), 0);
    EXPECT_EQ(m_picture.GetSize().cx, kRow);
    EXPECT_EQ(m_picture.GetBkColor(), RGB(255, 255, 255));
}

TEST_F(Pictures, AreHandledInAnyOrder) {
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i) {
        switch (random() % 7) {
            case 0:
                EXPECT_TRUE(m_picture.load(kTwoFrames));
                break;
            case 1:
                m_picture.UnLoad();
                break;
            case 2:
                m_picture.Stop();
                break;
            case 3:
                m_picture.SetBkColor(random() & 0xFFFFFF);
                break;
            case 4:
                if (random() % 4 == 0) {
                    m_picture.DestroyWindow();
                    EXPECT_FALSE(m_picture.IsPlaying());
                    create();
                }
                break;
            default:
                m_picture.Draw();
                UpdateWindow(m_picture);
        }
    }
    m_picture.Stop();
    // Threads come and go with playing.
    EXPECT_LE(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}), 3);
}

TEST_F(Pictures, FramesOfGifsCountAsTheyDecode) {
    const auto frame = control(5, 0) + image(0, 4, 1);
    const struct {
        std::string data;
        bool is_loaded, is_gif;
        int frames;
    } kCases[] = {
        {kTwoFrames, true, true, 2},
        {front() + frame + frame, true, true, 2},  // ends with the data
        {front() + frame + kEnd, true, true, 0},   // a still one
        {front() + frame + frame.substr(0, 20), true, true, 0},
        {front() + kEnd, false, true, 0},
        {front() + frame + bad_image() + kEnd, true, true, 0},
        {front() + bad_image() + bad_image() + kEnd, false, true, 0},
        {front() + frame + "\x21\x01\x0C............\x01t\0"s + frame + kEnd, true, true, 2},
        {front(65535, 65535) + frame + kEnd, false, true, 0},
        {front(65535, 65535) + frame + frame + kEnd, false, true, 2},
        {front().substr(0, 12), false, false, 0},
        {"", false, false, 0},
        {"no picture at all", false, false, 0},
    };
    for (const auto& each : kCases) {
        EXPECT_EQ(m_picture.load(each.data), each.is_loaded ? TRUE : FALSE) << each.data.size();
        EXPECT_EQ(m_picture.IsGIF(), each.is_gif ? TRUE : FALSE);
        EXPECT_EQ(m_picture.GetFrameCount(), each.frames) << each.data.size();
        EXPECT_EQ(m_picture.IsAnimatedGIF(), each.frames > 1 ? TRUE : FALSE);
        m_picture.Draw();
    }
    // Frames that say they are huge take no more memory than is allowed, and little time.
    auto bomb = front() + frame;
    auto huge = image(0, 4, 1);
    huge.replace(5, 4, word(16384) + word(16384));
    for (int i = 0; i < 10000; ++i) bomb += huge;
    m_picture.load(bomb);
    EXPECT_LE(m_picture.GetFrameCount(), 2);
    for (std::size_t size = 0; size < kTwoFrames.size(); ++size) {
        m_picture.load(kTwoFrames.substr(0, size));
        m_picture.Draw();
    }
}

TEST_F(Pictures, OfOtherFormatsAreStills) {
    const auto host = tests::new_folder() + "/still.png";
    ASSERT_TRUE(tvutil2::Surface::create(5, 3, 96, 0xFF123456)->write_png(host));
    const auto path = tests::platform_path(host);
    m_picture.SetBkColor(RGB(1, 2, 3));
    EXPECT_EQ(m_picture.GetBkColor(), RGB(255, 255, 255));
    EXPECT_FALSE(m_picture.Draw());
    ASSERT_TRUE(m_picture.Load(path.c_str()));
    EXPECT_FALSE(m_picture.IsGIF());
    EXPECT_EQ(m_picture.GetSize().cx * 10 + m_picture.GetSize().cy, 53);
    EXPECT_NE(pixel(4, 2), 0xFF123456U) << "before it is drawn";
    EXPECT_TRUE(m_picture.Draw());
    EXPECT_EQ(pixel(4, 2), 0xFF123456U);
    // A file or a resource that isn't there leaves what is.
    EXPECT_FALSE(m_picture.Load((path + u".not").c_str()));
    static tests::ResourceImage resources;  // they are read where they are
    resources.add(u"GIF", u"TURNING", 0, kTwoFrames);
    tvutil2::add_module_resources(nullptr, resources.bytes().data(), resources.bytes().size());
    AfxSetResourceHandle(GetModuleHandleW(nullptr));
    EXPECT_FALSE(m_picture.Load(u"NONE", u"GIF"));
    EXPECT_TRUE(m_picture.Draw());
    EXPECT_TRUE(m_picture.Load(u"TURNING", u"GIF"));
    EXPECT_TRUE(m_picture.IsAnimatedGIF());
    tests::write_file(host, "");
    EXPECT_FALSE(m_picture.Load(path.c_str()));
    tests::write_file(host, "other");
    EXPECT_FALSE(m_picture.Load(path.c_str()));
    EXPECT_FALSE(m_picture.Draw());
    EXPECT_FALSE(m_picture.Load(static_cast<HGLOBAL>(nullptr), 5));
}

}  // namespace
