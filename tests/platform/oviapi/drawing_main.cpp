#include <QApplication>

#include <gtest/gtest.h>

namespace {

class ApplicationEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_argc, m_argv);
    }
    void TearDown() override { m_application.reset(); }

private:
    int m_argc = 1;
    char m_name[8] = "drawing";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

[[maybe_unused]] const testing::Environment* environment =
    testing::AddGlobalTestEnvironment(new ApplicationEnvironment); // gtest owns it

} // namespace
