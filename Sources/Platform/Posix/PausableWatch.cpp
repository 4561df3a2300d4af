#include "Platform/Posix/PausableWatch.h"

#include <sys/epoll.h>

#include <utility>

namespace Platform::Posix {

PausableWatch::PausableWatch(FileDescriptorWatcher& watcher, int fileDescriptor, std::function<void()> readable)
    : m_fileDescriptor(fileDescriptor), m_both(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")
{
    setInterest(m_fileDescriptor, EPOLLIN, EPOLL_CTL_ADD);
    setInterest(m_pauseEnd.fileDescriptor(), EPOLLIN, EPOLL_CTL_ADD);
    m_watch = watcher.watch(m_both.get(), [this, readable = std::move(readable)] {
        resume();
        readable();  // may be the end of this
    });
}

PausableWatch::~PausableWatch() = default;

void PausableWatch::pauseFor(std::chrono::nanoseconds duration)
{
    if (!std::exchange(m_isPaused, true))
        setInterest(m_fileDescriptor, 0, EPOLL_CTL_MOD);
    m_pauseEnd.start(duration);
}

void PausableWatch::resume()
{
    if (!std::exchange(m_isPaused, false))
        return;
    setInterest(m_fileDescriptor, EPOLLIN, EPOLL_CTL_MOD);
    m_pauseEnd.stop();
}

void PausableWatch::setInterest(int fileDescriptor, unsigned events, int operation) const
{
    epoll_event interest{};
    interest.events = events;
    orFatal(epoll_ctl(m_both.get(), operation, fileDescriptor, &interest), "epoll_ctl");
}

}  // namespace Platform::Posix
