// What the demonstration paints, and how it writes what it saw.
#pragma once

#include <filesystem>

#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"

namespace Demonstration {

// A sunset over hills, for the wallpaper.
Platform::Image landscape(int width, int height);
// A page of text, and a chart of colours.
Platform::Image page(int width, int height);
Platform::Image colourChart(int width, int height);

// A part of a picture, and the surroundings of a pixel, enlarged with hard edges.
Platform::Image part(const Platform::Image&, const Platform::X11::DeviceRect&);
Platform::Image closeUp(const Platform::Image&, Platform::X11::DevicePoint);

// As PNG. Throws when the file cannot be written.
void write(const std::filesystem::path&, const Platform::Image&);

}  // namespace Demonstration
