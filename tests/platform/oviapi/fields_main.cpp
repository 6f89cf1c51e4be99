#include <gtest/gtest.h>

#include <cstdlib>

#include <oviapi/application.h>

// One application serves all tests.
int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    OviAPI::Application application;
    application.start(argc, argv);
    return RUN_ALL_TESTS();
}
