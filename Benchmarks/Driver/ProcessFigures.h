// What the kernel counts about a process of this user. All threads count. Throws when
// there is no such process.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>

namespace Benchmarks {

// Time on a processor, of threads that have ended too. Exact to the nanosecond.
std::chrono::nanoseconds processorTime(pid_t);

// How often each living thread gave up the processor of itself, by "name/id": each time
// it runs again is a wake-up.
std::map<std::string, long> voluntarySwitches(pid_t);

// Memory in use, pages of files included.
long residentBytes(pid_t);
// The same without the pages of files, which only say how much code has run.
long ownBytes(pid_t);

struct TimerDescriptors {
    int open = 0;
    int armed = 0;
};
TimerDescriptors timerDescriptors(pid_t);

// Time on all processors of the machine since it started, idle and waiting left out.
std::chrono::nanoseconds machineProcessorTime();

// Time that the host of a virtual machine gave to others while a processor of this one had
// something to do: everything took that much longer.
std::chrono::nanoseconds stolenTime();

}  // namespace Benchmarks
