// What the demonstration paints, and how it writes what it saw.
#pragma once

#include <filesystem>

#include "Platform/Image.h"

namespace Demonstration {

// A sunset over hills, for the wallpaper.
Platform::Image landscape(int width, int height);
// A page of text, and a chart of colours.
Platform::Image page(int width, int height);
Platform::Image colourChart(int width, int height);

// The surroundings of a pixel, enlarged with hard edges.
Platform::Image closeUp(const Platform::Image&, int x, int y);

// As PNG. Throws when the file cannot be written.
void write(const std::filesystem::path&, const Platform::Image&);

}  // namespace Demonstration
