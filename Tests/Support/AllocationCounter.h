// Counts what the C++ code of this test program allocates, on any thread, since it was made.
#pragma once

namespace TestSupport {

class AllocationCounter {
public:
    AllocationCounter();

    long count() const;

private:
    const long m_before;
};

}  // namespace TestSupport
