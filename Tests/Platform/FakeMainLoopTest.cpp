#include "Support/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <string>

namespace TestSupport {
namespace {

using std::chrono::milliseconds;

class FakeMainLoopTest : public testing::Test {
protected:
    CallLog log;
    FakeMainLoop loop{log};
    std::string order;
};

TEST_F(FakeMainLoopTest, RunsInATurnOnlyWhatWaitedAtItsStart)
{
    loop.post([this] {
        order += "a";
        loop.post([this] { order += "c"; });
    });
    loop.post([this] { order += "b"; });
    EXPECT_EQ(loop.runTurn(), 2);
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(loop.runTurn(), 1);
    EXPECT_EQ(order, "abc");
    EXPECT_EQ(loop.runTurn(), 0);
}

TEST_F(FakeMainLoopTest, NoticesTasksThatNeverEnd)
{
    std::function<void()> again = [&] { loop.post([&again] { again(); }); };
    again();
    EXPECT_THROW(loop.runUntilIdle(), std::logic_error);
}

TEST_F(FakeMainLoopTest, FiresTimersInTheOrderOfTheirTimes)
{
    const auto slow = loop.repeatingTimer(milliseconds(5), [this] { order += "s"; });
    const auto fast = loop.repeatingTimer(milliseconds(2), [this] { order += "f"; });
    loop.advance(milliseconds(1));
    EXPECT_EQ(order, "");
    loop.advance(milliseconds(6));
    EXPECT_EQ(order, "ffsf");
    EXPECT_EQ(loop.now(), milliseconds(7));
}

TEST_F(FakeMainLoopTest, FiresOnceForAllThatABusyMainThreadMissed)
{
    int firings = 0;
    const auto timer = loop.repeatingTimer(milliseconds(10), [&firings] { ++firings; });
    loop.advanceWhileBusy(milliseconds(55));
    EXPECT_EQ(firings, 1);
    loop.advance(milliseconds(4));
    EXPECT_EQ(firings, 1);
    loop.advance(milliseconds(1));
    EXPECT_EQ(firings, 2);
}

TEST_F(FakeMainLoopTest, RecordsTimers)
{
    auto timer = loop.repeatingTimer(std::chrono::nanoseconds(16'666'666), [] {});
    EXPECT_EQ(loop.activeTimers(), 1);
    timer.reset();
    EXPECT_EQ(loop.activeTimers(), 0);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"mainLoop.repeatingTimer 16666666", "timer.stop"}));
}

}  // namespace
}  // namespace TestSupport
