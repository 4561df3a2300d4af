// Reading what a plan wants straight from the windows and the screen, without painting
// it first: the bands of a crosshair, and all that lies in one window. For servers that share
// no canvases; with those that do, painting is one copy as well.
#pragma once

#include <optional>
#include <span>

#include "Platform/X11/Capture/ImageReader.h"
#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/Capture/Painter.h"

namespace Platform::X11 {

// The number of the picture of `area` that was added to the reader; nothing where the
// steps have to be painted. A server refuses what reaches beyond a window that has
// meanwhile become smaller: then nothing is read.
std::optional<std::size_t> addStraight(CaptureServer&, Painter&, ImageReader&, std::span<const PaintStep>, const DeviceRect& area);

}  // namespace Platform::X11
