#include "Platform/Qt/QtMainLoop.h"

#include <sys/eventfd.h>

#include <mutex>
#include <thread>
#include <utility>

#include "Platform/Posix/FileDescriptor.h"
#include "Platform/Posix/KernelTimer.h"
#include "Platform/TaskRing.h"

namespace Platform {
namespace {

class RepeatingTimer final : public Timer {
public:
    RepeatingTimer(QuickTurns& turns, FileDescriptorWatcher& watcher, std::chrono::nanoseconds interval, std::function<void()> fired)
        : m_fired(std::make_shared<const std::function<void()>>(std::move(fired))), m_hurry(turns.hurry())
    {
        m_timer.start(interval, interval);
        m_watch = watcher.watch(m_timer.fileDescriptor(), [this] {
            const auto callback = m_fired;  // outlives a timer that its own callback destroys
            if (m_timer.drain())
                (*callback)();
        });
    }

private:
    Posix::KernelTimer m_timer;
    std::shared_ptr<const std::function<void()>> m_fired;
    Token m_hurry;
    Token m_watch;
};

}  // namespace

struct QtMainLoop::Tasks {
    const std::thread::id mainThread = std::this_thread::get_id();
    Posix::FileDescriptor wakeUp{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd"};
    std::mutex mutex;
    bool isSignalled = false;
    TaskRing waiting;
    TaskRing running;

    void post(Task task)
    {
        const std::lock_guard lock(mutex);
        waiting.push(std::move(task));
        // The main thread looks before it waits again.
        if (std::this_thread::get_id() != mainThread)
            signalLocked();
    }

    // A task may run a nested loop, which has to hear of the rest.
    void signalRest()
    {
        const std::lock_guard lock(mutex);
        if (!waiting.isEmpty() || !running.isEmpty())
            signalLocked();
    }

    // Tasks that a turn's tasks post belong to turns of their own, but a turn through all
    // of Qt's and GLib's sources costs as much as many tasks: some follow at once.
    void runWaiting()
    {
        constexpr int mostTurns = 3;
        for (int turn = 0; turn < mostTurns && takeWaiting(); ++turn)
            runTurn();
    }

    bool takeWaiting()
    {
        const std::lock_guard lock(mutex);
        if (std::exchange(isSignalled, false))
            wakeUp.drain();
        // Where a task runs a nested loop, its turn serves what was left of the outer one first.
        while (!waiting.isEmpty())
            running.push(waiting.pop());
        return !running.isEmpty();
    }

    void runTurn()
    {
        while (!running.isEmpty()) {
            if (Task task = running.pop())
                task();
        }
    }

    void signalLocked()
    {
        if (!std::exchange(isSignalled, true))
            wakeUp.signal();
    }
};

QtMainLoop::QtMainLoop() : m_tasks(std::make_unique<Tasks>()), m_turns([this] { m_tasks->signalRest(); })
{
    m_watch = m_turns.watch(m_tasks->wakeUp.get(), [this] { m_tasks->runWaiting(); });
}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) { m_tasks->post(std::move(task)); }

std::unique_ptr<Timer> QtMainLoop::repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired)
{
    return std::make_unique<RepeatingTimer>(m_turns, *this, interval, std::move(fired));
}

// What the callback posts follows at once, without a turn through all of Qt's sources.
Token QtMainLoop::watch(int fileDescriptor, std::function<void()> readable)
{
    return m_turns.watch(fileDescriptor, [this, readable = std::move(readable)] {
        readable();
        m_tasks->runWaiting();
    });
}

}  // namespace Platform
