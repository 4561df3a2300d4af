#include "Platform/Posix/KernelTimer.h"

#include <sys/timerfd.h>

namespace Platform::Posix {
namespace {

timespec timespecOf(std::chrono::nanoseconds duration)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {.tv_sec = seconds.count(), .tv_nsec = (duration - seconds).count()};
}

}  // namespace

KernelTimer::KernelTimer() : m_fileDescriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC), "timerfd_create") { }

void KernelTimer::set(std::chrono::nanoseconds delay, std::chrono::nanoseconds interval)
{
    const itimerspec schedule{.it_interval = timespecOf(interval), .it_value = timespecOf(delay)};
    orFatal(timerfd_settime(fileDescriptor(), 0, &schedule, nullptr), "timerfd_settime");
}

}  // namespace Platform::Posix
