#include "Tarnwick/WindowIdentifier.h"

#include <limits>
#include <string>

#include "Platform/FatalError.h"

namespace Tarnwick {

std::uint32_t windowIdentifier(std::int64_t windowNumber)
{
    if (windowNumber < 0 || windowNumber > std::numeric_limits<std::uint32_t>::max())
        Platform::fatalError("the window number is no unsigned 32-bit value", std::to_string(windowNumber));
    return static_cast<std::uint32_t>(windowNumber);
}

}  // namespace Tarnwick
