// What a started program finds of itself, one fact a line, written to the file that
// TVUTIL_TEST_REPORT names (a pipe on which the test waits).
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string open_files() {
    std::string list;
    DIR* const folder = opendir("/proc/self/fd");
    if (folder == nullptr) return "?";
    const auto own = std::to_string(dirfd(folder));
    while (const auto* entry = readdir(folder)) {
        if (*entry->d_name != '.' && own != entry->d_name) list += std::string(entry->d_name) + ' ';
    }
    closedir(folder);
    return list;
}

// A line of the program's status without its name.
std::string status(const char* name) {
    std::FILE* const file = std::fopen("/proc/self/status", "r");
    if (file == nullptr) return "?";
    char line[256];
    std::string value;
    while (std::fgets(line, sizeof line, file) != nullptr) {
        if (std::strncmp(line, name, std::strlen(name)) == 0) value = line + std::strlen(name) + 2;
    }
    std::fclose(file);
    if (!value.empty()) value.pop_back();
    return value;
}

}  // namespace

int main(int argc, char** argv) {
    const auto files = open_files();
    char folder[4096] = "?";
    if (getcwd(folder, sizeof folder) == nullptr) return 1;
    const char* const report = std::getenv("TVUTIL_TEST_REPORT");
    std::FILE* const out = report != nullptr ? std::fopen(report, "w") : nullptr;
    if (out == nullptr) return 1;
    std::fprintf(out, "folder=%s\nfiles=%s\nblocked=%s\nignored=%s\nleader=%d\n", folder,
                 files.c_str(), status("SigBlk").c_str(), status("SigIgn").c_str(),
                 static_cast<int>(getsid(0) != getsid(getppid())));
    for (int i = 1; i < argc; ++i) std::fprintf(out, "argument=%s\n", argv[i]);
    return std::fclose(out) == 0 ? 0 : 1;
}
