#include <gtest/gtest.h>

#include "tests/support/profile.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    tests::profile_folder();
    return RUN_ALL_TESTS();
}
