// A move-only callable without arguments whose target lives inside the object:
// making, queueing and running one never allocates, so the 60 Hz paths can hand
// work between threads for free. A target that does not fit does not compile.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace Platform {

class Task {
public:
    // Room for the largest job of the program, a strip capture: two rectangles,
    // two image buffers, an identifier, a weak reference and the seam's references.
    static constexpr std::size_t capacity = 256;

    Task() = default;

    template <typename Function>
    requires(!std::is_same_v<std::remove_cvref_t<Function>, Task>) Task(Function&& function)  // NOLINT(bugprone-forwarding-reference-overload)
    {
        using Target = std::remove_cvref_t<Function>;
        static_assert(sizeof(Target) <= capacity);
        static_assert(alignof(Target) <= alignof(std::max_align_t));
        static_assert(std::is_nothrow_move_constructible_v<Target>);
        new (m_storage) Target(std::forward<Function>(function));
        m_operations = &operationsOf<Target>;
    }

    Task(Task&& other) noexcept { take(other); }
    Task& operator=(Task&& other) noexcept
    {
        if (this != &other) {
            clear();
            take(other);
        }
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() { clear(); }

    explicit operator bool() const { return m_operations != nullptr; }
    void operator()() { m_operations->run(m_storage); }

private:
    struct Operations {
        void (*run)(void*);
        void (*moveTo)(void* from, void* to);
        void (*destroy)(void*);
    };

    template <typename Target>
    static constexpr Operations operationsOf = {
        [](void* target) { (*static_cast<Target*>(target))(); },
        [](void* from, void* to) {
            new (to) Target(std::move(*static_cast<Target*>(from)));
            static_cast<Target*>(from)->~Target();
        },
        [](void* target) { static_cast<Target*>(target)->~Target(); },
    };

    void take(Task& other) noexcept
    {
        if (other.m_operations == nullptr)
            return;
        other.m_operations->moveTo(other.m_storage, m_storage);
        m_operations = std::exchange(other.m_operations, nullptr);
    }

    void clear() noexcept
    {
        if (m_operations != nullptr)
            std::exchange(m_operations, nullptr)->destroy(m_storage);
    }

    alignas(std::max_align_t) std::byte m_storage[capacity];
    const Operations* m_operations = nullptr;
};

}  // namespace Platform
