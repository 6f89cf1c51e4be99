// Runs the tests with a started application, on the platform that needs no screen.
#include <cstdlib>

#include <gtest/gtest.h>

#include <oviapi/application.h>

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    testing::InitGoogleTest(&argc, argv);
    OviAPI::Application application;
    application.start(argc, argv);
    return RUN_ALL_TESTS();
}
