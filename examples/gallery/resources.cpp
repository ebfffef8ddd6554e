#include "examples/gallery/resources.h"

#include "tvutil2/platform/resource/resource.h"

#include <cstddef>

// clang-format off
asm(".pushsection .rodata.gallery,\"a\",@progbits\n"
    ".balign 4\n"
    ".hidden gallery_image\n.globl gallery_image\n"
    ".hidden gallery_image_end\n.globl gallery_image_end\n"
    "gallery_image:\n.incbin \"" GALLERY_IMAGE "\"\n"
    "gallery_image_end:\n.byte 0\n"
    ".popsection\n");
// clang-format on
extern "C" __attribute__((visibility("hidden"))) const std::byte gallery_image[],
    gallery_image_end[];

bool gallery::add_resources() {
    return tvutil2::add_module_resources(
        nullptr, gallery_image, static_cast<std::size_t>(gallery_image_end - gallery_image));
}
