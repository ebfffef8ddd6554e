// The smallest use of the library. With an argument it prints its own memory map as well.
#include "tvutil2/frame/product.h"

#include <fstream>
#include <iostream>

int main(int argc, char** /*argv*/) {
    if (TvGetProductName(1).GetLength() == 0) return 1;
    if (argc > 1) std::cout << std::ifstream("/proc/self/smaps").rdbuf();
    return 0;
}
