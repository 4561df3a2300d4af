#pragma once

#include <span>

#include "Platform/Screens.h"

namespace Tarnwick {

// The screen that holds the point (desktop space), else the nearest; nothing without screens.
const Platform::Screen* screenAt(std::span<const Platform::Screen>, Platform::Point);

// The smallest rectangle that holds all screens, in capture space; empty without screens.
Platform::Rect desktopBounds(std::span<const Platform::Screen>);

// Empty (no width or no height) where the two share nothing.
Platform::Rect intersection(const Platform::Rect&, const Platform::Rect&);

}  // namespace Tarnwick
