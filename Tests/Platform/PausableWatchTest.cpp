#include "Platform/Posix/PausableWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "QtLoop.h"

namespace Platform::Posix {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class PausableWatchTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(pipe2(m_ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
        m_watch = std::make_unique<PausableWatch>(qt.loop(), m_ends[0], [this] {
            ++m_calls;
            char byte = 0;
            while (read(m_ends[0], &byte, 1) == 1) { }
        });
    }
    void TearDown() override
    {
        m_watch.reset();
        closeOtherEnd();
        close(m_ends[0]);
    }

    void write() { ASSERT_EQ(::write(m_ends[1], "x", 1), 1); }
    void closeOtherEnd()
    {
        if (m_ends[1] >= 0)
            close(m_ends[1]);
        m_ends[1] = -1;
    }
    // All that is ready by now has been told when a task posted now has run twice.
    void settle()
    {
        int runs = 0;
        for (int i = 0; i < 2; ++i) {
            qt.loop().post([&runs] { ++runs; });
            ASSERT_TRUE(qt.runUntil([&] { return runs == i + 1; }));
        }
    }

    TestSupport::QtLoop qt;
    std::array<int, 2> m_ends{-1, -1};
    std::unique_ptr<PausableWatch> m_watch;
    int m_calls = 0;
};

TEST_F(PausableWatchTest, TellsOfInputLikeAnyWatch)
{
    write();
    ASSERT_TRUE(qt.runUntil([this] { return m_calls == 1; }));
    settle();
    EXPECT_EQ(m_calls, 1);
}

TEST_F(PausableWatchTest, TellsOfInputThatCameInAPauseWhenThatIsEnded)
{
    m_watch->pauseFor(std::chrono::hours(1));
    write();
    settle();
    EXPECT_EQ(m_calls, 0);
    m_watch->resume();
    EXPECT_TRUE(qt.runUntil([this] { return m_calls == 1; }));
    write();
    EXPECT_TRUE(qt.runUntil([this] { return m_calls == 2; }));
}

TEST_F(PausableWatchTest, EndsAPauseByItself)
{
    const auto start = steady_clock::now();
    m_watch->pauseFor(milliseconds(60));
    write();
    ASSERT_TRUE(qt.runUntil([this] { return m_calls == 1; }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(60));
}

TEST_F(PausableWatchTest, BeginsAPauseAnewWithEachCall)
{
    const auto start = steady_clock::now();
    m_watch->pauseFor(milliseconds(30));
    m_watch->pauseFor(milliseconds(90));
    write();
    ASSERT_TRUE(qt.runUntil([this] { return m_calls == 1; }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(90));
}

TEST_F(PausableWatchTest, TellsInAPauseThatTheOtherEndIsGone)
{
    m_watch->pauseFor(std::chrono::hours(1));
    closeOtherEnd();
    EXPECT_TRUE(qt.runUntil([this] { return m_calls >= 1; }));
}

TEST_F(PausableWatchTest, LeavesNoTimerRunningAfterAPause)
{
    m_watch->pauseFor(std::chrono::hours(1));
    m_watch->resume();
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("it_value: ")) {
                EXPECT_EQ(line, "it_value: (0, 0)");
            }
        }
    }
}

TEST_F(PausableWatchTest, MayGoInItsOwnCallback)
{
    int calls = 0;
    m_watch = std::make_unique<PausableWatch>(qt.loop(), m_ends[0], [&] {
        ++calls;
        m_watch.reset();
    });
    write();
    ASSERT_TRUE(qt.runUntil([&] { return calls == 1; }));
    settle();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace Platform::Posix
