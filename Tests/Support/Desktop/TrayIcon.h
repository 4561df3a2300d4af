// A tray icon as a person sees it: where the panel's picture differs from the one without.
#pragma once

#include <optional>

#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"

namespace TestSupport {

// The smallest rectangle around all pixels within `panel` that differ; nothing where none does.
std::optional<Platform::X11::DeviceRect> changedPart(
    const Platform::Image& before, const Platform::Image& after, const Platform::X11::DeviceRect& panel);

// Waits until something came into the panel and the screen is at rest. Throws when nothing comes.
Platform::X11::DeviceRect waitForIcon(const Desktop&, const Platform::Image& without, const Platform::X11::DeviceRect& panel);

// A real click into the middle of it. Returns when it has reached its window: where a
// window manager holds a press back to look at it first, the button would else seem to be
// let go where the pointer moved next.
void click(Desktop&, const Platform::X11::DeviceRect& icon, std::uint8_t button);

}  // namespace TestSupport
