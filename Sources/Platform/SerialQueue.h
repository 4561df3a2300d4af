// A queue that runs its tasks one after the other, in order, off the main thread.
#pragma once

#include <memory>
#include <string>

#include "Platform/Task.h"

namespace Platform {

// Destroying a queue waits for the task that runs and drops those that wait.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;

    // May be called on any thread.
    virtual void async(Task) = 0;
};

class SerialQueues {
public:
    virtual ~SerialQueues() = default;

    // `label` names the thread for debuggers and process listings.
    virtual std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) = 0;
};

}  // namespace Platform
