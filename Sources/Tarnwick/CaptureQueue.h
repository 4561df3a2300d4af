// The serial queue "tarnwick.capture" that all crosshair views share, made on first use.
#pragma once

#include <memory>

#include "Platform/SerialQueue.h"

namespace Tarnwick {

class CaptureQueue {
public:
    explicit CaptureQueue(Platform::SerialQueues& queues) : m_queues(queues) { }

    // Main thread only.
    void async(Platform::Task task)
    {
        if (m_queue == nullptr)
            m_queue = m_queues.makeSerialQueue("tarnwick.capture");
        m_queue->async(std::move(task));
    }

private:
    Platform::SerialQueues& m_queues;
    std::unique_ptr<Platform::SerialQueue> m_queue;
};

}  // namespace Tarnwick
