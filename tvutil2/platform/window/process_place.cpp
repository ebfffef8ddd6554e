#include "tvutil2/platform/window/process_place.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/runtime_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <memory>

namespace tvutil2 {
namespace {

constexpr const char* kFolder = "windows";

struct flock whole_file(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

bool is_same_file(int file, int folder, const std::string& name) {
    struct stat opened {
    }, named{};
    return fstat(file, &opened) == 0 &&
           fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

// Through the folder's descriptor, since a socket's address has room for a short path only.
sockaddr_un address_in(int folder, const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder,
                  name.c_str());
    return address;
}

std::string number_of(DWORD process) {
    return std::to_string(process);
}

void remove_files(int folder, const std::string& number) {
    for (const char* const kind : {".windows", ".socket", ".lock"}) {
        unlinkat(folder, (number + kind).c_str(), 0);
    }
}

// Whether the process holds its lock. This process's own is never opened a second time: closing it
// would give up the lock.
bool is_alive(int folder, DWORD process) {
    if (process == static_cast<DWORD>(getpid())) return false;
    const Descriptor file(
        openat(folder, (number_of(process) + ".lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file) return false;
    auto lock = whole_file(F_WRLCK);
    return fcntl(file.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK &&
           lock.l_pid == static_cast<pid_t>(process);
}

// Under the dead process's own lock, so that a new process of that number isn't in the way.
void clear_away(int folder, DWORD process) {
    const auto number = number_of(process);
    const Descriptor file(
        openat(folder, (number + ".lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    auto lock = whole_file(F_WRLCK);
    if (file && fcntl(file.get(), F_SETLK, &lock) == 0 &&
        is_same_file(file.get(), folder, number + ".lock")) {
        remove_files(folder, number);
    }
}

// 0 for a name that isn't a process's lock.
DWORD process_in(std::string_view name) {
    constexpr std::string_view kEnd = ".lock";
    DWORD process = 0;
    if (!name.ends_with(kEnd)) return 0;
    name.remove_suffix(kEnd.size());
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    return error == std::errc() && end == name.data() + name.size() ? process : 0;
}

bool is_of_this_user(int connection, DWORD process) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid() && peer.pid == static_cast<pid_t>(process);
}

}  // namespace

std::string ProcessPlace::name(const char* kind) const {
    return m_number + kind;
}

bool ProcessPlace::open(DWORD process) {
    m_number = number_of(process);
    m_folder = Descriptor(open_runtime_folder(kFolder, false));
    return m_folder && lock() && m_listing.open(m_folder.get(), name(".windows")) && listen();
}

// Somebody who clears away after a dead process of the same number may have the file for a moment,
// and take it from under its name.
bool ProcessPlace::lock() {
    for (int attempts = 0; attempts < 100; ++attempts) {
        m_lock = Descriptor(openat(m_folder.get(), name(".lock").c_str(),
                                   O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        auto lock = whole_file(F_WRLCK);
        if (!m_lock) return false;
        if (fcntl(m_lock.get(), F_SETLK, &lock) == 0 &&
            is_same_file(m_lock.get(), m_folder.get(), name(".lock"))) {
            return true;
        }
    }
    return false;
}

bool ProcessPlace::listen() {
    m_socket = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    unlinkat(m_folder.get(), name(".socket").c_str(), 0);
    const auto address = address_in(m_folder.get(), name(".socket"));
    return m_socket &&
           bind(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(m_socket.get(), SOMAXCONN) == 0;
}

bool ProcessPlace::list(const std::vector<ListedWindow>& windows) {
    // Whoever in this process has opened and closed the file has given up its lock.
    auto lock = whole_file(F_WRLCK);
    fcntl(m_lock.get(), F_SETLK, &lock);
    return m_listing.write(encode_listing(windows));
}

void ProcessPlace::remove() const {
    if (m_lock) remove_files(m_folder.get(), m_number);
}

void ProcessPlace::abandon() {
    m_folder = Descriptor();
    m_lock = Descriptor();
    m_socket = Descriptor();
    m_listing = {};
}

std::vector<DWORD> processes_with_windows() {
    std::vector<DWORD> found;
    const int folder = open_runtime_folder(kFolder, true);
    if (folder < 0) return found;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(folder), closedir);
    if (!entries) {
        close(folder);
        return found;
    }
    while (const auto* const entry = readdir(entries.get())) {
        const auto process = process_in(entry->d_name);
        if (process == 0 || process == static_cast<DWORD>(getpid())) continue;
        if (is_alive(folder, process)) {
            found.push_back(process);
        } else {
            clear_away(folder, process);
        }
    }
    return found;
}

std::vector<ListedWindow> windows_of_process(DWORD process) {
    const Descriptor folder(open_runtime_folder(kFolder, true));
    if (!folder || !is_alive(folder.get(), process)) return {};
    const Descriptor file(openat(folder.get(), (number_of(process) + ".windows").c_str(),
                                 O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    const auto bytes = file ? read_listing_file(file.get()) : std::nullopt;
    return bytes ? decode_listing(*bytes).value_or(std::vector<ListedWindow>())
                 : std::vector<ListedWindow>();
}

Descriptor connect_to_process(DWORD process) {
    const Descriptor folder(open_runtime_folder(kFolder, true));
    Descriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    if (!folder || !connection || !is_alive(folder.get(), process)) return {};
    const auto address = address_in(folder.get(), number_of(process) + ".socket");
    if (connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        if (errno == EAGAIN) SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return {};
    }
    if (!is_of_this_user(connection.get(), process)) return {};
    return connection;
}

Descriptor watch_listings() {
    const Descriptor folder(open_runtime_folder(kFolder, false));
    Descriptor changes(folder ? inotify_init1(IN_CLOEXEC | IN_NONBLOCK) : -1);
    const auto path = "/proc/self/fd/" + std::to_string(folder.get());
    if (!changes || inotify_add_watch(changes.get(), path.c_str(), IN_MODIFY) < 0) {
        fail_with_errno();
        return {};
    }
    return changes;
}

Descriptor open_shared_file(const char* name, int flags) {
    const Descriptor folder(open_runtime_folder(kFolder, (flags & O_CREAT) == 0));
    if (!folder) return {};
    return Descriptor(openat(folder.get(), name, flags | O_CLOEXEC | O_NOFOLLOW, 0600));
}

}  // namespace tvutil2
