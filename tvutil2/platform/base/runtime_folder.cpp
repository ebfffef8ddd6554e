#include "tvutil2/platform/base/runtime_folder.h"

#include "tvutil2/platform/base/locations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace tvutil2 {
namespace {

constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// A folder that is this user's alone; it takes the descriptor over.
int if_private(int folder) {
    struct stat info {};
    if (folder < 0) return -1;
    if (fstat(folder, &info) == 0 && info.st_uid == geteuid() && (info.st_mode & 077) == 0) {
        return folder;
    }
    close(folder);
    errno = EPERM;
    return -1;
}

// What the run-time folder stands in, and its name there.
struct Place {
    int base;
    std::string name;
};

Place place(bool makes) {
    if (const auto profile = profile_root(); !profile.empty()) {
        if (makes) make_host_folders(profile, false);
        return {open(profile.c_str(), kFolder), "run"};
    }
    const char* const session = std::getenv("XDG_RUNTIME_DIR");
    if (session != nullptr && *session == '/') {
        const int base = if_private(open(session, kFolder));
        if (base >= 0) return {base, "tvutil2"};
    }
    return {open("/tmp", kFolder), "tvutil2-" + std::to_string(geteuid())};
}

// A private folder below another one, which is closed.
int step_into(int parent, const std::string& name, bool makes) {
    if (parent < 0) return -1;
    if (makes) mkdirat(parent, name.c_str(), 0700);
    const int folder = openat(parent, name.c_str(), kFolder | O_NOFOLLOW);
    const int error = errno;
    close(parent);
    errno = error;
    return if_private(folder);
}

}  // namespace

int open_runtime_folder(const char* name, bool is_read_only) {
    const bool makes = !is_read_only;
    const auto where = place(makes);
    return step_into(step_into(where.base, where.name, makes), name, makes);
}

}  // namespace tvutil2
