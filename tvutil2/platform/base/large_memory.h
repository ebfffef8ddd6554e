// A hint for memory that is about to be filled as a whole.
#pragma once

#include <cstddef>

namespace tvutil2 {

/// Lets the host take large pages for memory of 64 MiB or more that nothing was written to yet: the
/// first write to each small page would cost more than the writing. Blocks of that size have a
/// mapping of their own, which ends with them, so nothing else is affected. Smaller ones are left
/// alone, and a host that refuses takes small pages.
void hint_large_pages(void* memory, std::size_t size);

}  // namespace tvutil2
