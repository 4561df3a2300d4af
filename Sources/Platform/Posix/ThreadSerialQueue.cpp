#include "Platform/Posix/ThreadSerialQueue.h"

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "Platform/TaskRing.h"

namespace Platform::Posix {
namespace {

class ThreadSerialQueue final : public SerialQueue {
public:
    explicit ThreadSerialQueue(std::string label) : m_label(std::move(label)) { }

    ~ThreadSerialQueue() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
        }
        m_wakeUp.notify_one();
        if (m_thread.joinable())
            m_thread.join();
    }

    void async(Task task) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_tasks.push(std::move(task));
            if (!m_thread.joinable())
                m_thread = std::thread([this] { runTasks(); });
        }
        m_wakeUp.notify_one();
    }

private:
    void runTasks()
    {
        // Linux allows 15 bytes; the label's end tells more than its start.
        constexpr std::size_t longestName = 15;
        const auto name = m_label.size() > longestName ? m_label.substr(m_label.size() - longestName) : m_label;
        pthread_setname_np(pthread_self(), name.c_str());

        std::unique_lock lock(m_mutex);
        while (true) {
            m_wakeUp.wait(lock, [this] { return m_isEnding || !m_tasks.isEmpty(); });
            if (m_isEnding)
                return;
            Task task = m_tasks.pop();
            lock.unlock();
            task();
            task = Task();
            lock.lock();
        }
    }

    const std::string m_label;
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    TaskRing m_tasks;
    bool m_isEnding = false;
    std::thread m_thread;
};

}  // namespace

std::unique_ptr<SerialQueue> ThreadSerialQueues::makeSerialQueue(std::string label) { return std::make_unique<ThreadSerialQueue>(std::move(label)); }

}  // namespace Platform::Posix
