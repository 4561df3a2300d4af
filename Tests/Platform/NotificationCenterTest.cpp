#include "Platform/NotificationCenter.h"

#include <gtest/gtest.h>

#include <optional>

namespace Platform {
namespace {

class NotificationCenterTest : public testing::Test {
protected:
    Token record(const std::string& name, const std::string& mark)
    {
        return center->addObserver(name, [this, mark](const Notification&) { received += mark; });
    }

    std::optional<NotificationCenter> center{std::in_place};
    std::string received;
};

TEST_F(NotificationCenterTest, CallsTheObserversOfTheNameInOrderOfRegistration)
{
    const auto first = record("changed", "1");
    const auto other = record("ended", "x");
    const auto second = record("changed", "2");
    center->post("changed");
    EXPECT_EQ(received, "12");
}

TEST_F(NotificationCenterTest, HandsOverNameAndUserInfo)
{
    std::string name;
    int number = 0;
    const auto token = center->addObserver("changed", [&](const Notification& notification) {
        name = notification.name;
        number = std::any_cast<int>(notification.userInfo);
    });
    center->post("changed", 42);
    EXPECT_EQ(name, "changed");
    EXPECT_EQ(number, 42);
}

TEST_F(NotificationCenterTest, StopsCallingWhenTheTokenGoes)
{
    auto token = record("changed", "1");
    token.release();
    center->post("changed");
    EXPECT_EQ(received, "");
}

TEST_F(NotificationCenterTest, DoesNotCallAnObserverThatAnEarlierOneRemoved)
{
    Token second;
    const auto first = center->addObserver("changed", [&](const Notification&) {
        received += "1";
        second.release();
    });
    second = record("changed", "2");
    const auto third = record("changed", "3");
    center->post("changed");
    EXPECT_EQ(received, "13");
}

TEST_F(NotificationCenterTest, LetsAnObserverRemoveItself)
{
    Token token;
    token = center->addObserver("changed", [&](const Notification&) {
        received += "1";
        token.release();
    });
    center->post("changed");
    center->post("changed");
    EXPECT_EQ(received, "1");
}

TEST_F(NotificationCenterTest, CallsAnAddedObserverFromTheNextNotificationOn)
{
    Token added;
    const auto token = center->addObserver("changed", [&](const Notification&) {
        received += "1";
        if (!added)
            added = record("changed", "2");
    });
    center->post("changed");
    EXPECT_EQ(received, "1");
    center->post("changed");
    EXPECT_EQ(received, "112");
}

TEST_F(NotificationCenterTest, DeliversNestedNotificationsAtOnce)
{
    const auto outer = center->addObserver("outer", [&](const Notification&) {
        received += "(";
        center->post("inner");
        received += ")";
    });
    const auto inner = record("inner", "i");
    center->post("outer");
    EXPECT_EQ(received, "(i)");
}

TEST_F(NotificationCenterTest, LetsTokensOutliveIt)
{
    auto token = record("changed", "1");
    center.reset();
    token.release();
    EXPECT_EQ(received, "");
}

}  // namespace
}  // namespace Platform
