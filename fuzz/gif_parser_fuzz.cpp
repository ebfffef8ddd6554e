// GIF data of any bytes: each frame that is cut out is a GIF with that one graphic, and where
// giflib finds well-formed blocks up to the trailer, it finds the same number of pictures.
#include "tvutil2/ui/gif_parser.h"

#include <gif_lib.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "fuzz/fuzz_input.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

int read_bytes(GifFileType* file, GifByteType* to, int size) {
    auto& rest = *static_cast<Bytes*>(file->UserData);
    const auto count = std::min(rest.size(), static_cast<std::size_t>(size));
    std::copy_n(rest.begin(), count, to);
    rest = rest.subspan(count);
    return static_cast<int>(count);
}

// An extension of a kind and of the length that its kind has; plain texts aren't counted on.
bool pass_extension(GifFileType* file) {
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(file, &code, &block) == GIF_ERROR) return false;
    const int first = block != nullptr ? block[0] : 0;
    int more = 0;
    while (block != nullptr) {
        if (DGifGetExtensionNext(file, &block) == GIF_ERROR) return false;
        if (block != nullptr) ++more;
    }
    switch (code) {
        case GRAPHICS_EXT_FUNC_CODE:
            return first == 4 && more == 0;
        case APPLICATION_EXT_FUNC_CODE:
            return first == 11;
        default:
            return code == COMMENT_EXT_FUNC_CODE;
    }
}

bool pass_picture(GifFileType* file) {
    int code_size = 0;
    GifByteType* block = nullptr;
    if (DGifGetImageDesc(file) == GIF_ERROR) return false;
    if (DGifGetCode(file, &code_size, &block) == GIF_ERROR) return false;
    while (block != nullptr) {
        if (DGifGetCodeNext(file, &block) == GIF_ERROR) return false;
    }
    return true;
}

// How many pictures giflib passes before the trailer; nothing when it takes offence.
std::optional<int> pictures_of(Bytes bytes) {
    int error = 0;
    auto* const file = DGifOpen(&bytes, &read_bytes, &error);
    if (file == nullptr) return std::nullopt;
    int count = 0;
    bool is_well = true;
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    while (is_well && type != TERMINATE_RECORD_TYPE) {
        is_well = DGifGetRecordType(file, &type) != GIF_ERROR;
        if (!is_well) break;
        if (type == EXTENSION_RECORD_TYPE) is_well = pass_extension(file);
        if (type == IMAGE_DESC_RECORD_TYPE) is_well = pass_picture(file) && ++count != 0;
    }
    DGifCloseFile(file, &error);
    return is_well ? std::optional(count) : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::make_unique<std::uint8_t[]>(size);
    if (size != 0) std::memcpy(bytes.get(), data, size);
    tvutil2::GifParser parser({bytes.get(), size});
    int count = 0;
    while (parser.skip_next_graphic()) ++count;
    if (parser.is_gif()) {
        const auto told = pictures_of({bytes.get(), size});
        fuzz::require(!told || *told == count);
    }
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
