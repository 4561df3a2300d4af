#pragma once

#include <cstdint>

namespace Tarnwick {

// The number by which a capture names a window. What is no unsigned 32-bit value is a
// fatal error.
std::uint32_t windowIdentifier(std::int64_t windowNumber);

}  // namespace Tarnwick
