#include "Platform/Qt/QtMainLoop.h"

#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

#include "Platform/FatalError.h"
#include "Platform/TaskRing.h"

namespace Platform {
namespace {

class FileDescriptor {
public:
    FileDescriptor(int fileDescriptor, const char* operation) : m_fileDescriptor(fileDescriptor)
    {
        if (fileDescriptor < 0)
            fatalError(operation, std::strerror(errno));
    }
    ~FileDescriptor() { close(m_fileDescriptor); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_fileDescriptor; }

    // True when there was something; an eventfd or timerfd is then quiet again.
    bool drain() const
    {
        std::uint64_t count = 0;
        return read(m_fileDescriptor, &count, sizeof count) == sizeof count;
    }

    void signal() const
    {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = write(m_fileDescriptor, &one, sizeof one);
    }

private:
    const int m_fileDescriptor;
};

timespec timespecOf(std::chrono::nanoseconds duration)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()};
}

class TimerfdTimer final : public Timer {
public:
    TimerfdTimer(FileDescriptorWatcher& watcher, std::chrono::nanoseconds interval, std::function<void()> fired)
        : m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create"),
          m_fired(std::make_shared<const std::function<void()>>(std::move(fired)))
    {
        const itimerspec schedule{.it_interval = timespecOf(interval), .it_value = timespecOf(interval)};
        if (timerfd_settime(m_timer.get(), 0, &schedule, nullptr) != 0)
            fatalError("timerfd_settime", std::strerror(errno));
        m_watch = watcher.watch(m_timer.get(), [this] {
            const auto callback = m_fired;  // outlives a timer that its own callback destroys
            if (m_timer.drain())
                (*callback)();
        });
    }

private:
    FileDescriptor m_timer;
    std::shared_ptr<const std::function<void()>> m_fired;
    Token m_watch;
};

}  // namespace

struct QtMainLoop::Tasks {
    FileDescriptor wakeUp{eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd"};
    std::mutex mutex;
    bool isSignalled = false;
    TaskRing waiting;
    TaskRing running;

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
            Task task = running.pop();
            // The task may run a nested loop, which has to hear of the rest.
            if (!running.isEmpty())
                signal();
            task();
        }
    }

    void signal()
    {
        const std::lock_guard lock(mutex);
        signalLocked();
    }

    void signalLocked()
    {
        if (!std::exchange(isSignalled, true))
            wakeUp.signal();
    }
};

QtMainLoop::QtMainLoop() : m_tasks(std::make_unique<Tasks>())
{
    m_watch = watchAlone(m_tasks->wakeUp.get(), [this] { m_tasks->runWaiting(); });
}

QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task)
{
    const std::lock_guard lock(m_tasks->mutex);
    m_tasks->waiting.push(std::move(task));
    m_tasks->signalLocked();
}

std::unique_ptr<Timer> QtMainLoop::repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired)
{
    return std::make_unique<TimerfdTimer>(*this, interval, std::move(fired));
}

// What the callback posts follows at once, without a turn through all of Qt's sources.
Token QtMainLoop::watch(int fileDescriptor, std::function<void()> readable)
{
    return watchAlone(fileDescriptor, [this, readable = std::move(readable)] {
        readable();
        m_tasks->runWaiting();
    });
}

Token QtMainLoop::watchAlone(int fileDescriptor, std::function<void()> readable)
{
    auto* notifier = new QSocketNotifier(fileDescriptor, QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [readable = std::move(readable)] { readable(); });
    return Token([notifier] {
        // A callback may end its own watch: the notifier must outlive the call.
        notifier->setEnabled(false);
        notifier->disconnect();
        notifier->deleteLater();
    });
}

}  // namespace Platform
