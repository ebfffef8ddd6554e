// A user-dirs.dirs that somebody else wrote: whatever it holds, the answer is a path or nothing.
#include "tvutil2/platform/files/user_dirs.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string content(reinterpret_cast<const char*>(data), size);
    for (const auto* home : {"/", "/home/ann"}) {
        const auto folder = tvutil2::user_dir(content, "XDG_DOCUMENTS_DIR", home);
        if (!folder) continue;
        fuzz::require(folder->starts_with('/') && folder->find('\0') == std::string::npos);
        fuzz::require(*folder == "/" || !folder->ends_with('/'));
    }
    return 0;
}
