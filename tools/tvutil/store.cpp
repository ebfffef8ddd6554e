#include "tools/tvutil/store.h"

#include "tvutil2/platform/base/locations.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "tools/tvutil/failure.h"

namespace tool {
namespace {

std::string file_of(HKEY root) {
    const auto folder =
        root == HKEY_LOCAL_MACHINE ? tvutil2::machine_store() : tvutil2::user_store();
    return folder + "/registry.db";
}

}  // namespace

void check_store(HKEY root) {
    struct stat info {};
    const auto file = file_of(root);
    if (stat(file.c_str(), &info) == 0 || errno == ENOENT) return;
    throw Failure{Exit::failed, file + ": " + std::strerror(errno)};
}

std::string in_store(const std::string& what, HKEY root) {
    return what + ", in " + file_of(root);
}

}  // namespace tool
