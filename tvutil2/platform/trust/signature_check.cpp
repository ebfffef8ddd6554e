#include "tvutil2/platform/trust/signature_check.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/system/executable_file.h"
#include "tvutil2/platform/trust/trust_folder.h"

#include <sys/stat.h>

namespace tvutil2 {
namespace {

LONG verdict_of(const SignatureFacts& facts) {
    if (facts.integrity != Integrity::intact) return TRUST_E_BAD_DIGEST;
    switch (facts.chain_state) {
        case ChainState::trusted:
        case ChainState::known:
            return 0;
        case ChainState::unknown_root:
            return CERT_E_UNTRUSTEDROOT;
        case ChainState::expired:
            return CERT_E_EXPIRED;
        case ChainState::wrong_usage:
            return CERT_E_WRONG_USAGE;
        default:
            return CERT_E_CHAINING;
    }
}

std::int64_t seconds_now() {
    constexpr std::uint64_t kTicks = 10'000'000;
    constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::int64_t>(ticks_of(now) / kTicks) - kFrom1601To1970;
}

bool is_same_time(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool is_unchanged(const struct stat& before, const struct stat& after) {
    return before.st_size == after.st_size && is_same_time(before.st_mtim, after.st_mtim) &&
           is_same_time(before.st_ctim, after.st_ctim);
}

}  // namespace

SignatureReport check_signature(const char16_t* path) {
    SignatureReport report;
    const auto fail = [&report] {
        report.error = GetLastError();
        return std::move(report);
    };
    struct stat before {};
    struct stat after {};
    const auto file = ExecutableFile::open(path);
    if (!file || !file->stat(before)) return fail();
    const auto signature = find_signature(*file, static_cast<std::uint64_t>(before.st_size));
    if (!signature) return fail();
    report.kind = signature->kind;
    const auto* const module = trust_module();
    if (module == nullptr) return fail();
    file->will_be_read_through();
    const TrustSettings settings{trusted_certificate_files(), seconds_now()};
    if (!module->check(*file, *signature, settings, report.facts)) {
        SetLastError(ERROR_CANTREAD);
        return fail();
    }
    if (!file->stat(after)) return fail();
    report.verdict =
        is_unchanged(before, after) ? verdict_of(report.facts) : LONG{TRUST_E_BAD_DIGEST};
    return report;
}

}  // namespace tvutil2
