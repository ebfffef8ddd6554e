#include "tests/support/profile.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    tests::profile_folder();
    return RUN_ALL_TESTS();
}
