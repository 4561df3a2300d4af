// The monitors. Main thread only.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Platform/Geometry.h"
#include "Platform/Token.h"

namespace Platform {

struct Screen {
    std::string name;
    Rect frame;        // desktop space
    double scale = 1;  // device pixels per point

    friend bool operator==(const Screen&, const Screen&) = default;
};

class Screens {
public:
    virtual ~Screens() = default;

    // The primary screen comes first. Valid until the screens change. Asks nobody.
    virtual std::span<const Screen> screens() = 0;

    // The screen of the active window; without one, the pointer's; without that, the
    // primary; nothing when there is no screen at all. Asks the window system.
    virtual std::optional<Screen> mainScreen() = 0;

    // Calls back after screens() has changed.
    virtual Token observe(std::function<void()> changed) = 0;
};

}  // namespace Platform
