// Watches a file descriptor, but can leave it alone for a while: what comes meanwhile
// waits and wakes nobody. For those who know that what comes next is of no interest, or
// look for themselves. Main thread only.
#pragma once

#include <chrono>
#include <functional>

#include "Platform/Posix/FileDescriptor.h"
#include "Platform/Posix/FileDescriptorWatcher.h"
#include "Platform/Posix/KernelTimer.h"

namespace Platform::Posix {

class PausableWatch {
public:
    PausableWatch(FileDescriptorWatcher&, int fileDescriptor, std::function<void()> readable);
    ~PausableWatch();
    PausableWatch(const PausableWatch&) = delete;
    PausableWatch& operator=(const PausableWatch&) = delete;

    // From now on for so long; a further call begins anew. A file descriptor whose other
    // end is gone is told of at once nevertheless.
    void pauseFor(std::chrono::nanoseconds);
    void resume();

private:
    void setInterest(int fileDescriptor, unsigned events, int operation) const;

    const int m_fileDescriptor;
    KernelTimer m_pauseEnd;
    const FileDescriptor m_both;  // an epoll of the two; the loop watches this alone
    bool m_isPaused = false;
    Token m_watch;
};

}  // namespace Platform::Posix
