#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace {

// One application for all tests, without a display.
class Application final : public testing::Environment {
public:
    void SetUp() override
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_argumentCount, m_arguments);
    }
    void TearDown() override { m_application.reset(); }

private:
    int m_argumentCount = 1;
    char m_name[9] = "qt_tests";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

[[maybe_unused]] const auto* const application = testing::AddGlobalTestEnvironment(new Application);

}  // namespace
