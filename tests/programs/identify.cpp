// Prints the program code that the library gives to this executable.
#include "tvutil2/frame/product.h"

#include <cstdio>

int main() {
    std::printf("%d", TvGetProgramCodeFromInstalled());
    return 0;
}
