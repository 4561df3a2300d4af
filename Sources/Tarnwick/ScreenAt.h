#pragma once

#include <span>

#include "Platform/Screens.h"

namespace Tarnwick {

// The screen that holds the point (desktop space), else the nearest; nothing without screens.
const Platform::Screen* screenAt(std::span<const Platform::Screen>, Platform::Point);

}  // namespace Tarnwick
