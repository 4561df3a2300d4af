// A set of device pixels as rectangles that do not overlap. It keeps its memory when
// it is filled anew.
#pragma once

#include <span>
#include <vector>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

class Region {
public:
    void clear() { m_rects.clear(); }
    bool isEmpty() const { return m_rects.empty(); }
    std::span<const DeviceRect> rects() const { return m_rects; }
    bool contains(DevicePoint) const;
    bool encloses(const DeviceRect&) const;

    void add(const DeviceRect&);
    void subtract(const DeviceRect&);

    // Appends the parts of the region that lie in the rectangle.
    void appendIntersection(const DeviceRect&, std::vector<DeviceRect>& parts) const;

private:
    std::vector<DeviceRect> m_rects;
    std::vector<DeviceRect> m_spare;
};

// True when every pixel of `inner` lies in `outer`.
inline bool encloses(const DeviceRect& outer, const DeviceRect& inner) { return intersection(outer, inner) == inner; }

}  // namespace Platform::X11
