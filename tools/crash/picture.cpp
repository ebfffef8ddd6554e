#include "tools/crash/picture.h"

#include "tvutil2/platform/crash/crash_picture.h"

#include <sys/uio.h>
#include <turbojpeg.h>

#include <algorithm>
#include <fstream>
#include <memory>

namespace crash {
namespace {

using tvutil2::CrashPicture;

bool copy_from(pid_t process, std::uint64_t address, void* to, std::size_t size) {
    const iovec here{to, size};
    const iovec there{reinterpret_cast<void*>(address), size};
    return process_vm_readv(process, &here, 1, &there, 1, 0) == static_cast<ssize_t>(size);
}

std::int64_t area(const CrashPicture& picture) {
    return std::int64_t{picture.width} * picture.height;
}

// The process is a broken one.
bool is_sound(const CrashPicture& picture) {
    return picture.seal == picture.seal_of() && picture.width > 0 && picture.height > 0 &&
           picture.width <= CrashPicture::kLongest && picture.height <= CrashPicture::kLongest &&
           area(picture) <= CrashPicture::kMost;
}

}  // namespace

std::optional<Picture> picture_of(const tvutil2::CrashNote& note) {
    std::uint64_t addresses[tvutil2::kCrashPictures] = {};
    static_assert(sizeof addresses == sizeof(tvutil2::CrashPictures));
    if (note.picture_quality <= 0 ||
        !copy_from(note.process, note.pictures, addresses, sizeof addresses)) {
        return std::nullopt;
    }
    CrashPicture largest;
    for (const auto address : addresses) {
        CrashPicture found;
        if (address != 0 && copy_from(note.process, address, &found, sizeof found) &&
            is_sound(found) && area(found) > area(largest)) {
            largest = found;
        }
    }
    if (area(largest) == 0) return std::nullopt;
    Picture picture{largest.width, largest.height, {}};
    picture.pixels.resize(static_cast<std::size_t>(area(largest)));
    if (!copy_from(note.process, largest.pixels, picture.pixels.data(),
                   picture.pixels.size() * sizeof(std::uint32_t))) {
        return std::nullopt;
    }
    return picture;
}

bool write_jpeg(const Picture& picture, int quality, const std::filesystem::path& file) {
    const std::unique_ptr<void, decltype(&tjDestroy)> writer(tjInitCompress(), &tjDestroy);
    unsigned char* made = nullptr;
    unsigned long size = 0;
    const bool is_made =
        writer &&
        tjCompress2(writer.get(), reinterpret_cast<const unsigned char*>(picture.pixels.data()),
                    picture.width, 0, picture.height, TJPF_BGRX, &made, &size, TJSAMP_444,
                    std::clamp(quality, 1, 100), 0) == 0;
    const std::unique_ptr<unsigned char, decltype(&tjFree)> bytes(made, &tjFree);
    if (!is_made) return false;
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.get()), static_cast<std::streamsize>(size));
    stream.close();
    if (!stream.fail()) return true;
    std::error_code error;
    std::filesystem::remove(file, error);
    return false;
}

}  // namespace crash
