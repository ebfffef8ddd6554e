#include "tvutil2/platform/trust/trust_folder.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/registry/store_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr off_t kLargestFile = off_t{1} << 20;
constexpr std::size_t kMostFiles = 256;

bool is_certificate_name(std::string_view name) {
    constexpr std::string_view kExtensions[] = {".pem", ".crt", ".cer", ".der"};
    return std::any_of(std::begin(kExtensions), std::end(kExtensions),
                       [name](std::string_view extension) { return name.ends_with(extension); });
}

bool read_file(int folder, const std::string& name, std::string& bytes) {
    const Descriptor file(
        openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        !is_trusted_file(info) || info.st_size > kLargestFile) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(info.st_size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const auto count = read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

std::string trust_folder() {
    return machine_store() + "/trust";
}

std::vector<std::string> trusted_certificate_files() {
    std::vector<std::string> files;
    const Descriptor folder(
        open(trust_folder().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!folder || fstat(folder.get(), &info) != 0 || !is_trusted_file(info)) return files;
    std::vector<HostEntry> entries;
    list_host_folder(folder.get(), entries);
    std::sort(entries.begin(), entries.end(),
              [](const HostEntry& a, const HostEntry& b) { return a.name < b.name; });
    for (const auto& entry : entries) {
        std::string bytes;
        if (!is_certificate_name(entry.name) || !read_file(folder.get(), entry.name, bytes)) {
            continue;
        }
        files.push_back(std::move(bytes));
        if (files.size() == kMostFiles) break;
    }
    return files;
}

}  // namespace tvutil2
