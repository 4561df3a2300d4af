// Serial queues whose tasks run when the test says so, on the test's thread.
//
// Lines: "serialQueues.make LABEL".
#pragma once

#include <vector>

#include "Platform/SerialQueue.h"
#include "Platform/TaskRing.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeSerialQueues : public Platform::SerialQueues {
public:
    explicit FakeSerialQueues(CallLog& log) : m_log(log) { }

    std::unique_ptr<Platform::SerialQueue> makeSerialQueue(std::string label) override;

    // Runs the first waiting task of the oldest queue that has one. False when none waits.
    bool runNext();
    int runAll();
    int waitingTasks() const;

private:
    class Queue;

    CallLog& m_log;
    std::vector<Queue*> m_queues;
};

}  // namespace TestSupport
