// Paths that nobody would write, through everything that takes their text apart.
//
// The input is a path up to its first zero byte, and a tail. Nothing is written to the disk.
#include "tvutil2/data/path.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>

#include "fuzz/fuzz_input.h"

namespace {

void append(const std::u16string& base, const std::u16string& tail) {
    CString path(base.c_str());
    if (AppendPathEx(path, tail.c_str()) == 0) {
        fuzz::require(path.View() == base);
    } else {
        fuzz::require(path.View().size() <= base.size() + tail.size() + 1);
    }
    CString plain(base.c_str());
    AppendPath(plain, tail.c_str());
    CString converted(base.c_str());
    AfxConvertPath(converted, tail.c_str(), 0);
    fuzz::require(converted.View().size() <= base.size());
    AfxConvertPath(converted, tail.c_str(), 1);
}

void take_apart(const std::u16string& path) {
    char16_t parts[4][256];
    if (_wsplitpath_s(path.c_str(), parts[0], 256, parts[1], 256, parts[2], 256, parts[3], 256) ==
        0) {
        fuzz::require(std::u16string(parts[0]) + parts[1] + parts[2] + parts[3] == path);
    }
    CString stem;
    int number = 0;
    if (SplitNameForSaveAs(path.c_str(), stem, number) != 0) {
        fuzz::require(number >= 0 && path.starts_with(stem.View()));
    }
    for (const int length : {-7, 0, 7, 8, 11, 100}) {
        const auto cut = TvTruncatePath(path.c_str(), length);
        fuzz::require(cut.GetLength() <= std::max(length, 6));
    }
    CString expanded(path.c_str());
    fuzz::require(ChangePathWithEnv(expanded) != 0 || expanded.View() == path);
}

void map(const std::u16string& path) {
    const auto host = tvutil2::host_path(path);
    if (!host) return;
    fuzz::require(host->starts_with('/') && host->find("//") == std::string::npos &&
                  (host->size() == 1 || host->back() != '/'));
    if (const auto back = tvutil2::platform_path(*host)) {
        fuzz::require(tvutil2::host_path(*back) == host);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int prepared = setenv("X", "%Y%%X%", 1) + setenv("Y", "y", 1) +
                                setenv("TVUTIL_DRIVES", "D=/no/such;E=/no", 1);
    static_cast<void>(prepared);
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto end = std::min(bytes.find('\0'), bytes.size());
    const auto path = fuzz::widened(bytes.substr(0, end));
    auto tail = fuzz::widened(bytes.substr(std::min(end + 1, bytes.size())));
    tail.resize(std::char_traits<char16_t>::length(tail.c_str()));
    append(path, tail);
    take_apart(path);
    map(path);
    auto wide = fuzz::wide_text(data, size);
    map(wide);
    return 0;
}
