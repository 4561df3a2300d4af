#include "Platform/Qt/QtMainLoop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QTimer>
#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "QtLoop.h"

namespace Platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr nanoseconds pumpInterval{16'666'666};

class QtMainLoopTest : public testing::Test {
protected:
    TestSupport::QtLoop qt;
    QtMainLoop& loop = qt.loop();
    std::string order;
};

// The intervals of this process's kernel timers, as "(seconds, nanoseconds)".
std::vector<std::string> kernelTimerIntervals()
{
    std::vector<std::string> intervals;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("it_interval: "))
                intervals.push_back(line.substr(13));
        }
    }
    return intervals;
}

TEST_F(QtMainLoopTest, GivesATimerItsIntervalToTheNanosecond)
{
    const auto timer = loop.repeatingTimer(pumpInterval, [] {});
    const auto longer = loop.repeatingTimer(nanoseconds(2'000'000'003), [] {});
    const auto intervals = kernelTimerIntervals();
    EXPECT_NE(std::find(intervals.begin(), intervals.end(), "(0, 16666666)"), intervals.end());
    EXPECT_NE(std::find(intervals.begin(), intervals.end(), "(2, 3)"), intervals.end());
}

TEST_F(QtMainLoopTest, RunsWhatFollowsAnEmptyTask)
{
    bool hasRun = false;
    loop.post({});
    loop.post([&hasRun] { hasRun = true; });
    EXPECT_TRUE(qt.runUntil([&hasRun] { return hasRun; }));
}

// A firing may be late but never early, and lateness does not add up. The upper bound is
// of a kind that only a timer of 17 ms with a busy machine on top of it reaches.
TEST_F(QtMainLoopTest, KeepsTheIntervalOnAverage)
{
    int firings = 0;
    const auto start = steady_clock::now();
    const auto timer = loop.repeatingTimer(pumpInterval, [&firings] { ++firings; });
    ASSERT_TRUE(qt.runUntil([&firings] { return firings >= 60; }));
    const auto elapsed = steady_clock::now() - start;
    EXPECT_GE(elapsed, nanoseconds(999'999'960));
    EXPECT_LT(elapsed, milliseconds(1200));
}

TEST_F(QtMainLoopTest, DropsFiringsThatItWasTooLateFor)
{
    int firings = 0;
    const auto timer = loop.repeatingTimer(milliseconds(200), [&firings] { ++firings; });
    const auto start = steady_clock::now();
    ASSERT_TRUE(TestSupport::waitUntil([&] { return steady_clock::now() - start >= milliseconds(700); }));
    EXPECT_EQ(firings, 0);
    ASSERT_TRUE(qt.runUntil([&firings] { return firings >= 1; }));
    EXPECT_EQ(firings, 1);
}

TEST_F(QtMainLoopTest, RunsTasksThatATaskPostsInItsNestedLoop)
{
    loop.post([this] {
        order += "(";
        QEventLoop nested;
        loop.post([&] {
            order += "n";
            nested.quit();
        });
        nested.exec();
        order += ")";
    });
    loop.post([this] { order += "b"; });
    ASSERT_TRUE(qt.runUntil([this] { return order.size() == 4; }));
    EXPECT_EQ(order, "(bn)");
}

TEST_F(QtMainLoopTest, RunsTheRestOfATurnInANestedLoopToWhichNothingIsPosted)
{
    QEventLoop nested;
    QTimer::singleShot(std::chrono::seconds(5), &nested, &QEventLoop::quit);
    loop.post([&] {
        order += "(";
        nested.exec();
        order += ")";
    });
    loop.post([&] {
        order += "b";
        nested.quit();
    });
    ASSERT_TRUE(qt.runUntil([this] { return order.size() == 3; }));
    EXPECT_EQ(order, "(b)");
}

// A turn through all of Qt's sources in between would cost more than most tasks.
TEST_F(QtMainLoopTest, RunsWhatATimerPostsBeforeQtTurnsToAnythingElse)
{
    std::unique_ptr<Timer> timer;
    timer = loop.repeatingTimer(milliseconds(2), [&] {
        timer.reset();
        QMetaObject::invokeMethod(
            qApp, [this] { order += "q"; }, Qt::QueuedConnection);
        loop.post([this] {
            order += "1";
            loop.post([this] { order += "2"; });
        });
        order += "t";
    });
    ASSERT_TRUE(qt.runUntil([this] { return order.size() == 4; }));
    EXPECT_EQ(order, "t12q");
}

TEST_F(QtMainLoopTest, LetsQtHaveItsTurnBetweenTasksThatPostThemselvesForEver)
{
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        if (order.empty())
            loop.post([&] { again(); });
    };
    again();
    QMetaObject::invokeMethod(
        qApp, [this] { order += "q"; }, Qt::QueuedConnection);
    ASSERT_TRUE(qt.runUntil([this] { return order == "q"; }));
    EXPECT_LT(runs, 50);
}

TEST_F(QtMainLoopTest, FiresTimersInANestedLoop)
{
    QEventLoop nested;
    const auto timer = loop.repeatingTimer(milliseconds(2), [&] {
        order += "t";
        nested.quit();
    });
    loop.post([&] {
        order += "(";
        nested.exec();
        order += ")";
    });
    ASSERT_TRUE(qt.runUntil([this] { return order.ends_with(")"); }));
    EXPECT_EQ(order.substr(0, 2), "(t");
}

TEST_F(QtMainLoopTest, DoesNotRunWhatStillWaitsWhenItGoes)
{
    int runs = 0;
    {
        TestSupport::QtLoop other;
        other.loop().post([&runs] { ++runs; });
    }
    order.clear();
    loop.post([this] { order += "a"; });
    ASSERT_TRUE(qt.runUntil([this] { return order == "a"; }));
    EXPECT_EQ(runs, 0);
}

class FileDescriptorWatchTest : public QtMainLoopTest {
protected:
    FileDescriptorWatchTest()
    {
        if (pipe(ends.data()) != 0)
            throw std::runtime_error("cannot make a pipe");
    }
    ~FileDescriptorWatchTest() override
    {
        close(ends[0]);
        close(ends[1]);
    }
    void send() { ASSERT_EQ(write(ends[1], "x", 1), 1); }
    void receive()
    {
        char byte = 0;
        ASSERT_EQ(read(ends[0], &byte, 1), 1);
        order += byte;
    }

    std::array<int, 2> ends{};
};

TEST_F(FileDescriptorWatchTest, CallsBackWhenThereIsSomethingToRead)
{
    const auto token = loop.watch(ends[0], [this] { receive(); });
    send();
    send();
    EXPECT_EQ(order, "");
    EXPECT_TRUE(qt.runUntil([this] { return order == "xx"; }));
}

TEST_F(FileDescriptorWatchTest, IsSilentOnceItsTokenIsGone)
{
    int calls = 0;
    auto token = loop.watch(ends[0], [&calls] { ++calls; });
    send();
    token.release();
    loop.post([this] { order += "a"; });
    ASSERT_TRUE(qt.runUntil([this] { return order == "a"; }));
    EXPECT_EQ(calls, 0);
}

TEST_F(FileDescriptorWatchTest, MayBeEndedByItsOwnCallback)
{
    Token token;
    token = loop.watch(ends[0], [this, &token] {
        order += "a";
        token.release();
        order += "b";
    });
    send();
    ASSERT_TRUE(qt.runUntil([this] { return order == "ab"; }));
    loop.post([this] { order += "c"; });
    ASSERT_TRUE(qt.runUntil([this] { return order.ends_with('c'); }));
    EXPECT_EQ(order, "abc");
}

}  // namespace
}  // namespace Platform
