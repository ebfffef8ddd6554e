#include "tvutil2/ui/gif_parser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

// A logical screen of 10 by 258 with a global colour table of two colours.
const std::string kFront = "GIF89a\x0A\0\x02\x01\x80\0\0abcdef"s;
const std::string kControl = "\x21\xF9\x04\x0D\x05\0\x07\0"s;  // delay 5, disposal 3
const std::string kComment = "\x21\xFE\x02hi\0"s;
const std::string kApp =
    "\x21\xFF\x0B"s
    "ANIMEXTS1.0\x03\x01\0\0\0"s;
const std::string kText = "\x21\x01\x0C............\x01t\0"s;
// 3 by 4 at 1, 2, with a local colour table of two colours.
const std::string kImage = "\x2C\x01\0\x02\0\x03\0\x04\0\x80LOCALS\x02\x02zz\0"s;
const std::string kEnd = "\x3B";

tvutil2::GifParser parser_of(const std::string& data) {
    return tvutil2::GifParser(std::span(reinterpret_cast<const BYTE*>(data.data()), data.size()));
}

// The frames' runs of bytes, each with its delay and disposal; they must be what is counted.
std::string frames_of(const std::string& data) {
    auto parser = parser_of(data);
    int count = 0;
    while (parser.skip_next_graphic()) ++count;
    parser.rewind();
    std::string told;
    for (; const auto frame = parser.next_graphic(); --count) {
        std::string file(frame->file_size(), '\0');
        frame->write_file(reinterpret_cast<BYTE*>(file.data()));
        const auto front = kFront.size();
        EXPECT_EQ(file.substr(0, front), kFront);
        EXPECT_EQ(file.back(), '\x3B');
        const auto delay =
            frame->delay == tvutil2::GifFrame::kNoDelay ? "-" : std::to_string(frame->delay);
        told += '[' + file.substr(front, file.size() - front - 1) + '|' + delay + '|' +
                std::to_string(frame->disposal) + (frame->place ? "]" : "|text]");
    }
    EXPECT_EQ(count, 0);
    return told;
}

TEST(GifParser, CutsFramesOut) {
    const auto twice = kImage + "|-|0][" + kImage + "|-|0]";
    const struct {
        std::string blocks, frames;
    } cases[] = {
        {kEnd, ""},
        {"", ""},
        {kImage + kEnd, "[" + kImage + "|-|0]"},
        {kImage, "[" + kImage + "|-|0]"},  // ends with the data
        {kImage + kImage + kEnd + kImage, "[" + twice},
        {kApp + kComment + kControl + kImage + kEnd, "[" + kControl + kImage + "|5|3]"},
        // What stands between the control extension and its picture stays; the first one counts.
        {kControl + kComment + "\x21\xF9\x04\0\x09\0\0\0"s + kImage,
         "[" + kControl + kComment + "\x21\xF9\x04\0\x09\0\0\0"s + kImage + "|5|3]"},
        {kControl + kText + kText, "[" + kControl + kText + "|5|3|text][" + kText + "|-|0|text]"},
        {kControl + kEnd, ""},
        {kControl + kComment, ""},
        // An unknown block ends the walk.
        {kImage + "\x21\x02\0"s + kImage, "[" + kImage + "|-|0]"},
        {kImage + "\x21\0\0"s + kImage, "[" + kImage + "|-|0]"},
        {kImage + "?" + kImage, "[" + kImage + "|-|0]"},
    };
    for (const auto& [blocks, frames] : cases) EXPECT_EQ(frames_of(kFront + blocks), frames);
}

// Wherever the data end, what stands whole in front of the cut is found and nothing else is read:
// the memory ends there too.
TEST(GifParser, EndsAtEveryCut) {
    const auto whole = kFront + kApp + kControl + kImage + kText + kImage;
    const auto first = kFront.size() + kApp.size() + kControl.size() + kImage.size();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::vector<BYTE> data(whole.begin(), whole.begin() + static_cast<int>(size));
        tvutil2::GifParser parser(data);
        EXPECT_EQ(parser.is_gif(), size >= 13);
        int count = 0;
        while (parser.skip_next_graphic()) ++count;
        EXPECT_EQ(count, (size >= first ? 1 : 0) + (size >= first + kText.size() ? 1 : 0) +
                             (size == whole.size() ? 1 : 0))
            << size;
    }
}

TEST(GifParser, TellsTheScreenAndThePlace) {
    const auto data = kFront + kImage;
    auto parser = parser_of(data);
    EXPECT_EQ(parser.screen().cx, 10);
    EXPECT_EQ(parser.screen().cy, 258);
    EXPECT_EQ(parser.next_block(), BLOCK_IMAGE);
    EXPECT_EQ(parser.next_block_length(), kImage.size());
    const auto frame = parser.next_graphic();
    ASSERT_TRUE(frame && frame->place);
    EXPECT_EQ(frame->place->offset.cx, 1);
    EXPECT_EQ(frame->place->offset.cy, 2);
    EXPECT_EQ(frame->place->size.cx, 3);
    EXPECT_EQ(frame->place->size.cy, 4);
    for (const std::string other : {"GIF88a", "gif89a", "PNG89a"}) {
        const auto foreign = other + kFront.substr(6);
        EXPECT_FALSE(parser_of(foreign).is_gif()) << other;
    }
}

}  // namespace
