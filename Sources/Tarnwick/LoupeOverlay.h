// What the controller asks of the loupe: a floating window that follows the pointer
// and calls its dismiss callback when the user wants it gone. Main thread only.
#pragma once

#include <functional>
#include <memory>

#include "Platform/Geometry.h"

namespace Tarnwick {

class LoupeOverlay {
public:
    // Orders out.
    virtual ~LoupeOverlay() = default;

    // Places the loupe around the pointer (desktop space) and captures what lies beneath.
    virtual void updateCursor(Platform::Point mouseLocation) = 0;

    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
};

using LoupeOverlayFactory = std::function<std::unique_ptr<LoupeOverlay>(std::function<void()> onDismiss)>;

}  // namespace Tarnwick
