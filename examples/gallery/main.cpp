// Shows every control and every dialog of the library.
//
//   Gallery                    in windows
//   Gallery --screenshot DIR [--every-look]   as PNG files in DIR, which is made, without a
//                              display; dialogs of the library in all languages, light or in
//                              every look
//   Gallery --soak SECONDS [--seed N]   opens all of it at random, without a display
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "examples/gallery/dialogs.h"
#include "examples/gallery/pictures.h"
#include "examples/gallery/resources.h"
#include "examples/gallery/soak.h"

namespace {

CWinApp g_app(u"Gallery");

int take_pictures(const std::string& folder, bool in_every_look) {
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) {
        std::perror(folder.c_str());
        return 1;
    }
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    const int count = gallery::write_pictures(folder, in_every_look);
    if (count < 0) return 1;
    std::printf("%d pictures in %s\n", count, folder.c_str());
    return 0;
}

int usage() {
    std::fputs("usage: Gallery [--screenshot DIR [--every-look] | --soak SECONDS [--seed N]]\n",
               stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (!gallery::add_resources()) return 1;
    if ((argc == 3 || argc == 4) && std::string_view(argv[1]) == "--screenshot") {
        const bool in_every_look = argc == 4 && std::string_view(argv[3]) == "--every-look";
        return argc == 3 || in_every_look ? take_pictures(argv[2], in_every_look) : usage();
    }
    if ((argc == 3 || argc == 5) && std::string_view(argv[1]) == "--soak") {
        const bool has_seed = argc == 5 && std::string_view(argv[3]) == "--seed";
        if (argc == 5 && !has_seed) return usage();
        const auto seed = has_seed ? std::strtoul(argv[4], nullptr, 10) : std::random_device{}();
        return gallery::soak(std::atoi(argv[2]), static_cast<unsigned>(seed));
    }
    if (argc != 1) return usage();
    AfxWinInit(AfxGetInstanceHandle());
    if (gallery::run_main_window() != -1) return 0;
    std::fputs("Gallery: there is no display (try --screenshot DIR)\n", stderr);
    return 1;
}
