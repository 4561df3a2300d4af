// What every main loop promises, asked of the one that the program runs on and of the
// one with a clock turned by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <utility>
#include <vector>

#include "QtLoop.h"
#include "Support/FakeMainLoop.h"

namespace Platform {
namespace {

using std::chrono::milliseconds;

class FakeLoop {
public:
    MainLoop& loop() { return m_loop; }
    template <typename Condition> bool runUntil(Condition&& condition)
    {
        constexpr int mostTurns = 1000;
        for (int i = 0; i < mostTurns && !condition(); ++i) {
            m_loop.runTurn();
            m_loop.advance(milliseconds(1));
        }
        return condition();
    }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakeMainLoop m_loop{m_log};
};

template <typename Loop> class MainLoopContract : public testing::Test {
protected:
    void post(int mark)
    {
        loop.loop().post([this, mark] { order.push_back(mark); });
    }

    Loop loop;
    std::vector<int> order;
};

using Loops = testing::Types<TestSupport::QtLoop, FakeLoop>;
TYPED_TEST_SUITE(MainLoopContract, Loops);

TYPED_TEST(MainLoopContract, RunsTasksInALaterTurnInOrder)
{
    for (int i = 0; i < 100; ++i)
        this->post(i);
    EXPECT_TRUE(this->order.empty());
    ASSERT_TRUE(this->loop.runUntil([this] { return this->order.size() == 100; }));
    EXPECT_TRUE(std::is_sorted(this->order.begin(), this->order.end()));
}

TYPED_TEST(MainLoopContract, RunsATaskThatATaskPostsAfterThoseThatWait)
{
    this->loop.loop().post([this] {
        this->post(3);
        this->order.push_back(1);
    });
    this->post(2);
    ASSERT_TRUE(this->loop.runUntil([this] { return this->order.size() == 3; }));
    EXPECT_EQ(this->order, (std::vector<int>{1, 2, 3}));
}

TYPED_TEST(MainLoopContract, TakesTasksFromAnyThreadAndRunsThemOnItsOwn)
{
    const auto self = std::this_thread::get_id();
    std::vector<std::vector<int>> received(4);
    bool allOnMainThread = true;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < received.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int j = 0; j < 250; ++j) {
                this->loop.loop().post([&, i, j] {
                    received[i].push_back(j);
                    allOnMainThread = allOnMainThread && std::this_thread::get_id() == self;
                });
            }
        });
    }
    const auto isComplete = [&] { return std::all_of(received.begin(), received.end(), [](const auto& one) { return one.size() == 250; }); };
    const bool isDone = this->loop.runUntil(isComplete);
    for (auto& thread : threads)
        thread.join();
    ASSERT_TRUE(isDone || this->loop.runUntil(isComplete));
    EXPECT_TRUE(allOnMainThread);
    for (const auto& one : received)
        EXPECT_TRUE(std::is_sorted(one.begin(), one.end()));
}

TYPED_TEST(MainLoopContract, FiresATimerAgainAndAgain)
{
    int firings = 0;
    const auto timer = this->loop.loop().repeatingTimer(milliseconds(2), [&firings] { ++firings; });
    EXPECT_EQ(firings, 0);
    EXPECT_TRUE(this->loop.runUntil([&firings] { return firings >= 5; }));
}

TYPED_TEST(MainLoopContract, StopsATimerThatGoes)
{
    int firings = 0;
    auto timer = this->loop.loop().repeatingTimer(milliseconds(2), [&firings] { ++firings; });
    ASSERT_TRUE(this->loop.runUntil([&firings] { return firings >= 1; }));
    timer.reset();
    const int firingsBefore = firings;
    int others = 0;
    const auto other = this->loop.loop().repeatingTimer(milliseconds(2), [&others] { ++others; });
    ASSERT_TRUE(this->loop.runUntil([&others] { return others >= 5; }));
    EXPECT_EQ(firings, firingsBefore);
}

TYPED_TEST(MainLoopContract, LetsATimerEndItself)
{
    int firings = 0;
    std::unique_ptr<Timer> timer;
    timer = this->loop.loop().repeatingTimer(milliseconds(2), [&] {
        ++firings;
        timer.reset();
    });
    int others = 0;
    const auto other = this->loop.loop().repeatingTimer(milliseconds(2), [&others] { ++others; });
    ASSERT_TRUE(this->loop.runUntil([&others] { return others >= 5; }));
    EXPECT_EQ(firings, 1);
}

TYPED_TEST(MainLoopContract, RunsTasksThatATimerPosts)
{
    const auto timer = this->loop.loop().repeatingTimer(milliseconds(2), [this] { this->post(1); });
    EXPECT_TRUE(this->loop.runUntil([this] { return this->order.size() >= 3; }));
}

}  // namespace
}  // namespace Platform
