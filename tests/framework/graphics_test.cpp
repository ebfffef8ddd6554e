#include "tvutil2/framework/graphics.h"

#include "tvutil2/framework/images.h"
#include "tvutil2/platform/draw/theme.h"

#include <gtest/gtest.h>

#include "tests/support/profile.h"

namespace {

TEST(Graphics, AMemoryContextIsComposedAndCopied) {
    CDC target;
    CDC memory;
    ASSERT_TRUE(target.CreateCompatibleDC(nullptr));
    ASSERT_TRUE(memory.CreateCompatibleDC(&target));
    CBitmap screen;
    CBitmap bitmap;
    ASSERT_TRUE(screen.CreateCompatibleBitmap(&target, 40, 30));
    ASSERT_TRUE(bitmap.CreateCompatibleBitmap(&target, 40, 30));
    EXPECT_FALSE(bitmap.CreateCompatibleBitmap(&target, 1, 1)) << "it has one";
    target.SelectObject(&screen);
    auto* const old_bitmap = memory.SelectObject(&bitmap);
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(90, u"Segoe UI"));
    auto* const old_font = memory.SelectObject(&font);
    ASSERT_NE(old_font, nullptr);
    LOGFONTW record{};
    font.GetLogFont(&record);
    EXPECT_EQ(record.lfHeight, -12);  // nine points at 96 dots an inch

    memory.SetBkColor(RGB(9, 9, 9));
    CRect all(0, 0, 40, 30);
    memory.FillSolidRect(all, RGB(255, 255, 255));
    EXPECT_EQ(memory.GetBkColor(), RGB(9, 9, 9));
    memory.Draw3dRect(all, RGB(1, 0, 0), RGB(0, 0, 1));
    memory.SetBkMode(TRANSPARENT);
    memory.SetTextColor(RGB(0xAC, 0xAC, 0xAC));
    EXPECT_GT(memory.DrawText(CString(u"..."), all, DT_CENTER | DT_VCENTER | DT_SINGLELINE), 0);
    EXPECT_EQ(memory.GetTextExtent(CString(u"")).cx, 0);
    ASSERT_TRUE(target.BitBlt(0, 0, 40, 30, &memory, 0, 0, SRCCOPY));
    EXPECT_EQ(target.GetPixel(0, 28), RGB(1, 0, 0));
    EXPECT_EQ(target.GetPixel(38, 0), RGB(1, 0, 0));
    EXPECT_EQ(target.GetPixel(39, 0), RGB(0, 0, 1));
    EXPECT_EQ(target.GetPixel(0, 29), RGB(0, 0, 1));
    bool has_text = false;
    for (int x = 1; x < 39; ++x) {
        for (int y = 1; y < 29; ++y) has_text |= target.GetPixel(x, y) != RGB(255, 255, 255);
    }
    EXPECT_TRUE(has_text);

    EXPECT_EQ(memory.SelectObject(old_bitmap)->GetSafeHandle(), bitmap.GetSafeHandle());
    EXPECT_EQ(memory.SelectObject(old_font)->GetSafeHandle(), font.GetSafeHandle());
    EXPECT_TRUE(bitmap.DeleteObject());
    CGdiObject::DeleteTempMap();
    EXPECT_EQ(memory.GetCurrentFont()->GetSafeHandle(), GetStockObject(SYSTEM_FONT));
}

TEST(Graphics, ImagesOwnWhatTheyLoad) {
    const auto host = tests::new_folder() + "/picture.png";
    ASSERT_TRUE(tvutil2::Surface::create(6, 3, 96, 0xFF00FF00)->write_png(host));
    const auto path = tests::platform_path(host);
    CImage image;
    EXPECT_EQ(image.Load((path + u".not").c_str()), E_FAIL);
    EXPECT_EQ(image.GetWidth(), 0);
    ASSERT_EQ(image.Load(path.c_str()), S_OK);
    EXPECT_EQ(image.GetWidth() * 10 + image.GetHeight(), 63);
    CPngImage png;
    EXPECT_TRUE(png.LoadFromFile(path.c_str()));
    EXPECT_FALSE(png.LoadFromFile(path.c_str()));
    EXPECT_FALSE(CPngImage().Load(4711));
    CImageList list;
    EXPECT_TRUE(list.Create(3, 3, ILC_COLOR32 | ILC_MASK, 1, 1));
    EXPECT_FALSE(list.Create(3, 3, ILC_COLOR32 | ILC_MASK, 1, 1));
    EXPECT_EQ(list.Add(&png, RGB(255, 255, 255)), 0);
    EXPECT_EQ(list.GetImageCount(), 2);
    const auto bitmap = image.Detach();
    image.Destroy();
    EXPECT_TRUE(DeleteObject(bitmap));
}

}  // namespace
