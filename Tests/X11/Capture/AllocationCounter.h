// Counts the allocations of this test program's C++ code (operator new), in all threads.
#pragma once

#include <cstdint>

namespace CaptureTests {

std::uint64_t allocationCount();

}  // namespace CaptureTests
