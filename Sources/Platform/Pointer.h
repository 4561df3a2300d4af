// The pointer. Main thread only.
#pragma once

#include <optional>

#include "Platform/Geometry.h"

namespace Platform {

class Pointer {
public:
    virtual ~Pointer() = default;

    // In desktop space, asked afresh at every call (one round trip on X11). Nothing
    // means "not known yet": a compositor may tell only once the pointer is over a
    // window of this program. On X11 there is always an answer.
    virtual std::optional<Point> location() = 0;
};

// Hides and shows the pointer's picture everywhere. Calls are counted: each hide()
// wants its own show(). The callers keep the balance. A process that dies gets its
// cursor back from the window system.
class Cursor {
public:
    virtual ~Cursor() = default;

    virtual void hide() = 0;
    virtual void show() = 0;
};

}  // namespace Platform
