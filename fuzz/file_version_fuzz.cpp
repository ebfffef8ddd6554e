// An executable that somebody else made, of either kind: its version is a text of four numbers, or
// there is none.
#include "tvutil2/services/environment.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int file = memfd_create("fuzz", MFD_CLOEXEC);
    static const std::u16string path = fuzz::widened("/proc/self/fd/" + std::to_string(file));
    fuzz::require(ftruncate(file, 0) == 0);
    fuzz::require(pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    CString version = u"before";
    if (TvGetFileVersion(path.c_str(), version) == 0) {
        fuzz::require(version == u"before");
        return 0;
    }
    int dots = 0;
    for (const char16_t unit : version.View()) {
        if (unit == u'.') ++dots;
        fuzz::require(unit == u'.' || (unit >= u'0' && unit <= u'9'));
    }
    fuzz::require(dots == 3);
    return 0;
}
