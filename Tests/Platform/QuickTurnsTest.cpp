#include "Platform/Qt/QuickTurns.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>
#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "Platform/Posix/KernelTimer.h"
#include "QtLoop.h"

namespace Platform {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds tick{4};

class QuickTurnsTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!QAbstractEventDispatcher::instance()->inherits("QEventDispatcherGlib"))
            GTEST_SKIP() << "Qt was built without GLib's loop.";
        counting = QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, [this] { ++qtTurns; });
        // So that no test runs for ever.
        guard.setSingleShot(true);
        QObject::connect(&guard, &QTimer::timeout, [this] { end(); });
        guard.start(10s);
    }
    void TearDown() override { QObject::disconnect(counting); }

    void run() { runner.exec(); }
    void end() { runner.quit(); }

    // Runs until so many ticks have come.
    void runFor(int ticks)
    {
        const auto timer = loop.repeatingTimer(tick, [&, rest = ticks]() mutable {
            if (--rest == 0)
                end();
        });
        run();
    }

    TestSupport::QtLoop qt;
    QtMainLoop& loop = qt.loop();
    QEventLoop runner;
    QTimer guard;
    QMetaObject::Connection counting;
    int qtTurns = 0;
};

TEST_F(QuickTurnsTest, TakeNoTurnOfQtForEachTick)
{
    runFor(60);
    EXPECT_LE(qtTurns, 60 * tick / 50ms + 5);
}

TEST_F(QuickTurnsTest, TakeNoTurnOfQtForEachTaskOfAnotherThread)
{
    int answers = 0;
    const auto timer = loop.repeatingTimer(tick, [&] { std::thread([&] { loop.post([&answers] { ++answers; }); }).join(); });
    runFor(60);
    EXPECT_GE(answers, 30);
    EXPECT_LE(qtTurns, 60 * tick / 50ms + 5);
}

TEST_F(QuickTurnsTest, AreQtsAsSoonAsNothingTicks)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    int bytes = 0;
    const auto token = loop.watch(ends[0], [&] {
        char byte = 0;
        ASSERT_EQ(read(ends[0], &byte, 1), 1);
        if (++bytes == 20)
            end();
        else
            ASSERT_EQ(write(ends[1], "x", 1), 1);
    });
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    run();
    EXPECT_GE(qtTurns, 20);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(QuickTurnsTest, LetQtsTimersFireInTime)
{
    int firings = 0;
    QTimer qtTimer;
    qtTimer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&qtTimer, &QTimer::timeout, [&firings] { ++firings; });
    qtTimer.start(10);
    const auto start = steady_clock::now();
    runFor(60);
    const auto due = (steady_clock::now() - start) / 10ms;
    EXPECT_GE(firings, due * 3 / 4);
}

// GLib puts off the rest of a turn for a loop that runs inside it.
TEST_F(QuickTurnsTest, LetQtHaveTurnsThoughEachTickTakesLongerThanItMay)
{
    int firings = 0;
    QTimer qtTimer;
    QObject::connect(&qtTimer, &QTimer::timeout, [&firings] { ++firings; });
    qtTimer.start(1);
    const auto timer = loop.repeatingTimer(tick, [&, rest = 40]() mutable {
        std::this_thread::sleep_for(tick * 3 / 2);
        if (--rest == 0)
            end();
    });
    run();
    EXPECT_GE(firings, 10);
}

TEST_F(QuickTurnsTest, LetATimerOfQtsFireThatACallbackStarts)
{
    // Not in the first, which is in a turn of Qt's.
    const auto timer = loop.repeatingTimer(tick, [&, count = 0]() mutable {
        if (++count == 3)
            QTimer::singleShot(1ms, [this] { end(); });
    });
    const auto start = steady_clock::now();
    run();
    EXPECT_LT(steady_clock::now() - start, 1s);
}

