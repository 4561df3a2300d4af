// The loop of the main thread. Every callback of every interface of the seam
// arrives on it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Platform/Task.h"

namespace Platform {

// Destroying a timer stops it; its callback does not run afterwards. The callback may
// destroy its own timer.
class Timer {
public:
    virtual ~Timer() = default;
};

class MainLoop {
public:
    virtual ~MainLoop() = default;

    // Runs the task on the main thread in a later turn of the loop, in the order of
    // posting. May be called on any thread. A task posted by a task runs in a later turn.
    virtual void post(Task) = 0;

    // Calls back on the main thread every `interval` (exact to the nanosecond on
    // average), also while a menu is open or a modal loop runs. Firings that the main
    // thread was too late for are dropped, not made up for. Main thread only.
    virtual std::unique_ptr<Timer> repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired) = 0;
};

}  // namespace Platform
