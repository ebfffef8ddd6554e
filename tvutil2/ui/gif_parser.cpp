#include "tvutil2/ui/gif_parser.h"

#include <algorithm>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr std::size_t kScreenPlace = 6;
constexpr std::size_t kPackedPlace = 10;

// Of a block of each kind, in front of its chain of sub-blocks.
constexpr std::size_t kAppExtension = 14;
constexpr std::size_t kComment = 2;
constexpr std::size_t kControl = 8;
constexpr std::size_t kPlainText = 15;
constexpr std::size_t kImage = 11;

constexpr std::size_t kControlPacked = 3;
constexpr std::size_t kControlDelay = 4;
constexpr std::size_t kImagePacked = 9;

std::size_t colour_table_size_of(BYTE packed) {
    return (packed & 0x80U) != 0 ? std::size_t{3} << ((packed & 7U) + 1) : 0;
}

bool is_picture(GIFBlockTypes block) {
    return block == BLOCK_IMAGE || block == BLOCK_PLAINTEXT;
}

bool is_of_graphic(GIFBlockTypes block) {
    return is_picture(block) || block == BLOCK_CONTROLEXT;
}

}  // namespace

void GifFrame::write_file(BYTE* to) const {
    to = std::ranges::copy(front, to).out;
    to = std::ranges::copy(run, to).out;
    *to = 0x3B;
}

GifParser::GifParser(std::span<const BYTE> data) : m_data(data) {
    if (data.size() < kHeader) return;
    const std::string_view start(reinterpret_cast<const char*>(data.data()), kScreenPlace);
    m_is_gif = start == "GIF87a" || start == "GIF89a";
    if (m_is_gif) m_colours = colour_table_size_of(data[kPackedPlace]);
    rewind();
}

SIZE GifParser::screen() const {
    if (!m_is_gif) return {0, 0};
    return {static_cast<LONG>(word(kScreenPlace)), static_cast<LONG>(word(kScreenPlace + 2))};
}

unsigned int GifParser::word(std::size_t offset) const {
    return m_data[offset] | static_cast<unsigned int>(m_data[offset + 1]) << 8U;
}

GIFBlockTypes GifParser::next_block() const {
    if (!m_is_gif || m_offset >= m_data.size()) return BLOCK_UNKNOWN;
    const auto first = m_data[m_offset];
    if (first == 0x2C) return BLOCK_IMAGE;
    if (first == 0x3B) return BLOCK_TRAILER;
    if (first != 0x21 || m_offset + 1 >= m_data.size()) return BLOCK_UNKNOWN;
    switch (m_data[m_offset + 1]) {
        case 0xFF:
            return BLOCK_APPEXT;
        case 0xFE:
            return BLOCK_COMMEXT;
        case 0xF9:
            return BLOCK_CONTROLEXT;
        case 0x01:
            return BLOCK_PLAINTEXT;
        default:
            return BLOCK_UNKNOWN;
    }
}

// Of the block at the offset without its chain; an image's may end behind the data.
std::size_t GifParser::fixed_length() const {
    switch (next_block()) {
        case BLOCK_APPEXT:
            return kAppExtension;
        case BLOCK_COMMEXT:
            return kComment;
        case BLOCK_CONTROLEXT:
            return kControl;
        case BLOCK_PLAINTEXT:
            return kPlainText;
        case BLOCK_IMAGE:
            if (m_data.size() - m_offset < kImage) return kImage;
            return kImage + colour_table_size_of(m_data[m_offset + kImagePacked]);
        case BLOCK_TRAILER:
            return 1;
        default:
            return 0;
    }
}

std::size_t GifParser::next_block_length() const {
    const auto block = next_block();
    const auto fixed = fixed_length();
    if (fixed == 0 || fixed > m_data.size() - m_offset) return 0;
    if (block == BLOCK_CONTROLEXT || block == BLOCK_TRAILER) return fixed;
    const auto chain = sub_blocks_length(m_offset + fixed);
    return chain == 0 ? 0 : fixed + chain;
}

std::size_t GifParser::sub_blocks_length(std::size_t offset) const {
    for (auto at = offset; at < m_data.size(); at += 1 + std::size_t{m_data[at]}) {
        if (m_data[at] == 0) return at + 1 - offset;
    }
    return 0;
}

bool GifParser::skip_next_block() {
    const auto length = next_block_length();
    m_offset += length;
    return length != 0;
}

bool GifParser::pass_to(bool (*is_wanted)(GIFBlockTypes)) {
    for (;;) {
        const auto block = next_block();
        if (is_wanted(block)) return true;
        if (block == BLOCK_TRAILER || !skip_next_block()) return false;
    }
}

std::optional<GifParser::Graphic> GifParser::walk_graphic() {
    if (!pass_to(is_of_graphic)) return std::nullopt;
    Graphic graphic{m_offset, m_offset};
    if (next_block() == BLOCK_CONTROLEXT) {
        if (!skip_next_block() || !pass_to(is_picture)) return std::nullopt;
        graphic.picture = m_offset;
    }
    if (!skip_next_block()) return std::nullopt;
    return graphic;
}

bool GifParser::skip_next_graphic() {
    return walk_graphic().has_value();
}

std::optional<GifFrame> GifParser::next_graphic() {
    const auto graphic = walk_graphic();
    if (!graphic) return std::nullopt;
    GifFrame frame;
    const auto start = graphic->start;
    const auto picture = graphic->picture;
    if (start != picture) {  // a control extension
        frame.delay = word(start + kControlDelay);
        frame.disposal = m_data[start + kControlPacked] >> 2U & 7U;
    }
    if (m_data[picture] == 0x2C) {
        const auto number = [&](std::size_t place) {
            return static_cast<LONG>(word(picture + place));
        };
        frame.place = {.size = {number(5), number(7)}, .offset = {number(1), number(3)}};
    }
    frame.front = m_data.first(kHeader + m_colours);
    frame.run = m_data.subspan(start, m_offset - start);
    return frame;
}

}  // namespace tvutil2
