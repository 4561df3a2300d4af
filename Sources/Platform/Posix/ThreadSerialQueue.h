// Serial queues on threads of their own. The thread starts with the first task.
#pragma once

#include "Platform/SerialQueue.h"

namespace Platform::Posix {

class ThreadSerialQueues final : public SerialQueues {
public:
    std::unique_ptr<SerialQueue> makeSerialQueue(std::string label) override;
};

}  // namespace Platform::Posix
