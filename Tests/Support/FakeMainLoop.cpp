#include "Support/FakeMainLoop.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace TestSupport {

class FakeMainLoop::FakeTimer final : public Platform::Timer {
public:
    FakeTimer(FakeMainLoop& loop, std::chrono::nanoseconds interval, std::function<void()> fired)
        : m_loop(loop), m_interval(interval), m_due(loop.m_now + interval), m_fired(std::make_shared<const std::function<void()>>(std::move(fired)))
    {
        m_loop.m_timers.push_back(this);
    }
    FakeTimer(const FakeTimer&) = delete;
    FakeTimer& operator=(const FakeTimer&) = delete;
    ~FakeTimer() override
    {
        m_loop.m_log.add("timer.stop");
        std::erase(m_loop.m_timers, this);
    }

    std::chrono::nanoseconds due() const { return m_due; }
    void skipMissedFirings()
    {
        while (m_due + m_interval <= m_loop.m_now)
            m_due += m_interval;
    }
    void fire()
    {
        m_due += m_interval;
        // The callback may end the timer.
        const auto fired = m_fired;
        (*fired)();
    }

private:
    FakeMainLoop& m_loop;
    const std::chrono::nanoseconds m_interval;
    std::chrono::nanoseconds m_due;
    const std::shared_ptr<const std::function<void()>> m_fired;
};

FakeMainLoop::~FakeMainLoop() = default;

int FakeMainLoop::runTurn()
{
    const int count = waitingTasks();
    for (int i = 0; i < count; ++i) {
        Platform::Task task;
        {
            const std::lock_guard lock(m_mutex);
            task = m_tasks.pop();
            --m_taskCount;
        }
        task();
    }
    return count;
}

void FakeMainLoop::runUntilIdle()
{
    constexpr int mostTurns = 1000;
    for (int turn = 0; turn < mostTurns; ++turn) {
        if (runTurn() == 0)
            return;
    }
    throw std::logic_error("tasks keep posting tasks");
}

int FakeMainLoop::waitingTasks() const
{
    const std::lock_guard lock(m_mutex);
    return m_taskCount;
}

void FakeMainLoop::advance(std::chrono::nanoseconds duration)
{
    const auto end = m_now + duration;
    while (auto* timer = nextDueTimer(end)) {
        m_now = timer->due();
        timer->fire();
        runUntilIdle();
    }
    m_now = end;
}

void FakeMainLoop::advanceWhileBusy(std::chrono::nanoseconds duration)
{
    m_now += duration;
    for (auto* timer : m_timers)
        timer->skipMissedFirings();
    while (auto* timer = nextDueTimer(m_now))
        timer->fire();
}

void FakeMainLoop::post(Platform::Task task)
{
    const std::lock_guard lock(m_mutex);
    m_tasks.push(std::move(task));
    ++m_taskCount;
}

std::unique_ptr<Platform::Timer> FakeMainLoop::repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired)
{
    m_log.add("mainLoop.repeatingTimer " + std::to_string(interval.count()));
    return std::make_unique<FakeTimer>(*this, interval, std::move(fired));
}

FakeMainLoop::FakeTimer* FakeMainLoop::nextDueTimer(std::chrono::nanoseconds until)
{
    const auto isEarlier = [](const FakeTimer* one, const FakeTimer* other) { return one->due() < other->due(); };
    const auto next = std::min_element(m_timers.begin(), m_timers.end(), isEarlier);
    return next != m_timers.end() && (*next)->due() <= until ? *next : nullptr;
}

}  // namespace TestSupport
