#include "tvutil2/platform/codepage/utf8_kernels.h"

namespace tvutil2::codepage {
namespace {

// The careful code is as good as any other without wide registers.
Progress take_no_bytes(const char* /*from*/, std::size_t /*size*/) {
    return {};
}
Progress take_no_bytes_to(const char* /*from*/, std::size_t /*size*/, char16_t* /*to*/,
                          std::size_t /*room*/) {
    return {};
}
Progress take_no_units(const char16_t* /*from*/, std::size_t /*size*/) {
    return {};
}
Progress take_no_units_to(const char16_t* /*from*/, std::size_t /*size*/, char* /*to*/,
                          std::size_t /*room*/) {
    return {};
}

}  // namespace

const Utf8Kernel kPortableUtf8{"portable", take_no_bytes, take_no_bytes_to, take_no_units,
                               take_no_units_to};

std::span<const Utf8Kernel> utf8_kernels() {
    struct Available {
        Utf8Kernel list[2];
        std::size_t count;
    };
    static const auto available = [] {
        Available kernels{{kPortableUtf8}, 1};
#if defined(__x86_64__)
        const bool has_all = __builtin_cpu_supports("avx2") != 0 &&
                             __builtin_cpu_supports("bmi") != 0 &&
                             __builtin_cpu_supports("popcnt") != 0;
        if (has_all) kernels.list[kernels.count++] = kAvx2Utf8;
#endif
        return kernels;
    }();
    return {available.list, available.count};
}

}  // namespace tvutil2::codepage
