// Starts the sibling programs beside it as a product does, "agent SHOW ARGUMENTS" or "move WHAT",
// and prints the result.
#include "tvutil2/data/data_import.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/threads/agent.h"

#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    if (argc == 4 && argv[1] == std::string_view("agent")) {
        const int show = argv[2] == std::string_view("1") ? 1 : 0;
        std::printf("%d", TvRunHalket(show, tvutil2::to_utf16_lossy(argv[3]).c_str()));
        return 0;
    }
    if (argc != 3) return 2;
    ExecuteBirkenfoldForMove(tvutil2::to_utf16_lossy(argv[2]).c_str());
    return 0;
}
