// The leak sanitizer's look at a program that ends.
#pragma once

namespace tests {

/// For a test program that the sanitizer can't look into: it would end by a fault of its own.
void turn_off_leak_check();

}  // namespace tests
