#include "tvutil2/platform/profile/profile_store.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/overwritten_file.h"
#include "tvutil2/platform/files/replaced_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
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
    ForkLock m_is_fork_safe{m_mutex, ForkRank::area};
    std::vector<Kept> m_kept;
};

Cache& cache() {
    static Cache cache;
    return cache;
}

// What hinders a new file in the folder, or in the place of the old one, and not in the old one: a
// folder of somebody else's, a file that is mounted there.
bool takes_no_other_file(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT || error == ERROR_BUSY ||
           error == ERROR_ALREADY_EXISTS;
}

}  // namespace

std::shared_ptr<const ProfileText> read_profile(const char16_t* path) {
    auto host = host_path_of(path, Lookup::none);
    if (!host) return nullptr;
    struct stat info {};
    // Most files are there as they are written, and most of those were read before: one call.
    if (stat(host->c_str(), &info) != 0) {
        if (errno != ENOENT) {
            fail_with_errno();
            return nullptr;
        }
        host = host_path_of(path, Lookup::likely_new);
        if (stat(host->c_str(), &info) != 0) {
            fail_at(*host);
            return nullptr;
        }
    }
    if (auto kept = cache().find(*host, info)) return kept;
    std::string bytes;
    if (!read_between_writers(*host, info, bytes)) return nullptr;
    auto text = std::make_shared<const ProfileText>(std::move(bytes));
    cache().keep(*host, info, text);
    return text;
}

bool edit_profile(const std::string& path, const ProfileEdit& edit) {
    const auto error_before = GetLastError();
    OverwrittenFile turn(path, true);
    if (!turn) return false;
    bool is_refused = false;
    const auto content_of = [&](std::string bytes) -> std::optional<std::string> {
        const ProfileText text(std::move(bytes));
        auto content = edit(text);
        is_refused = !content;
        return content == text.bytes() ? std::nullopt : std::move(content);
    };
    const bool is_done = replace_content(path, true, content_of) ||
                         (takes_no_other_file(GetLastError()) && turn.overwrite(content_of, true));
    if (is_refused) return fail_with(ERROR_NO_UNICODE_TRANSLATION);
    if (is_done) SetLastError(error_before);
    return is_done;
}

}  // namespace tvutil2
