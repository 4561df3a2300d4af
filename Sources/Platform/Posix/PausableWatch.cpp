#include "Platform/Posix/PausableWatch.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "Platform/FatalError.h"

namespace Platform::Posix {
namespace {

int orFatal(int result, const char* operation)
{
    if (result < 0)
        fatalError(operation, std::strerror(errno));
    return result;
}

}  // namespace

PausableWatch::PausableWatch(FileDescriptorWatcher& watcher, int fileDescriptor, std::function<void()> readable)
    : m_fileDescriptor(fileDescriptor), m_poll(orFatal(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      m_timer(orFatal(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create"))
{
    take(m_fileDescriptor, EPOLLIN, EPOLL_CTL_ADD);
    take(m_timer, EPOLLIN, EPOLL_CTL_ADD);
    m_watch = watcher.watch(m_poll, [this, readable = std::move(readable)] {
        resume();
        readable();  // may be the end of this
    });
}

PausableWatch::~PausableWatch()
{
    m_watch.release();
    close(m_timer);
    close(m_poll);
}

void PausableWatch::pauseFor(std::chrono::nanoseconds duration)
{
    if (!std::exchange(m_isPaused, true))
        take(m_fileDescriptor, 0, EPOLL_CTL_MOD);
    setTimer(duration);
}

void PausableWatch::resume()
{
    if (!std::exchange(m_isPaused, false))
        return;
    take(m_fileDescriptor, EPOLLIN, EPOLL_CTL_MOD);
    setTimer(std::chrono::nanoseconds(0));
}

void PausableWatch::take(int fileDescriptor, unsigned events, int operation) const
{
    epoll_event interest{};
    interest.events = events;
    orFatal(epoll_ctl(m_poll, operation, fileDescriptor, &interest), "epoll_ctl");
}

// Setting it also takes back what it has to tell. Zero stops it.
void PausableWatch::setTimer(std::chrono::nanoseconds duration) const
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    const itimerspec schedule{.it_interval = {}, .it_value = {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()}};
    orFatal(timerfd_settime(m_timer, 0, &schedule, nullptr), "timerfd_settime");
}

}  // namespace Platform::Posix
