#include "tvutil2/framework/app.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/ui/image_lists.h"
#include "tvutil2/ui/messages.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>

#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

using tvutil2::Surface;

// What a list's picture has at a place; the icons have their own transparency.
std::uint32_t pixel(CImageList& list, int index, int x, int y) {
    auto* const icon = list.ExtractIcon(index);
    SIZE size{};
    const auto pixels = tvutil2::icon_pixels(icon, size);
    DestroyIcon(icon);
    return pixels ? pixels->row(y)[x] : 0xDEAD;
}

TEST(ImageListFiles, StripsAreCutAndScaled) {
    // Three tiles of 4 by 4 and something left over: red, white with a blue edge, half see-through.
    const auto strip = Surface::create(14, 4, 96, 0xFFFFFFFF);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            strip->row(y)[x] = 0xFFFF0000;
            strip->row(y)[8 + x] = 0x80008000;
        }
        strip->row(y)[4] = 0xFF0000FF;
    }
    const auto host = tests::new_folder() + "/strip.png";
    ASSERT_TRUE(strip->write_png(host));
    std::ifstream in(host, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    static tests::ResourceImage resources;  // they are read where they are
    resources.add(u"PNG", u"#4711", 0, bytes);
    resources.add(u"PNG", u"#4712", 0, bytes.substr(0, bytes.size() / 2));
    tvutil2::add_module_resources(nullptr, resources.bytes().data(), resources.bytes().size());
    AfxSetResourceHandle(GetModuleHandleW(nullptr));
    const struct {
        int id, cx, cy, cx_source, cy_source, count;
    } kCases[] = {{4711, 4, 4, 4, 4, 3},  {4711, 8, 8, 4, 4, 3},  {4711, 7, 2, 4, 4, 3},
                  {4711, 4, 4, 14, 4, 1}, {4711, 4, 4, 15, 4, 0}, {4711, 0, 4, 4, 4, 0},
                  {4711, 4, 4, 0, -1, 0}, {4712, 4, 4, 4, 4, 0},  {4713, 4, 4, 4, 4, 0}};
    for (const auto& each : kCases) {
        CImageList list;
        EXPECT_EQ(
            TvLoadPngImageEx(&list, each.cx, each.cy, each.id, each.cx_source, each.cy_source),
            each.count);
        EXPECT_EQ(list.GetImageCount(), each.count);
        EXPECT_EQ(list.GetSafeHandle() != nullptr, each.cx > 0) << "made, and perhaps empty";
    }
    CImageList list;
    ASSERT_EQ(TvLoadPngImage(&list, 16, 4711, 4), 3);
    EXPECT_EQ(pixel(list, 0, 0, 0), 0xFFFF0000U) << "edges don't fade";
    EXPECT_EQ(pixel(list, 0, 15, 15), 0xFFFF0000U);
    EXPECT_EQ(pixel(list, 1, 0, 8), 0xFF0000FFU);
    EXPECT_EQ(pixel(list, 1, 15, 8), 0U) << "white is taken away";
    EXPECT_EQ(pixel(list, 2, 8, 8), 0x80008000U);
    EXPECT_EQ(TvLoadPngImage(&list, 16, 4711, 4), 0) << "the list is there already";
}

TEST(ImageListFiles, FilesGiveOnePicture) {
    const auto folder = tests::new_folder();
    const auto picture = Surface::create(6, 3, 96, 0xFF00FF00);
    ASSERT_TRUE(picture->write_png(folder + "/wide.png"));
    ASSERT_TRUE(picture->write_png(folder + "/named.ICO"));
    ASSERT_TRUE(picture->write_png(folder + "/named.ico"));
    const struct {
        const char* name;
        bool is_loaded, is_made;
    } kCases[] = {{"/wide.png", true, true},
                  {"/named.ICO", true, true},  // not by that name an icon
                  {"/named.ico", false, true},
                  {"/none.png", false, false},
                  {"", false, true}};  // the folder
    for (const auto& each : kCases) {
        CImageList list;
        const auto path = tests::platform_path(folder + each.name);
        EXPECT_EQ(TvLoadFileImage(&list, 12, path.c_str()), each.is_loaded ? TRUE : FALSE);
        EXPECT_EQ(list.GetSafeHandle() != nullptr, each.is_made) << each.name;
        EXPECT_EQ(list.GetImageCount(), each.is_loaded ? 1 : 0);
        if (!each.is_loaded) continue;
        EXPECT_EQ(pixel(list, 0, 11, 1), 0xFF00FF00U);
        EXPECT_EQ(pixel(list, 0, 5, 11), 0U) << "below the picture";
    }
    CImageList list;
    EXPECT_FALSE(TvLoadFileImage(&list, 12, nullptr));
}

TEST(Messages, SayWhatIsWrong) {
    const struct {
        std::function<void()> show;
        std::string text;  // a part; "-" for no message
    } kCases[] = {
        {[] { ShowErrorMessage(u"", 0); }, "-"},
        {[] { ShowErrorMessage(u"Can't save", 0); }, "Can't save"},
        {[] { ShowErrorMessage(u"Can't save", 2); }, "Can't save : The file is not there"},
        {[] { ShowErrorMessage(u"", 2); }, "The file is not there"},
        {[] { ShowErrorMessage(u"Can't save", 0x7654321); }, "Can't save"},
        {[] { ShowEnterIntegerMessage(); }, "Enter an integer."},
        {[] { ShowInvalidIntRangeMessage(5, 1, 10); }, "Enter an integer between 1 and 10."},
        {[] { ShowEnterUIntMessage(); }, "Please enter a positive integer."},
        {[] { ShowInvalidFileNameMessage(); }, "\\ / : * ? \" < > |"},
        {[] { ShowInvalidFileNameMessage(nullptr); }, "-"},
    };
    setenv("TVUTIL_DISPLAY", "none", 1);
    setsid();  // nor a terminal
    for (const auto& each : kCases) {
        testing::internal::CaptureStderr();
        each.show();
        const auto told = testing::internal::GetCapturedStderr();
        if (each.text == "-") {
            EXPECT_EQ(told, "");
        } else {
            EXPECT_NE(told.find(each.text), std::string::npos) << told;
        }
    }
}

}  // namespace
