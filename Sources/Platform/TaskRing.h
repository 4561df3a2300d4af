// A first-in, first-out queue of tasks in one block of memory. It grows when it
// is full and never shrinks, so a queue in steady use does not allocate. Not
// thread-safe: its owner locks.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Platform/Task.h"

namespace Platform {

class TaskRing {
public:
    bool isEmpty() const { return m_count == 0; }

    void push(Task task)
    {
        if (m_count == m_slots.size())
            grow();
        m_slots[(m_first + m_count) % m_slots.size()] = std::move(task);
        ++m_count;
    }

    // The queue must not be empty.
    Task pop()
    {
        Task task = std::move(m_slots[m_first]);
        m_first = (m_first + 1) % m_slots.size();
        --m_count;
        return task;
    }

private:
    static constexpr std::size_t initialSlots = 16;

    void grow()
    {
        std::vector<Task> slots(m_slots.empty() ? initialSlots : m_slots.size() * 2);
        for (std::size_t i = 0; i < m_count; ++i)
            slots[i] = std::move(m_slots[(m_first + i) % m_slots.size()]);
        m_slots = std::move(slots);
        m_first = 0;
    }

    std::vector<Task> m_slots;
    std::size_t m_first = 0;
    std::size_t m_count = 0;
};

}  // namespace Platform
