#include "tests/support/host_files.h"

#include <filesystem>
#include <set>

#include "tests/support/profile.h"

namespace tests {

namespace fs = std::filesystem;

std::string tree(const std::string& folder) {
    std::set<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        auto line = entry.path().string().substr(folder.size() + 1);
        if (entry.is_symlink()) {
            line.append("->").append(fs::read_symlink(entry.path()));
        } else if (entry.is_regular_file()) {
            line.append("=").append(read_file(entry.path()));
        } else {
            line.append("/");
        }
        lines.insert(line);
    }
    std::string text;
    for (const auto& line : lines) text += line + " ";
    return text;
}

FullDisk::FullDisk(rlim_t limit) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit now{limit, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &now);
}

FullDisk::~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
}

}  // namespace tests
