// Launches the URL in its argument, as a product beside its siblings would, and prints the result.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/url/url_launch.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::printf("%d", ExecuteURL(tvutil2::to_utf16_lossy(argv[1]).c_str()));
    return 0;
}
