// Loads modules that take all static thread storage there is to spare, then the library:
//   loads_late MODULE... LIBRARY
#include <dlfcn.h>

#include <cstdio>

int main(int count, char** files) {
    int refused = 0;
    for (int i = 1; i + 1 < count; ++i) {
        if (dlopen(files[i], RTLD_NOW) == nullptr) ++refused;
    }
    if (refused == 0) return std::puts("there was storage left"), 2;
    if (dlopen(files[count - 1], RTLD_NOW) == nullptr) return std::puts(dlerror()), 1;
    return 0;
}
