#include "tvutil2/platform/objects/shared/holders.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/runtime_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tvutil2 {
namespace {

// What stands in front of each name in a file.
struct Record {
    DWORD units;
    std::int32_t process;
    std::int32_t descriptor;
    std::int32_t file_descriptor;
    std::uint64_t inode;
};

constexpr DWORD kMaxUnits = 1024;
constexpr std::size_t kMaxFile = std::size_t{1} << 20;
// A page: the host writes that much, or nothing, before it looks whether the process is to die.
constexpr std::size_t kOneWrite = 4096;

// FNV-1a. Names that meet share a file.
std::string hash_of(const std::u16string& name) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const auto unit : name) {
        for (const unsigned byte : {unit & 0xFFU, unsigned{unit} >> 8U}) {
            hash = (hash ^ byte) * 0x100000001B3;
        }
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::string read_whole(int folder, const std::string& name) {
    const Descriptor file(
        openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    std::string bytes;
    char block[4096];
    for (ssize_t got = 0;
         bytes.size() < kMaxFile && (got = read(file.get(), block, sizeof block)) > 0;) {
        bytes.append(block, static_cast<std::size_t>(got));
    }
    return bytes;
}

// A lock that is gone with its process, and that a child doesn't inherit.
Descriptor open_locked(int folder) {
    Descriptor file(openat(folder, "lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    while (!file || fcntl(file.get(), F_SETLKW, &lock) != 0) {
        if (file && errno == EINTR) continue;
        fail_with_errno();
        return {};
    }
    return file;
}

}  // namespace

std::vector<Holder> parse_holders(std::string_view bytes) {
    std::vector<Holder> holders;
    Record record{};
    while (bytes.size() >= sizeof record) {
        std::memcpy(&record, bytes.data(), sizeof record);
        bytes.remove_prefix(sizeof record);
        if (record.units > kMaxUnits || bytes.size() < record.units * sizeof(char16_t)) break;
        std::u16string name(record.units, 0);
        std::memcpy(name.data(), bytes.data(), record.units * sizeof(char16_t));
        bytes.remove_prefix(record.units * sizeof(char16_t));
        if (record.process <= 0 || record.descriptor < 0) continue;
        holders.push_back({std::move(name), record.process, record.descriptor,
                           record.file_descriptor, record.inode});
    }
    return holders;
}

std::string format_holders(const std::vector<Holder>& holders) {
    std::string bytes;
    for (const auto& holder : holders) {
        const Record record{static_cast<DWORD>(holder.name.size()), holder.process,
                            holder.descriptor, holder.file_descriptor, holder.inode};
        bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        bytes.append(reinterpret_cast<const char*>(holder.name.data()),
                     holder.name.size() * sizeof(char16_t));
    }
    return bytes;
}

HolderFile::HolderFile(const std::u16string& name)
    : m_folder(open_runtime_folder("objects", false)), m_name(hash_of(name)) {
    if (!m_folder) {
        fail_with_errno();
        return;
    }
    m_lock = open_locked(m_folder.get());
    if (!m_lock) return;
    const auto bytes = read_whole(m_folder.get(), m_name);
    m_size = bytes.size();
    m_holders = parse_holders(bytes);
}

bool HolderFile::save() {
    if (m_holders.empty()) {
        return unlinkat(m_folder.get(), m_name.c_str(), 0) == 0 || errno == ENOENT ||
               fail_with_errno();
    }
    const auto bytes = format_holders(m_holders);
    const bool fits = m_size > 0 && m_size <= kOneWrite && bytes.size() <= kOneWrite;
    return (fits && overwrite(bytes)) || replace(bytes);
}

// A new file for each change is most of what a second start of a program waits for, on a disk.
bool HolderFile::overwrite(const std::string& bytes) const {
    const Descriptor file(
        openat(m_folder.get(), m_name.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    // Between the two, records behind the new end are read once more. They are hints like all.
    return file &&
           pwrite(file.get(), bytes.data(), bytes.size(), 0) ==
               static_cast<ssize_t>(bytes.size()) &&
           (bytes.size() >= m_size || ftruncate(file.get(), static_cast<off_t>(bytes.size())) == 0);
}

bool HolderFile::replace(const std::string& bytes) const {
    const auto fresh = m_name + ".new";
    const int folder = m_folder.get();
    const Descriptor file(
        openat(folder, fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return fail_with_errno();
    if (write(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        unlinkat(folder, fresh.c_str(), 0);
        return fail_with(ERROR_DISK_FULL);
    }
    return renameat(folder, fresh.c_str(), folder, m_name.c_str()) == 0 || fail_with_errno();
}

}  // namespace tvutil2
