// Geometry of the seam. All values are points (device-independent pixels); an
// interface's header says in which of these spaces its values lie:
//
//   desktop space  origin at the bottom-left corner of the primary display, y
//                  grows upward; pointer positions and window frames
//   capture space  origin at the top-left corner of the primary display, y
//                  grows downward; rectangles to capture
//   view space     origin at the bottom-left corner of one window, y grows
//                  upward; what a window shows
#pragma once

namespace Platform {

struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

// (x, y) is the corner with the smallest coordinates: bottom-left in desktop and
// view space, top-left in capture space.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    Point origin() const { return {x, y}; }
    Size size() const { return {width, height}; }

    friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace Platform
