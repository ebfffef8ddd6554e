// Opens the manual of the product in its argument, then that of another one; prints both results.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/services/help_links.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const int first = TvOpenHelpPdfFile(tvutil2::to_utf16_lossy(argv[1]).c_str());
    if (first == 0) std::printf("0");
    if (first != 0) std::printf("1%d", TvOpenHelpPdfFile(u"Other"));
    return 0;
}
