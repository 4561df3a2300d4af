#include "Platform/Task.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <utility>

#include "Platform/TaskRing.h"

namespace Platform {
namespace {

// Counts the living copies of a target.
struct Counted {
    explicit Counted(int& count) : living(&count) { ++*living; }
    Counted(Counted&& other) noexcept : living(other.living) { ++*living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --*living; }
    void operator()() const { }

    int* living;
};

TEST(Task, IsEmptyUntilItHasATarget)
{
    EXPECT_FALSE(Task());
    EXPECT_TRUE(Task([] {}));
}

TEST(Task, RunsItsTargetEachTimeItIsCalled)
{
    int calls = 0;
    Task task([&calls] { ++calls; });
    task();
    task();
    EXPECT_EQ(calls, 2);
}

TEST(Task, TakesTargetsThatCannotBeCopied)
{
    int result = 0;
    Task task([number = std::make_unique<int>(42), &result] { result = *number; });
    task();
    EXPECT_EQ(result, 42);
}

TEST(Task, TakesATargetOf256Bytes)
{
    std::array<char, 248> bytes{};
    bytes[247] = 7;
    char result = 0;
    Task task([bytes, &result] { result = bytes[247]; });
    task();
    EXPECT_EQ(result, 7);
}

TEST(Task, MovesItsTargetAlong)
{
    int living = 0;
    Task first{Counted(living)};
    EXPECT_EQ(living, 1);
    Task second(std::move(first));
    EXPECT_EQ(living, 1);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(second);
}

TEST(Task, EndsItsTargetWhenItIsReplacedOrGoes)
{
    int living = 0;
    {
        Task task{Counted(living)};
        task = Task([] {});
        EXPECT_EQ(living, 0);
        task = Task(Counted(living));
        EXPECT_EQ(living, 1);
    }
    EXPECT_EQ(living, 0);
}

TEST(Task, KeepsItsTargetWhenItIsMovedIntoItself)
{
    int living = 0;
    Task task{Counted(living)};
    auto& same = task;
    task = std::move(same);
    EXPECT_TRUE(task);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(living, 1);
}

TEST(TaskRing, GivesTasksBackInOrder)
{
    TaskRing ring;
    EXPECT_TRUE(ring.isEmpty());
    std::vector<int> order;
    for (int i = 0; i < 40; ++i)
        ring.push([&order, i] { order.push_back(i); });
    while (!ring.isEmpty())
        ring.pop()();
    ASSERT_EQ(order.size(), 40U);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(TaskRing, KeepsTheOrderWhenItGrowsWithItsStartInTheMiddle)
{
    TaskRing ring;
    std::vector<int> order;
    for (int i = 0; i < 16; ++i)
        ring.push([&order, i] { order.push_back(i); });
    for (int i = 0; i < 10; ++i)
        ring.pop()();
    for (int i = 16; i < 40; ++i)
        ring.push([&order, i] { order.push_back(i); });
    while (!ring.isEmpty())
        ring.pop()();
    ASSERT_EQ(order.size(), 40U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(order.back(), 39);
}

TEST(TaskRing, EndsThePoppedTarget)
{
    TaskRing ring;
    int living = 0;
    ring.push(Counted(living));
    ring.pop();
    EXPECT_EQ(living, 0);
}

TEST(TaskRing, EndsWhatStillWaitsWhenItGoes)
{
    int living = 0;
    {
        TaskRing ring;
        ring.push(Counted(living));
        EXPECT_EQ(living, 1);
    }
    EXPECT_EQ(living, 0);
}

}  // namespace
}  // namespace Platform