TEST_F(QuickTurnsTest, LetQtHaveWhatAnotherThreadPostsToIt)
{
    const auto timer = loop.repeatingTimer(tick, [] {});
    std::thread other;
    steady_clock::time_point posted;
    QTimer::singleShot(20ms, [&] {
        other = std::thread([&] {
            std::this_thread::sleep_for(6ms);
            posted = steady_clock::now();
            QMetaObject::invokeMethod(
                qApp, [this] { end(); }, Qt::QueuedConnection);
        });
    });
    run();
    EXPECT_LT(steady_clock::now() - posted, 40ms);
    other.join();
}

TEST_F(QuickTurnsTest, LetQtHaveWhatACallbackPostsToIt)
{
    std::string order;
    QObject receiver;
    const auto timer = loop.repeatingTimer(tick, [&] {
        order += "t";
        QMetaObject::invokeMethod(
            &receiver, [&] { order += "q"; }, Qt::QueuedConnection);
    });
    runFor(10);
    EXPECT_EQ(order.find("tt"), std::string::npos) << order;
}

TEST_F(QuickTurnsTest, DoNotKeepACallerWhoOnlyLooksForInput)
{
    const auto timer = loop.repeatingTimer(tick, [] {});
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(tick * 2);
        const auto start = steady_clock::now();
        QCoreApplication::processEvents();
        EXPECT_LT(steady_clock::now() - start, 30ms);
    }
}

TEST_F(QuickTurnsTest, EndWithTheLoopThatACallbackEnds)
{
    int ticksAfter = 0;
    bool hasEnded = false;
    const auto timer = loop.repeatingTimer(tick, [&, rest = 5]() mutable {
        ticksAfter += hasEnded ? 1 : 0;
        if (--rest == 0) {
            hasEnded = true;
            end();
        }
    });
    run();
    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(ticksAfter, 0);
}

TEST_F(QuickTurnsTest, EndWithTheLoopThatATaskEndsInsideAnother)
{
    std::string order;
    const auto timer = loop.repeatingTimer(tick, [&, count = 0]() mutable {
        if (++count == 3) {
            QEventLoop nested;
            loop.post([&] {
                order += "n";
                nested.quit();
            });
            nested.exec();
            order += ")";
        }
        if (count == 6)
            end();
    });
    run();
    EXPECT_EQ(order, "n)");
}

TEST_F(QuickTurnsTest, RunTasksThatPostThemselvesWithoutWaitingForATick)
{
    int runs = 0;
    std::function<void()> again = [&] {
        if (++runs == 20)
            end();
        else
            loop.post([&] { again(); });
    };
    steady_clock::time_point start;
    const auto timer = loop.repeatingTimer(1s, [&] {
        start = steady_clock::now();
        again();
    });
    run();
    EXPECT_EQ(runs, 20);
    EXPECT_LT(steady_clock::now() - start, 150ms);
}

// Of two that can be read at once the one ends the other, which never hears of it.
TEST_F(QuickTurnsTest, LeaveAloneWhatACallbackOfTheSameTurnEnded)
{
    std::array<Posix::KernelTimer, 2> timers;
    std::array<Token, 2> tokens;
    int calls = 0;
    for (std::size_t i = 0; i < timers.size(); ++i) {
        tokens[i] = loop.watch(timers[i].fileDescriptor(), [&, i] {
            ++calls;
            tokens[1 - i].release();
            timers[i].stop();
        });
    }
    const auto ticking = loop.repeatingTimer(tick, [&, count = 0]() mutable {
        if (++count == 3) {
            for (auto& timer : timers)
                timer.start(1ns);
            std::this_thread::sleep_for(1ms);
        }
        if (count == 6)
            end();
    });
    run();
    EXPECT_EQ(calls, 1);
}

TEST_F(QuickTurnsTest, MayEndInACallback)
{
    Posix::KernelTimer timer;
    timer.start(tick, tick);
    auto turns = std::make_unique<QuickTurns>([] {});
    Token hurry = turns->hurry();
    Token watch;
    watch = turns->watch(timer.fileDescriptor(), [&, rest = 3]() mutable {
        timer.drain();
        if (--rest > 0)
            return;
        watch.release();
        turns.reset();
        end();
    });
    run();
    EXPECT_EQ(turns, nullptr);
}

}  // namespace
}  // namespace Platform
