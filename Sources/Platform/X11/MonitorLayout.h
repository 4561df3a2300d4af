// How points and device pixels relate: the monitors of one moment and the exact
// conversions between the seam's spaces and device pixels of the X screen (origin
// top-left, y down). Plain values, any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Geometry.h"
#include "Platform/Screens.h"

namespace Platform::X11 {

// Device pixels of the X screen.
struct DevicePoint {
    int x = 0;
    int y = 0;

    friend bool operator==(const DevicePoint&, const DevicePoint&) = default;
};

struct DeviceRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool contains(DevicePoint point) const { return point.x >= x && point.x < right() && point.y >= y && point.y < bottom(); }

    friend bool operator==(const DeviceRect&, const DeviceRect&) = default;
};

DeviceRect intersection(const DeviceRect&, const DeviceRect&);

// The smallest rectangle around both, neither of which may be empty.
DeviceRect boundsOf(const DeviceRect&, const DeviceRect&);

struct Monitor {
    std::string name;
    DeviceRect frame;
    double scale = 1;  // device pixels per point

    friend bool operator==(const Monitor&, const Monitor&) = default;
};

class MonitorLayout {
public:
    MonitorLayout() = default;
    // The primary monitor comes first.
    explicit MonitorLayout(std::vector<Monitor> monitors) : m_monitors(std::move(monitors)) { }

    const std::vector<Monitor>& monitors() const { return m_monitors; }
    std::vector<Screen> screens() const;

    // The monitor that holds the pixel, else the nearest; nothing without monitors.
    const Monitor* monitorAt(DevicePoint) const;

    // The desktop-space point of a device pixel's top-left corner.
    Point desktopPoint(DevicePoint) const;

    // A rectangle in device pixels, by the scale of the monitor that its centre lies on
    // (else the nearest): both edges are converted first, then rounded, halves up. Between
    // monitors of unequal scale that monitor's grid goes on past its edges.
    DeviceRect deviceRectOfDesktop(const Rect& desktopRect) const;
    DeviceRect deviceRectOfCapture(const Rect& captureRect) const;

    // The smallest rectangle around all monitors; empty without them.
    DeviceRect bounds() const;

    // The scale that the two functions above use for that rectangle.
    double scaleOfCapture(const Rect& captureRect) const;

    friend bool operator==(const MonitorLayout&, const MonitorLayout&) = default;

private:
    const Monitor* monitorOfCapture(const Rect& captureRect) const;
    double primaryHeight() const;
    Rect captureFrame(const Monitor&) const;

    std::vector<Monitor> m_monitors;
};

// floor(value + 0.5), with values that differ from a half only by the error of earlier
// arithmetic taken as that half. What is further than 2^29 away comes out as that.
int snap(double value);

}  // namespace Platform::X11
