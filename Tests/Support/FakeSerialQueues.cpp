#include "Support/FakeSerialQueues.h"

#include <utility>

namespace TestSupport {

class FakeSerialQueues::Queue final : public Platform::SerialQueue {
public:
    explicit Queue(FakeSerialQueues& queues) : m_queues(queues) { m_queues.m_queues.push_back(this); }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;
    ~Queue() override { std::erase(m_queues.m_queues, this); }

    void async(Platform::Task task) override
    {
        m_tasks.push(std::move(task));
        ++m_count;
    }

    int count() const { return m_count; }
    // Empty where none waits.
    Platform::Task pop()
    {
        if (m_count == 0)
            return {};
        --m_count;
        return m_tasks.pop();
    }

private:
    FakeSerialQueues& m_queues;
    Platform::TaskRing m_tasks;
    int m_count = 0;
};

std::unique_ptr<Platform::SerialQueue> FakeSerialQueues::makeSerialQueue(std::string label)
{
    m_log.add("serialQueues.make " + label);
    return std::make_unique<Queue>(*this);
}

bool FakeSerialQueues::runNext()
{
    for (auto* queue : m_queues) {
        if (auto task = queue->pop()) {
            task();
            return true;
        }
    }
    return false;
}

int FakeSerialQueues::runAll()
{
    int count = 0;
    while (runNext())
        ++count;
    return count;
}

int FakeSerialQueues::waitingTasks() const
{
    int count = 0;
    for (const auto* queue : m_queues)
        count += queue->count();
    return count;
}

}  // namespace TestSupport
