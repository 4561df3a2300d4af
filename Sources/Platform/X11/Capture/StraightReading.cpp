#include "Platform/X11/Capture/StraightReading.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

// Pixels of a part must follow each other in the picture.
bool isUnbroken(const DeviceRect& part, const DeviceRect& area) { return area.height == 1 || part.width == area.width; }

bool isReadable(const PaintStep& step, const DeviceRect& area, std::uint8_t depth)
{
    const bool isPlain = step.window == XCB_WINDOW_NONE ? step.isOnScreen : !step.isBlended && step.depth == depth;
    return isPlain && isUnbroken(step.area, area);
}

std::size_t offsetOf(const DeviceRect& part, const DeviceRect& area)
{
    return static_cast<std::size_t>(part.y - area.y) * static_cast<std::size_t>(area.width) + static_cast<std::size_t>(part.x - area.x);
}

// The rectangle around what the screen shows.
DeviceRect shownByScreen(std::span<const PaintStep> steps)
{
    DeviceRect shown;
    for (const auto& step : steps) {
        if (step.isOnScreen)
            shown = shown.isEmpty() ? step.area : boundsOf(shown, step.area);
    }
    return shown;
}

}  // namespace

std::optional<std::size_t> addStraight(
    CaptureServer& server, Painter& painter, ImageReader& images, std::span<const PaintStep> steps, const DeviceRect& area)
{
    // Where the server draws in another memory than ours, each part is brought over by itself.
    constexpr std::size_t mostParts = 8;
    const auto depth = server.connection().screen().root_depth;
    if (steps.size() > mostParts || !std::all_of(steps.begin(), steps.end(), [&](const PaintStep& step) { return isReadable(step, area, depth); }))
        return std::nullopt;
    const auto picture = images.addPicture(area);
    // In one piece, and then the windows: what it has between its parts is theirs.
    if (const auto shown = shownByScreen(steps); !shown.isEmpty())
        images.addPart(server.connection().root(), shown, offsetOf(shown, area));
    for (const auto& step : steps) {
        if (!step.isOnScreen)
            images.addPart(painter.pixmapOf(step), {step.source.x, step.source.y, step.area.width, step.area.height}, offsetOf(step.area, area));
    }
    return picture;
}

}  // namespace Platform::X11
