#include "tvutil2/platform/resource/own_images.h"

// The assembler puts the files in; TVUTIL2_IMAGES is the folder that the build compiled them to.
// clang-format off
#define IMAGE(symbol, file)                                       \
    asm(".pushsection .rodata.resources,\"a\",@progbits\n"        \
        ".balign 4\n"                                             \
        ".hidden tvutil2_image_" #symbol "\n"                     \
        ".hidden tvutil2_image_" #symbol "_end\n"                 \
        ".globl tvutil2_image_" #symbol "\n"                      \
        ".globl tvutil2_image_" #symbol "_end\n"                  \
        "tvutil2_image_" #symbol ":\n"                            \
        ".incbin \"" TVUTIL2_IMAGES "/" file ".res\"\n"           \
        "tvutil2_image_" #symbol "_end:\n"                        \
        ".byte 0\n"                                               \
        ".popsection\n");                                         \
    extern "C" __attribute__((visibility("hidden")))              \
    const std::byte tvutil2_image_##symbol[], tvutil2_image_##symbol##_end[]
// clang-format on

#define BYTES(symbol)                                        \
    std::span<const std::byte> {                             \
        tvutil2_image_##symbol, tvutil2_image_##symbol##_end \
    }

IMAGE(en, "en");
IMAGE(zh_cn, "zh-cn");
IMAGE(zh_tw, "zh-tw");
IMAGE(fr, "fr");
IMAGE(de, "de");
IMAGE(ja, "ja");
IMAGE(ko, "ko");
IMAGE(pt_br, "pt-br");
IMAGE(ru, "ru");
IMAGE(sk, "sk");
IMAGE(es, "es");

namespace tvutil2 {

std::span<const std::span<const std::byte>> own_images() {
    static const std::span<const std::byte> images[] = {
        BYTES(en), BYTES(zh_cn), BYTES(zh_tw), BYTES(fr), BYTES(de), BYTES(ja),
        BYTES(ko), BYTES(pt_br), BYTES(ru),    BYTES(sk), BYTES(es)};
    return images;
}

}  // namespace tvutil2
