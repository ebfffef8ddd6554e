#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/decoder.h"
#include "tvutil2/platform/picture/icon_file.h"
#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/picture/ole_picture.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/profile.h"

namespace tvutil2 {
namespace {

std::string numbers(std::initializer_list<std::pair<std::uint32_t, int>> values) {
    std::string bytes;
    for (const auto& [value, size] : values) {
        for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
    }
    return bytes;
}

// A bitmap of 32 bits in one colour, as icons have it: twice its height, with a mask behind.
std::string icon_image(unsigned side, std::uint32_t pixel) {
    auto image = numbers({{40, 4},
                          {side, 4},
                          {2 * side, 4},
                          {1, 2},
                          {32, 2},
                          {0, 4},
                          {0, 4},
                          {0, 4},
                          {0, 4},
                          {0, 4},
                          {0, 4}});
    for (unsigned i = 0; i < side * side; ++i) image += numbers({{pixel, 4}});
    return image + std::string(std::size_t{side} * ((side + 31) / 32 * 4), '\0');
}

// Icons of 16, 32 and 48 pixels, red, green and blue.
std::string icon_file() {
    auto head = numbers({{0, 2}, {1, 2}, {3, 2}});
    std::string data;
    std::uint32_t color = 0xFFFF0000;
    for (const unsigned side : {16U, 32U, 48U}) {
        const auto image = icon_image(side, color);
        head += numbers({{side, 1},
                         {side, 1},
                         {0, 2},
                         {1, 2},
                         {32, 2},
                         {static_cast<std::uint32_t>(image.size()), 4},
                         {static_cast<std::uint32_t>(6 + 3 * 16 + data.size()), 4}});
        data += image;
        color = Surface::kBlack | (color & 0xFFFFFF) >> 8;
    }
    return head + data;
}

std::string gif(unsigned width, unsigned height) {
    // A screen of 9 by 7, red and blue, with one blue image of 2 by 1 at 3, 2.
    return "GIF89a" + numbers({{width, 2}, {height, 2}, {0x80, 1}, {0, 2}}) +
           std::string("\xFF\0\0\0\0\xFF", 6) + std::string("\x21\xFE\x02hi\0", 6) + "\x2C" +
           numbers({{3, 2}, {2, 2}, {2, 2}, {1, 2}, {0, 1}}) +
           std::string("\x02\x02\x4C\x0A\0;", 6);
}

std::span<const std::byte> bytes_of(const std::string& text) {
    return std::as_bytes(std::span(text));
}

HRESULT load(const std::string& data, IPicture*& picture) {
    const auto memory = GlobalAlloc(GMEM_MOVEABLE, data.size());
    if (!data.empty()) std::memcpy(GlobalLock(memory), data.data(), data.size());
    IStream* stream = nullptr;
    EXPECT_EQ(CreateStreamOnHGlobal(memory, TRUE, &stream), S_OK);
    void* loaded = nullptr;
    const auto result =
        OleLoadPicture(stream, static_cast<LONG>(data.size()), FALSE, IID_IPicture, &loaded);
    stream->Release();
    EXPECT_EQ(GlobalSize(memory), 0U) << "the stream owns it";
    picture = static_cast<IPicture*>(loaded);
    return result;
}

TEST(Icons, TheBestSizeIsTaken) {
    const auto file = icon_file();
    const struct {
        int wanted, found;
    } kCases[] = {{1, 16}, {16, 16}, {17, 32}, {32, 32}, {33, 48}, {48, 48}, {256, 48}};
    for (const auto& each : kCases) {
        EXPECT_EQ(best_icon(bytes_of(file), false, each.wanted)->width, each.found);
    }
    EXPECT_FALSE(best_icon(bytes_of(file.substr(0, 20)), false, 16).has_value());
    const auto entry = best_icon(bytes_of(file), false, 48);
    EXPECT_TRUE(icon_data(*entry, bytes_of(file.substr(0, file.size() - 1))).empty());
}

TEST(Icons, AreLoadedFromFilesAndDrawnAtAnySize) {
    const auto host = tests::new_folder() + "/three.ico";
    tests::write_file(host, icon_file());
    const auto path = tests::platform_path(host);
    const auto icon = reinterpret_cast<HICON>(
        LoadImageW(nullptr, path.c_str(), IMAGE_ICON, 0, 0, LR_LOADFROMFILE | LR_DEFAULTSIZE));
    ASSERT_NE(icon, nullptr);
    SIZE size{};
    EXPECT_EQ(icon_pixels(icon, size)->row(31)[31], 0xFF00FF00);
    const auto surface = Surface::create(64, 64);
    const auto dc = lend_dc(surface, {}, Region(surface->area()));
    EXPECT_TRUE(DrawIconEx(dc, 2, 2, icon, 60, 60, 0, nullptr, DI_NORMAL));
    EXPECT_EQ(surface->row(61)[61], 0xFF00FF00);
    EXPECT_EQ(surface->row(62)[62], Surface::kBlack);
    // Unscaled, and cut by the clip and by the edge.
    IntersectClipRect(dc, 0, 8, 64, 64);
    EXPECT_TRUE(
        DrawIconEx(dc, -30, -20, icon, 32, 32, 0, GetSysColorBrush(COLOR_WINDOW), DI_NORMAL));
    EXPECT_EQ(surface->row(8)[1], 0xFF00FF00);
    EXPECT_EQ(surface->row(7)[1], Surface::kBlack);
    EXPECT_EQ(surface->row(12)[1], Surface::kBlack);
    SelectClipRgn(dc, nullptr);
    EXPECT_TRUE(DrawIconEx(dc, 0, 0, LoadIconW(nullptr, IDI_ERROR), 0, 0, 0,
                           GetSysColorBrush(COLOR_WINDOW), DI_NORMAL));
    EXPECT_EQ(GetPixel(dc, 0, 0), GetSysColor(COLOR_WINDOW));
    EXPECT_GT(GetRValue(GetPixel(dc, 8, 16)), GetBValue(GetPixel(dc, 8, 16)));
    EXPECT_EQ(LoadIconW(nullptr, IDI_ERROR), LoadIconW(nullptr, IDI_HAND));
    EXPECT_TRUE(DestroyIcon(icon));
    EXPECT_FALSE(DrawIcon(dc, 0, 0, icon));
    EXPECT_EQ(LoadImageW(nullptr, path.c_str(), IMAGE_BITMAP, 0, 0, 0), nullptr);
    tests::write_file(host, "no icon");
    EXPECT_EQ(LoadImageW(nullptr, path.c_str(), IMAGE_ICON, 0, 0, LR_LOADFROMFILE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
    return_dc(dc);
}

TEST(ImageLists, CutStripsAndScaleIcons) {
    // Two tiles of 4 by 4: the first half white, the second half see-through.
    const auto strip = Surface::create(9, 4, 96, 0xFF102030);
    for (int x = 0; x < 8; ++x) strip->row(0)[x] = x < 4 ? 0xFFFFFFFF : 0x80402010;
    const auto path = tests::new_folder() + "/strip.png";
    ASSERT_TRUE(strip->write_png(path));
    const auto bitmap = reinterpret_cast<HBITMAP>(LoadImageW(
        nullptr, tests::platform_path(path).c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE));
    const auto list = ImageList_Create(4, 4, ILC_COLOR32 | ILC_MASK, 1, 1);
    EXPECT_EQ(ImageList_AddMasked(list, bitmap, RGB(255, 255, 255)), 0);
    EXPECT_EQ(ImageList_GetImageCount(list), 2);
    const auto larger = ImageList_Create(8, 8, ILC_COLOR32 | ILC_MASK, 1, 1);
    for (int i = 0; i < 2; ++i) {
        const auto icon = ImageList_GetIcon(list, i, 0);
        EXPECT_EQ(ImageList_ReplaceIcon(larger, -1, icon), i);
        EXPECT_TRUE(DestroyIcon(icon));
    }
    const auto surface = Surface::create(16, 8, 96, 0xFF0000FF);
    const auto dc = lend_dc(surface, {}, Region(surface->area()));
    EXPECT_TRUE(ImageList_Draw(larger, 0, dc, 0, 0, ILD_NORMAL));
    EXPECT_TRUE(ImageList_Draw(larger, 1, dc, 8, 0, ILD_NORMAL));
    EXPECT_EQ(surface->row(0)[0], 0xFF0000FF);  // white was taken away
    EXPECT_EQ(surface->row(7)[3], 0xFF102030);
    EXPECT_EQ(surface->row(0)[11], 0xFF40208FU);  // half of what is behind
    EXPECT_FALSE(ImageList_Draw(larger, 2, dc, 0, 0, ILD_NORMAL));
    EXPECT_EQ(ImageList_GetIcon(larger, -1, 0), nullptr);
    EXPECT_TRUE(ImageList_Remove(larger, 0));
    EXPECT_EQ(ImageList_GetImageCount(larger), 1);
    EXPECT_TRUE(ImageList_Destroy(list));
    EXPECT_EQ(ImageList_AddMasked(list, bitmap, 0), -1);
    ImageList_Destroy(larger);
    DeleteObject(bitmap);
    return_dc(dc);
}

TEST(Pictures, OfAGifAreItsFirstImage) {
    IPicture* picture = nullptr;
    ASSERT_EQ(load(gif(9, 7), picture), S_OK);
    LONG width = 0;
    LONG height = 0;
    picture->get_Width(&width);
    picture->get_Height(&height);
    EXPECT_EQ(MulDiv(width, 96, 2540) * 10 + MulDiv(height, 96, 2540), 21);
    const auto surface = Surface::create(8, 4);
    const auto dc = lend_dc(surface, {}, Region(surface->area()));
    EXPECT_EQ(picture->Render(dc, 2, 1, 4, 2, 0, height, width, -height, nullptr), S_OK);
    EXPECT_EQ(surface->row(2)[5], 0xFF0000FF);
    EXPECT_EQ(surface->row(2)[6], Surface::kBlack);
    EXPECT_EQ(picture->Release(), 0U);
    return_dc(dc);
}

TEST(Pictures, WhatLiesIsRefused) {
    auto huge = "BM" + numbers({{54, 4},
                                {0, 4},
                                {54, 4},
                                {40, 4},
                                {60000, 4},
                                {60000, 4},
                                {1, 2},
                                {24, 2},
                                {0, 4},
                                {0, 4},
                                {0, 4},
                                {0, 4},
                                {0, 4},
                                {0, 4}});
    const struct {
        std::string data;
        HRESULT result;
    } kCases[] = {{"", CTL_E_INVALIDPICTURE},
                  {"text that is no picture", CTL_E_INVALIDPICTURE},
                  {gif(9, 7).substr(0, 30), CTL_E_INVALIDPICTURE},
                  {gif(9, 7).substr(0, 10), CTL_E_INVALIDPICTURE},
                  {huge, E_OUTOFMEMORY}};
    for (const auto& each : kCases) {
        IPicture* picture = nullptr;
        EXPECT_EQ(load(each.data, picture), each.result) << each.data.size();
        EXPECT_EQ(picture, nullptr);
    }
    auto bytes = std::vector<std::byte>(6);
    crop_gif_to_image(bytes);  // too short to be one
}

TEST(GlobalMemory, IsFreedOnceAndKnownByItsHandle) {
    for (const auto flags : {GMEM_FIXED, GMEM_MOVEABLE}) {
        const auto memory = GlobalAlloc(flags | GMEM_ZEROINIT, 5);
        EXPECT_EQ(GlobalSize(memory), 5U);
        auto* const bytes = static_cast<char*>(GlobalLock(memory));
        ASSERT_NE(bytes, nullptr);
        EXPECT_EQ(bytes[4], 0);
        EXPECT_EQ(static_cast<void*>(bytes) == static_cast<void*>(memory), flags == GMEM_FIXED);
        EXPECT_EQ(GlobalUnlock(memory), flags == GMEM_FIXED ? TRUE : FALSE);
        EXPECT_EQ(GlobalFree(memory), nullptr);
        EXPECT_EQ(GlobalFree(memory), memory);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(GlobalLock(memory), nullptr);
    }
    EXPECT_EQ(GlobalAlloc(GMEM_FIXED, ~SIZE_T{0}), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

}  // namespace
}  // namespace tvutil2
