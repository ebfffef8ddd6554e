#include "tests/support/fifo.h"

#include <sys/stat.h>

#include <cstdlib>

#include "tests/support/profile.h"

namespace tests {

Fifo::Fifo() : m_path(new_folder() + "/report") {
    if (mkfifo(m_path.c_str(), 0600) != 0) std::abort();
}

std::string Fifo::read_all() const {
    return read_file(m_path);
}

}  // namespace tests
