#include "tvutil2/platform/files/trash.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/host_trees.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace tvutil2 {
namespace {

std::string trash_folder() {
    if (const auto root = profile_root(); !root.empty()) return root + "/Trash";
    const char* data = secure_getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') return std::string(data) + "/Trash";
    return home_folder() + "/.local/share/Trash";
}

// RFC 2396, as the layout wants it: everything but unreserved characters and "/" as "%XX".
std::string escaped(const std::string& path) {
    constexpr std::string_view kPlain = "/-_.!~*'()";
    std::string text;
    for (const char c : path) {
        const bool is_alphanumeric =
            (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (is_alphanumeric || kPlain.find(c) != std::string_view::npos) {
            text += c;
        } else {
            char code[4];
            std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
            text += code;
        }
    }
    return text;
}

std::string information(const std::string& path) {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char date[64];
    std::snprintf(date, sizeof date, "%04u-%02u-%02uT%02u:%02u:%02u", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond);
    return "[Trash Info]\nPath=" + escaped(path) + "\nDeletionDate=" + date + "\n";
}

// The name, then a few with a number, then some that nobody has taken yet. Room is left for the
// suffixes in the longest name that a folder takes.
std::string candidate(std::string_view name, unsigned attempt) {
    constexpr unsigned kNumbered = 10;
    constexpr std::size_t kLongest = 220;
    std::string text(name.substr(0, kLongest));
    if (attempt == 1 && name.size() <= kLongest) return text;
    text += '.';
    if (attempt < kNumbered) return text + std::to_string(attempt);
    return text + std::to_string(std::random_device()());
}

struct TrashPlace {
    std::string file;
    std::string information;
};

// The information file comes first and reserves the name. False with errno set.
bool reserve(const std::string& path, TrashPlace& place) {
    const auto trash = trash_folder();
    if (!make_host_folders(trash + "/files", true) || !make_host_folders(trash + "/info", true)) {
        return false;
    }
    for (unsigned attempt = 1; attempt < 100; ++attempt) {
        const auto name = candidate(name_in(path), attempt);
        place.file = trash + "/files/";
        place.file += name;
        place.information = trash + "/info/";
        place.information += name;
        place.information += ".trashinfo";
        const Descriptor file(
            open(place.information.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!file) {
            if (errno == EEXIST) continue;
            return false;
        }
        const auto text = information(path);
        const auto written = write(file.get(), text.data(), text.size());
        if (written == static_cast<ssize_t>(text.size()) && access(place.file.c_str(), F_OK) != 0) {
            return true;
        }
        const int error = written < 0 ? errno : ENOSPC;
        unlink(place.information.c_str());
        if (written != static_cast<ssize_t>(text.size())) {
            errno = error;
            return false;
        }
    }
    errno = EEXIST;
    return false;
}

}  // namespace

void move_to_trash(TreeWork& work, const std::string& path) {
    TrashPlace place;
    if (!reserve(path, place)) {
        fail_with_errno();
        return work.fail();
    }
    TreeWork one([](const std::string&) { return false; });
    one.move(path, place.file);
    if (one.error() == 0) return;
    // Part of a tree may have arrived; then its information stays with it.
    if (access(place.file.c_str(), F_OK) != 0) unlink(place.information.c_str());
    SetLastError(one.error());
    work.fail();
}

}  // namespace tvutil2
