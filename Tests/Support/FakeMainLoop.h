// A main loop with a clock that a test turns by hand. Nothing runs by itself: turns run
// posted tasks, advance() fires timers and runs turns as a loop with nothing else to do
// would. Posting is allowed from any thread, everything else from the test's own.
//
// Lines: "mainLoop.repeatingTimer 16666666" (nanoseconds), "timer.stop".
#pragma once

#include <mutex>
#include <vector>

#include "Platform/MainLoop.h"
#include "Platform/TaskRing.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeMainLoop : public Platform::MainLoop {
public:
    explicit FakeMainLoop(CallLog& log) : m_log(log) { }
    ~FakeMainLoop() override;

    // Runs the tasks that wait now, not those that they post. The number of tasks run.
    int runTurn();
    // Runs turns until nothing waits.
    void runUntilIdle();
    int waitingTasks() const;

    // Moves the clock; each timer that becomes due fires, followed by turns until idle.
    void advance(std::chrono::nanoseconds);
    // Moves the clock while the main thread is busy: a timer that was due, however often,
    // fires once afterwards. Runs no tasks.
    void advanceWhileBusy(std::chrono::nanoseconds);

    std::chrono::nanoseconds now() const { return m_now; }
    int activeTimers() const { return static_cast<int>(m_timers.size()); }

    void post(Platform::Task) override;
    std::unique_ptr<Platform::Timer> repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired) override;

private:
    class FakeTimer;

    FakeTimer* nextDueTimer(std::chrono::nanoseconds until);

    CallLog& m_log;
    mutable std::mutex m_mutex;
    Platform::TaskRing m_tasks;
    int m_taskCount = 0;
    std::chrono::nanoseconds m_now{0};
    std::vector<FakeTimer*> m_timers;
};

}  // namespace TestSupport
