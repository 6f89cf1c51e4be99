#include <cstdlib>

#include <gtest/gtest.h>

#include "application.h"

// One application serves all tests.
int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0); // tests may also be pointed at a display
    testing::InitGoogleTest(&argc, argv);
    TestApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
