// Runs tests with one started application for all of them.
#include <cstdlib>

#include <gtest/gtest.h>

#include <oviapi/application.h>

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0); // tests may also be pointed at a display
    testing::InitGoogleTest(&argc, argv);
    OviAPI::Application application;
    application.start(argc, argv);
    return RUN_ALL_TESTS();
}
