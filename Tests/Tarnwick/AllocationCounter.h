// Counts what this test program allocates, on any thread, while a counter exists.
#pragma once

namespace Tarnwick {

class AllocationCounter {
public:
    AllocationCounter();
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    long count() const;
};

}  // namespace Tarnwick
