#include "tvutil2/platform/profile/profile_store.h"

#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/replaced_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <mutex>
#include <optional>
#include <vector>

namespace tvutil2 {
namespace {

constexpr std::size_t kKept = 16;

long long nanoseconds(const timespec& time) {
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

bool is_same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           nanoseconds(a.st_mtim) == nanoseconds(b.st_mtim) &&
           nanoseconds(a.st_ctim) == nanoseconds(b.st_ctim);
}

// The files that were read last, the latest one in front.
class Cache {
  public:
    std::shared_ptr<const ProfileText> find(const std::string& path, const struct stat& info) {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_kept.begin(), m_kept.end(),
                                        [&path](const Kept& kept) { return kept.path == path; });
        if (found == m_kept.end() || !is_same_file(found->info, info)) return nullptr;
        std::rotate(m_kept.begin(), found, found + 1);
        return m_kept.front().text;
    }

    // A file that changed a moment ago may change again without its times showing it, since they
    // move in steps of up to 10 ms: it isn't kept yet.
    void keep(const std::string& path, const struct stat& info,
              std::shared_ptr<const ProfileText> text) {
        constexpr long long kSettled = 50'000'000;
        timespec now{};
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_kept, [&path](const Kept& kept) { return kept.path == path; });
        if (nanoseconds(now) - nanoseconds(info.st_ctim) < kSettled) return;
        if (m_kept.size() == kKept) m_kept.pop_back();
        m_kept.insert(m_kept.begin(), {path, info, std::move(text)});
    }

  private:
    struct Kept {
        std::string path;
        struct stat info;
        std::shared_ptr<const ProfileText> text;
    };

    std::mutex m_mutex;
    std::vector<Kept> m_kept;
};

Cache& cache() {
    static Cache cache;
    return cache;
}

}  // namespace

std::shared_ptr<const ProfileText> read_profile(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        fail_at(path);
        return nullptr;
    }
    if (auto kept = cache().find(path, info)) return kept;
    std::string bytes;
    if (!read_whole_file(path, info, bytes)) return nullptr;
    auto text = std::make_shared<const ProfileText>(std::move(bytes));
    cache().keep(path, info, text);
    return text;
}

bool edit_profile(const std::string& path,
                  const std::function<std::string(const ProfileText&)>& edit) {
    return replace_content(path, true, [&edit](std::string bytes) -> std::optional<std::string> {
        const ProfileText text(std::move(bytes));
        auto content = edit(text);
        if (content == text.bytes()) return std::nullopt;
        return content;
    });
}

}  // namespace tvutil2
