#include "Support/Desktop/TrayIcon.h"

#include <algorithm>
#include <stdexcept>

#include "Support/Desktop/PopupMenus.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using Platform::X11::DeviceRect;

std::optional<DeviceRect> changedPart(const Platform::Image& before, const Platform::Image& after, const DeviceRect& panel)
{
    int left = panel.x + panel.width;
    int top = panel.y + panel.height;
    int right = panel.x;
    int bottom = panel.y;
    for (int y = panel.y; y < panel.y + panel.height; ++y) {
        for (int x = panel.x; x < panel.x + panel.width; ++x) {
            if (before.pixel(x, y) == after.pixel(x, y))
                continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    }
    if (right <= left)
        return std::nullopt;
    return DeviceRect{left, top, right - left, bottom - top};
}

DeviceRect waitForIcon(const Desktop& desktop, const Platform::Image& without, const DeviceRect& panel)
{
    if (!waitUntil([&] { return changedPart(without, desktop.screenshot(), panel).has_value(); }))
        throw std::runtime_error("no icon comes into the panel");
    const auto part = changedPart(without, desktop.screenshotAtRest(), panel);
    if (!part)
        throw std::runtime_error("the icon left the panel");
    return *part;
}

void click(Desktop& desktop, const DeviceRect& icon, std::uint8_t button)
{
    desktop.pointer().moveTo(icon.x + icon.width / 2, icon.y + icon.height / 2);
    desktop.pointer().click(button);
    auto& connection = desktop.connection();
    if (!waitUntil([&] { return !isPointerTaken(connection) || !openMenus(connection).empty(); }))
        throw std::runtime_error("a click on the icon does not come to an end");
}

}  // namespace TestSupport
