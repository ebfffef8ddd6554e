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
    const int file = openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    std::string bytes;
    if (file < 0) return bytes;
    char block[4096];
    for (ssize_t got = 0; bytes.size() < kMaxFile && (got = read(file, block, sizeof block)) > 0;) {
        bytes.append(block, static_cast<std::size_t>(got));
    }
    close(file);
    return bytes;
}

// A lock that is gone with its process, and that a child doesn't inherit.
int open_locked(int folder) {
    const int file = openat(folder, "lock", O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) {
        fail_with_errno();
        return -1;
    }
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    while (fcntl(file, F_SETLKW, &lock) != 0) {
        if (errno == EINTR) continue;
        fail_with_errno();
        close(file);
        return -1;
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
    if (m_folder < 0) {
        fail_with_errno();
        return;
    }
    m_lock = open_locked(m_folder);
    if (m_lock < 0) return;
    const auto bytes = read_whole(m_folder, m_name);
    m_size = bytes.size();
    m_holders = parse_holders(bytes);
}

HolderFile::~HolderFile() {
    if (m_lock >= 0) close(m_lock);
    if (m_folder >= 0) close(m_folder);
}

bool HolderFile::save() {
    if (m_holders.empty()) {
        return unlinkat(m_folder, m_name.c_str(), 0) == 0 || errno == ENOENT || fail_with_errno();
    }
    const auto bytes = format_holders(m_holders);
    const bool fits = m_size > 0 && m_size <= kOneWrite && bytes.size() <= kOneWrite;
    return (fits && overwrite(bytes)) || replace(bytes);
}

// A new file for each change is most of what a second start of a program waits for, on a disk.
bool HolderFile::overwrite(const std::string& bytes) const {
    const int file = openat(m_folder, m_name.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) return false;
    // Between the two, records behind the new end are read once more. They are hints like all.
    const bool is_written =
        pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()) &&
        (bytes.size() >= m_size || ftruncate(file, static_cast<off_t>(bytes.size())) == 0);
    close(file);
    return is_written;
}

bool HolderFile::replace(const std::string& bytes) const {
    const auto fresh = m_name + ".new";
    const int file = openat(m_folder, fresh.c_str(),
                            O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) return fail_with_errno();
    const bool is_written =
        write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(file);
    if (!is_written) {
        unlinkat(m_folder, fresh.c_str(), 0);
        return fail_with(ERROR_DISK_FULL);
    }
    return renameat(m_folder, fresh.c_str(), m_folder, m_name.c_str()) == 0 || fail_with_errno();
}

}  // namespace tvutil2
