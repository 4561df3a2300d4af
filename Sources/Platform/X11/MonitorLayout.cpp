#include "Platform/X11/MonitorLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Platform::X11 {

DeviceRect intersection(const DeviceRect& a, const DeviceRect& b)
{
    const int x = std::max(a.x, b.x);
    const int y = std::max(a.y, b.y);
    return {x, y, std::max(0, std::min(a.right(), b.right()) - x), std::max(0, std::min(a.bottom(), b.bottom()) - y)};
}

DeviceRect boundsOf(const DeviceRect& a, const DeviceRect& b)
{
    const int x = std::min(a.x, b.x);
    const int y = std::min(a.y, b.y);
    return {x, y, std::max(a.right(), b.right()) - x, std::max(a.bottom(), b.bottom()) - y};
}

int snap(double value)
{
    constexpr double arithmeticError = 1e-6;
    constexpr double furthest = 1 << 29;
    return static_cast<int>(std::clamp(std::floor(value + 0.5 + arithmeticError), -furthest, furthest));
}

std::vector<Screen> MonitorLayout::screens() const
{
    std::vector<Screen> screens;
    for (const auto& monitor : m_monitors) {
        const auto frame = captureFrame(monitor);
        screens.push_back({monitor.name, {frame.x, primaryHeight() - frame.y - frame.height, frame.width, frame.height}, monitor.scale});
    }
    return screens;
}

const Monitor* MonitorLayout::monitorAt(DevicePoint point) const
{
    const Monitor* nearest = nullptr;
    long nearestDistance = std::numeric_limits<long>::max();
    for (const auto& monitor : m_monitors) {
        const long dx = std::max({0, monitor.frame.x - point.x, point.x - monitor.frame.right() + 1});
        const long dy = std::max({0, monitor.frame.y - point.y, point.y - monitor.frame.bottom() + 1});
        if (dx * dx + dy * dy < nearestDistance) {
            nearestDistance = dx * dx + dy * dy;
            nearest = &monitor;
        }
    }
    return nearest;
}

Point MonitorLayout::desktopPoint(DevicePoint point) const
{
    const auto* monitor = monitorAt(point);
    if (monitor == nullptr)
        return {static_cast<double>(point.x), -static_cast<double>(point.y)};
    const auto frame = captureFrame(*monitor);
    return {frame.x + (point.x - monitor->frame.x) / monitor->scale, primaryHeight() - frame.y - (point.y - monitor->frame.y) / monitor->scale};
}

DeviceRect MonitorLayout::deviceRectOfDesktop(const Rect& rect) const
{
    return deviceRectOfCapture({rect.x, primaryHeight() - rect.y - rect.height, rect.width, rect.height});
}

DeviceRect MonitorLayout::deviceRectOfCapture(const Rect& rect) const
{
    double originX = 0;
    double originY = 0;
    double scale = 1;
    DevicePoint origin;
    if (const auto* monitor = monitorOfCapture(rect)) {
        const auto frame = captureFrame(*monitor);
        originX = frame.x;
        originY = frame.y;
        scale = monitor->scale;
        origin = {monitor->frame.x, monitor->frame.y};
    }
    const int left = snap((rect.x - originX) * scale);
    const int top = snap((rect.y - originY) * scale);
    const int right = snap((rect.x + rect.width - originX) * scale);
    const int bottom = snap((rect.y + rect.height - originY) * scale);
    return {origin.x + left, origin.y + top, right - left, bottom - top};
}

DeviceRect MonitorLayout::bounds() const
{
    DeviceRect bounds;
    for (const auto& monitor : m_monitors)
        bounds = bounds.isEmpty() ? monitor.frame : boundsOf(bounds, monitor.frame);
    return bounds;
}

double MonitorLayout::scaleOfCapture(const Rect& rect) const
{
    const auto* monitor = monitorOfCapture(rect);
    return monitor != nullptr ? monitor->scale : 1;
}

const Monitor* MonitorLayout::monitorOfCapture(const Rect& rect) const
{
    const double x = rect.x + rect.width / 2;
    const double y = rect.y + rect.height / 2;
    const Monitor* nearest = nullptr;
    double nearestDistance = std::numeric_limits<double>::infinity();
    for (const auto& monitor : m_monitors) {
        const auto frame = captureFrame(monitor);
        const double dx = std::max({0.0, frame.x - x, x - frame.x - frame.width});
        const double dy = std::max({0.0, frame.y - y, y - frame.y - frame.height});
        if (dx * dx + dy * dy < nearestDistance) {
            nearestDistance = dx * dx + dy * dy;
            nearest = &monitor;
        }
    }
    return nearest;
}

double MonitorLayout::primaryHeight() const { return m_monitors.empty() ? 0 : m_monitors.front().frame.height / m_monitors.front().scale; }

// Monitors are placed by the primary's scale and measured by their own.
Rect MonitorLayout::captureFrame(const Monitor& monitor) const
{
    const auto& primary = m_monitors.front();
    return {(monitor.frame.x - primary.frame.x) / primary.scale, (monitor.frame.y - primary.frame.y) / primary.scale,
        monitor.frame.width / monitor.scale, monitor.frame.height / monitor.scale};
}

}  // namespace Platform::X11
