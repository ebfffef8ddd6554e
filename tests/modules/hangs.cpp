// Keeps whatever program it is loaded into from ever beginning.
#include <unistd.h>

namespace {

[[gnu::constructor]] void hang() {
    for (;;) pause();
}

}  // namespace
