// Waiting for something to come true, with a deadline.
#pragma once

#include <chrono>
#include <thread>

namespace TestSupport {

// Asks every millisecond. False when the deadline passed first.
template <typename Condition> bool waitUntil(Condition&& condition, std::chrono::milliseconds deadline = std::chrono::seconds(10))
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace TestSupport
