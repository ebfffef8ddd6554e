// Shows every control and every dialog of the library.
//
//   Gallery                    in windows
//   Gallery --screenshot DIR   as PNG files in DIR, which is made, without a display
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "examples/gallery/dialogs.h"
#include "examples/gallery/pictures.h"
#include "examples/gallery/resources.h"

namespace {

CWinApp g_app(u"Gallery");

int take_pictures(const std::string& folder) {
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) {
        std::perror(folder.c_str());
        return 1;
    }
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    const int count = gallery::write_pictures(folder);
    if (count < 0) return 1;
    std::printf("%d pictures in %s\n", count, folder.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (!gallery::add_resources()) return 1;
    if (argc == 3 && std::string_view(argv[1]) == "--screenshot") return take_pictures(argv[2]);
    if (argc != 1) {
        std::fputs("usage: Gallery [--screenshot DIR]\n", stderr);
        return 2;
    }
    AfxWinInit(AfxGetInstanceHandle());
    if (gallery::run_main_window() != -1) return 0;
    std::fputs("Gallery: there is no display (try --screenshot DIR)\n", stderr);
    return 1;
}
