// The picture of a crashed program's main window.
#pragma once

#include "tvutil2/platform/crash/crash_note.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace crash {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  ///< 0xAARRGGBB
};

/// The largest picture that the process has named (crash_picture.h). Its threads are stopped
/// meanwhile: nothing else than what it names may be read. Nothing when there is none, or none is
/// wanted.
[[nodiscard]] std::optional<Picture> picture_of(const tvutil2::CrashNote& note);

/// False, and nothing is left, when it can't be written.
[[nodiscard]] bool write_jpeg(const Picture& picture, int quality,
                              const std::filesystem::path& file);

}  // namespace crash
