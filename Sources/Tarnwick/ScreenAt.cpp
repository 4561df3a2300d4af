#include "Tarnwick/ScreenAt.h"

#include <algorithm>
#include <limits>

namespace Tarnwick {

const Platform::Screen* screenAt(std::span<const Platform::Screen> screens, Platform::Point point)
{
    const Platform::Screen* nearest = nullptr;
    double nearestDistance = std::numeric_limits<double>::infinity();
    for (const auto& screen : screens) {
        const auto& frame = screen.frame;
        const double dx = std::max({0.0, frame.x - point.x, point.x - frame.x - frame.width});
        const double dy = std::max({0.0, frame.y - point.y, point.y - frame.y - frame.height});
        if (dx * dx + dy * dy < nearestDistance) {
            nearestDistance = dx * dx + dy * dy;
            nearest = &screen;
        }
    }
    return nearest;
}

}  // namespace Tarnwick
