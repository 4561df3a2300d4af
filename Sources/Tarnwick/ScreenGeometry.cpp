#include "Tarnwick/ScreenGeometry.h"

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

Platform::Rect desktopBounds(std::span<const Platform::Screen> screens)
{
    if (screens.empty())
        return {};
    const auto& primary = screens.front().frame;
    double left = primary.x;
    double bottom = primary.y;
    double right = primary.x + primary.width;
    double top = primary.y + primary.height;
    for (const auto& screen : screens) {
        left = std::min(left, screen.frame.x);
        bottom = std::min(bottom, screen.frame.y);
        right = std::max(right, screen.frame.x + screen.frame.width);
        top = std::max(top, screen.frame.y + screen.frame.height);
    }
    return {left, primary.height - top, right - left, top - bottom};
}

Platform::Rect intersection(const Platform::Rect& a, const Platform::Rect& b)
{
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const double right = std::min(a.x + a.width, b.x + b.width);
    const double bottom = std::min(a.y + a.height, b.y + b.height);
    return {left, top, std::max(0.0, right - left), std::max(0.0, bottom - top)};
}

}  // namespace Tarnwick
