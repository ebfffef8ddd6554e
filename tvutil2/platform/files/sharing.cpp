#include "tvutil2/platform/files/sharing.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <mutex>

namespace tvutil2 {
namespace {

// Threads need no second attempt against one another.
constinit std::mutex g_one_at_a_time;
const ForkLock g_sharing_fork_safe(g_one_at_a_time, ForkRank::area);

// The bytes' order lets the usual claims be one or two runs. Programs of different releases meet
// on these offsets: they never change.
constexpr off_t kFirstByte = 0x7FFFFFFFFFFFFF00;
constexpr unsigned kWrites = 1U << 0;
constexpr unsigned kForbidsWrite = 1U << 1;
constexpr unsigned kForbidsDelete = 1U << 2;
constexpr unsigned kReads = 1U << 3;
constexpr unsigned kForbidsRead = 1U << 4;
constexpr unsigned kDeletes = 1U << 5;
constexpr unsigned kAllMarks = 0x3F;

struct Claim {
    unsigned own = 0;
    unsigned ruled_out_by = 0;
};

Claim claim_of(DWORD access, DWORD sharing) {
    Claim claim;
    const auto enter = [&claim](bool wants, bool shares, unsigned does, unsigned forbids) {
        if (wants) {
            claim.own |= does;
            claim.ruled_out_by |= forbids;
        }
        if (!shares) {
            claim.own |= forbids;
            claim.ruled_out_by |= does;
        }
    };
    enter((access & FILE_READ_DATA) != 0, (sharing & FILE_SHARE_READ) != 0, kReads, kForbidsRead);
    enter((access & (FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0, (sharing & FILE_SHARE_WRITE) != 0,
          kWrites, kForbidsWrite);
    enter((access & DELETE) != 0, (sharing & FILE_SHARE_DELETE) != 0, kDeletes, kForbidsDelete);
    return claim;
}

// Calls `visit` with each run of marks as a lock until it gives false.
template <class Visit>
bool for_each_run(unsigned marks, short type, Visit visit) {
    while (marks != 0) {
        const int start = std::countr_zero(marks);
        const int length = std::countr_one(marks >> start);
        struct flock lock {};
        lock.l_type = type;
        lock.l_whence = SEEK_SET;
        lock.l_start = kFirstByte + start;
        lock.l_len = length;
        if (!visit(lock)) return false;
        marks &= ~(((1U << length) - 1) << start);
    }
    return true;
}

enum class Set { done, ruled_out, impossible };

Set set_marks(int file, unsigned marks) {
    Set result = Set::done;
    for_each_run(marks, F_RDLCK, [&](struct flock& lock) {
        if (fcntl(file, F_OFD_SETLK, &lock) == 0) return true;
        result = errno == EAGAIN || errno == EACCES ? Set::ruled_out : Set::impossible;
        return false;
    });
    return result;
}

// Asked with a write lock, which meets every lock of others; none is set.
bool others_have(int file, unsigned marks) {
    return !for_each_run(marks, F_WRLCK, [&](struct flock& lock) {
        return fcntl(file, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK;
    });
}

void clear_marks(int file) {
    for_each_run(kAllMarks, F_UNLCK,
                 [&](struct flock& lock) { return fcntl(file, F_OFD_SETLK, &lock) == 0; });
}

// Two processes in step would meet again at every attempt.
void step_back(int attempt) {
    for (int i = (getpid() + attempt) % 4; i >= 0; --i) sched_yield();
}

}  // namespace

bool may_be_read(int file) {
    return !others_have(file, kForbidsRead) || fail_with(ERROR_SHARING_VIOLATION);
}

bool may_be_shared(int file, DWORD access, DWORD sharing) {
    // Nearly always nobody else has the file open, and one question answers for all marks.
    return !others_have(file, kAllMarks) ||
           !others_have(file, claim_of(access, sharing).ruled_out_by) ||
           fail_with(ERROR_SHARING_VIOLATION);
}

bool claim_sharing(int file, DWORD access, DWORD sharing) {
    constexpr int kAttempts = 8;
    const auto claim = claim_of(access, sharing);
    const std::lock_guard guard(g_one_at_a_time);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const auto set = set_marks(file, claim.own);
        // Nearly always nobody else has the file open, and one question answers for all marks.
        if (set != Set::ruled_out &&
            (!others_have(file, kAllMarks) || !others_have(file, claim.ruled_out_by))) {
            return true;
        }
        clear_marks(file);
        step_back(attempt);
    }
    return fail_with(ERROR_SHARING_VIOLATION);
}

}  // namespace tvutil2
