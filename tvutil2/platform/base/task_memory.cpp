#include "tvutil2/platform/base/task_memory.h"

#include <cstdlib>

void* CoTaskMemAlloc(std::size_t size) {
    // One of no bytes has an address too.
    return std::malloc(size != 0 ? size : 1);
}

void CoTaskMemFree(void* memory) {
    std::free(memory);
}
