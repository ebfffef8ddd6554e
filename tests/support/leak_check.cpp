#include "tests/support/leak_check.h"

namespace {

bool g_is_off = false;

}  // namespace

// The sanitizer's question, before it looks.
extern "C" [[gnu::visibility("default")]] int __lsan_is_turned_off() {
    return g_is_off ? 1 : 0;
}

namespace tests {

void turn_off_leak_check() {
    g_is_off = true;
}

}  // namespace tests
