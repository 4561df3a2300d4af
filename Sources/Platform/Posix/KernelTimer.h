// A timer of the kernel (timerfd), to the nanosecond: a file descriptor that can be read
// when it has fired. Not running at first.
#pragma once

#include <chrono>

#include "Platform/Posix/FileDescriptor.h"

namespace Platform::Posix {

class KernelTimer {
public:
    KernelTimer();

    int fileDescriptor() const { return m_fileDescriptor.get(); }

    // Fires after `delay`, above 0, and then after each interval; once where that is 0.
    // Starting anew takes back what it had to tell.
    void start(std::chrono::nanoseconds delay, std::chrono::nanoseconds interval = {}) { set(delay, interval); }
    void stop() { set({}, {}); }

    // True when it has fired since the last time.
    bool drain() const { return m_fileDescriptor.drain(); }

private:
    void set(std::chrono::nanoseconds delay, std::chrono::nanoseconds interval);

    FileDescriptor m_fileDescriptor;
};

}  // namespace Platform::Posix
