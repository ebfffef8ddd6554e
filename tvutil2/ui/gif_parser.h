// The blocks of a GIF file, walked without decoding a picture, and its frames cut out as files of
// their own.
//
// Source: "Graphics Interchange Format, Version 89a" (1990). Numbers are little endian. A file is
// its signature and version (6 bytes), the logical screen (7), a global colour table if there is
// one, and blocks. What is displayed in one step is a picture or a plain text, with the control
// extension before it, if there is one: here, a graphic.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <optional>
#include <span>

/// What a block is, by its first bytes.
enum GIFBlockTypes : std::uint8_t {
    BLOCK_UNKNOWN,
    BLOCK_APPEXT,
    BLOCK_COMMEXT,
    BLOCK_CONTROLEXT,
    BLOCK_PLAINTEXT,
    BLOCK_IMAGE,
    BLOCK_TRAILER,
};

namespace tvutil2 {

struct GifFrame {
    static constexpr UINT kNoDelay = 0xFFFFFFFF;
    struct Place {
        SIZE size;
        SIZE offset;  ///< left and top on the logical screen
    };

    std::span<const BYTE> front;  ///< of the whole file, up to the global colour table
    std::span<const BYTE> run;    ///< from the control extension to the end of the picture or text
    UINT delay = kNoDelay;        ///< hundredths of a second; kNoDelay without a control extension
    UINT disposal = 0;            ///< 0 to 7
    std::optional<Place> place;   ///< nothing for a plain text

    /// A GIF of this frame alone, with the whole one's logical screen: front, run, and a trailer.
    [[nodiscard]] std::size_t file_size() const { return front.size() + run.size() + 1; }
    TVUTIL_API void write_file(BYTE* to) const;
};

/// Reads nothing outside the data, whatever they are; they must outlive it. A block that would
/// leave the data ends the walk as one of an unknown kind does. For one thread at a time.
class TVUTIL_API GifParser {
  public:
    GifParser() = default;
    explicit GifParser(std::span<const BYTE> data);

    /// Whether the data begin as a GIF of one of the two versions, logical screen included.
    [[nodiscard]] bool is_gif() const { return m_is_gif; }
    /// Pixels; 0, 0 when it is no GIF.
    [[nodiscard]] SIZE screen() const;
    /// Bytes; 0 without one. The table may be longer than the data.
    [[nodiscard]] std::size_t colour_table_size() const { return m_colours; }

    /// Back to the first block.
    void rewind() { m_offset = kHeader + m_colours; }
    [[nodiscard]] std::size_t offset() const { return m_offset; }

    [[nodiscard]] GIFBlockTypes next_block() const;
    /// Bytes of the block at the offset, chain of sub-blocks included; 0 when it is unknown or
    /// leaves the data.
    [[nodiscard]] std::size_t next_block_length() const;
    /// Bytes of the chain of sub-blocks there, its ending zero included; 0 when it leaves the data.
    [[nodiscard]] std::size_t sub_blocks_length(std::size_t offset) const;
    /// False, and the offset stays, where next_block_length() is 0.
    bool skip_next_block();
    /// Goes behind the next graphic; false when there is none before the end.
    bool skip_next_graphic();
    /// The same, and gives it.
    [[nodiscard]] std::optional<GifFrame> next_graphic();

  private:
    struct Graphic {
        std::size_t start;    ///< of the control extension, if there is one
        std::size_t picture;  ///< of the picture or text
    };

    static constexpr std::size_t kHeader = 13;

    [[nodiscard]] unsigned int word(std::size_t offset) const;
    [[nodiscard]] std::size_t fixed_length() const;
    bool pass_to(bool (*is_wanted)(GIFBlockTypes));
    std::optional<Graphic> walk_graphic();

    std::span<const BYTE> m_data;
    std::size_t m_colours = 0;
    std::size_t m_offset = kHeader;
    bool m_is_gif = false;
};

}  // namespace tvutil2
