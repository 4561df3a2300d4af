#include "Platform/Posix/ThreadSerialQueue.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace Platform::Posix {
namespace {

class ThreadSerialQueueTest : public testing::Test {
protected:
    // Waits until everything handed to the queue before has run.
    void drain()
    {
        std::promise<void> reached;
        queue->async([&reached] { reached.set_value(); });
        reached.get_future().wait();
    }

    ThreadSerialQueues queues;
    std::unique_ptr<SerialQueue> queue = queues.makeSerialQueue("tarnwick.capture");
};

TEST_F(ThreadSerialQueueTest, RunsTasksInOrderOnOneOtherThread)
{
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 100; ++i) {
        queue->async([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    }
    drain();
    ASSERT_EQ(order.size(), 100U);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    for (const auto& thread : threads)
        EXPECT_EQ(thread, threads.front());
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST_F(ThreadSerialQueueTest, RunsOneTaskAtATimeForManyThreads)
{
    int unguarded = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 250; ++j)
                queue->async([&unguarded] { ++unguarded; });
        });
    }
    for (auto& thread : threads)
        thread.join();
    drain();
    EXPECT_EQ(unguarded, 1000);
}

TEST_F(ThreadSerialQueueTest, RunsATaskThatATaskAdds)
{
    std::promise<int> result;
    queue->async([&] { queue->async([&result] { result.set_value(7); }); });
    EXPECT_EQ(result.get_future().get(), 7);
}

TEST_F(ThreadSerialQueueTest, WaitsForTheRunningTaskWhenItEnds)
{
    std::promise<void> started;
    std::atomic<bool> hasFinished = false;
    queue->async([&] {
        started.set_value();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        hasFinished = true;
    });
    started.get_future().wait();
    queue.reset();
    EXPECT_TRUE(hasFinished);
}

TEST_F(ThreadSerialQueueTest, DropsTheWaitingTasksWhenItEnds)
{
    int finished = 0;
    const auto resource = std::make_shared<int>(1);
    for (int i = 0; i < 1000; ++i) {
        queue->async([&finished, resource] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            ++finished;
        });
    }
    queue.reset();
    EXPECT_LT(finished, 1000);
    EXPECT_EQ(resource.use_count(), 1);
}

TEST_F(ThreadSerialQueueTest, EndsATaskBeforeTheNextOneRuns)
{
    const auto resource = std::make_shared<int>(1);
    std::promise<long> useCount;
    queue->async([resource] { EXPECT_EQ(*resource, 1); });
    queue->async([&] { useCount.set_value(resource.use_count()); });
    EXPECT_EQ(useCount.get_future().get(), 1);
}

TEST_F(ThreadSerialQueueTest, NamesItsThreadAfterTheEndOfItsLabel)
{
    std::promise<std::string> name;
    queue->async([&name] {
        char text[16] = {};
        pthread_getname_np(pthread_self(), text, sizeof text);
        name.set_value(text);
    });
    EXPECT_EQ(name.get_future().get(), "arnwick.capture");
}

TEST_F(ThreadSerialQueueTest, EndsWithoutEverHavingRunATask)
{
    queue.reset();
    EXPECT_EQ(queue, nullptr);
}

}  // namespace
}  // namespace Platform::Posix
