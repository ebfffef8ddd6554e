// GIF data of any bytes: each frame that is cut out is a GIF with that one graphic.
#include "tvutil2/ui/gif_parser.h"

#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::make_unique<std::uint8_t[]>(size);
    if (size != 0) std::memcpy(bytes.get(), data, size);
    tvutil2::GifParser parser({bytes.get(), size});
    int count = 0;
    while (parser.skip_next_graphic()) ++count;
    parser.rewind();
    for (; const auto frame = parser.next_graphic(); --count) {
        const auto file = std::make_unique<std::uint8_t[]>(frame->file_size());
        frame->write_file(file.get());
        tvutil2::GifParser alone({file.get(), frame->file_size()});
        fuzz::require(alone.is_gif() && alone.skip_next_graphic() && !alone.skip_next_graphic());
        fuzz::require(alone.next_block() == BLOCK_TRAILER);
    }
    fuzz::require(count == 0);
    return 0;
}
