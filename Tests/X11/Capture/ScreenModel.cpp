#include "X11/Capture/ScreenModel.h"

#include <algorithm>
#include <stdexcept>

namespace CaptureTests {
namespace {

std::uint32_t tilePixel(const Image& tile, int x, int y)
{
    const auto wrap = [](int value, int length) { return ((value % length) + length) % length; };
    return tile.pixel(wrap(x, tile.width()), wrap(y, tile.height()));
}

std::uint32_t& at(Image& image, int x, int y)
{
    return image.pixels()[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(x)];
}

std::uint32_t channel(std::uint32_t pixel, int shift) { return (pixel >> shift) & 0xff; }

// The product of two fractions of 255, rounded to the nearest.
std::uint32_t product(std::uint32_t a, std::uint32_t b) { return (a * b * 2 + 255) / 510; }

std::uint32_t over(std::uint32_t pixel, std::uint32_t alpha, std::uint32_t beneath)
{
    const auto transparency = 255 - product(channel(pixel, 24), alpha);
    std::uint32_t result = 0;
    for (const int shift : {16, 8, 0})
        result |= std::min(255U, product(channel(pixel, shift), alpha) + product(channel(beneath, shift), transparency)) << shift;
    return result;
}

}  // namespace

std::optional<std::uint32_t> ModelWindow::pixelAt(DevicePoint point) const
{
    if (!isMapped || !outer().contains(point))
        return std::nullopt;
    const DevicePoint own = {point.x - inner.x - border, point.y - inner.y - border};
    const auto holds = [&](const DeviceRect& rect) { return rect.contains(own); };
    if (shape && std::none_of(shape->begin(), shape->end(), holds))
        return std::nullopt;
    if (!DeviceRect{0, 0, inner.width, inner.height}.contains(own))
        return borderColour;
    return tilePixel(tile, own.x, own.y);
}

std::size_t ScreenModel::indexOf(xcb_window_t id) const
{
    const auto found = std::find_if(windows.begin(), windows.end(), [id](const ModelWindow& window) { return window.id == id; });
    if (found == windows.end())
        throw std::logic_error("no such window");
    return static_cast<std::size_t>(found - windows.begin());
}

ModelWindow& ScreenModel::find(xcb_window_t id) { return windows[indexOf(id)]; }

ModelWindow ScreenModel::take(xcb_window_t id)
{
    const auto place = windows.begin() + static_cast<std::ptrdiff_t>(indexOf(id));
    auto window = std::move(*place);
    windows.erase(place);
    return window;
}

void ScreenModel::raise(xcb_window_t id) { windows.push_back(take(id)); }

void ScreenModel::lower(xcb_window_t id)
{
    auto window = take(id);
    windows.insert(windows.begin(), std::move(window));
}

void ScreenModel::placeAbove(xcb_window_t id, xcb_window_t sibling)
{
    auto window = take(id);
    windows.insert(windows.begin() + static_cast<std::ptrdiff_t>(indexOf(sibling)) + 1, std::move(window));
}

void ScreenModel::placeBelow(xcb_window_t id, xcb_window_t sibling)
{
    auto window = take(id);
    windows.insert(windows.begin() + static_cast<std::ptrdiff_t>(indexOf(sibling)), std::move(window));
}

Image ScreenModel::picture(const DeviceRect& area, std::size_t top, const std::set<xcb_window_t>& leftOut) const
{
    Image image(area.width, area.height);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            const DevicePoint point = {area.x + x, area.y + y};
            at(image, x, y) = m_screen.contains(point) ? tilePixel(rootTile, point.x, point.y) | 0xff000000 : 0;
        }
    }
    for (std::size_t i = 0; i < top; ++i) {
        if (leftOut.count(windows[i].id) == 0)
            paint(windows[i], area, image);
    }
    return image;
}

void ScreenModel::paint(const ModelWindow& window, const DeviceRect& area, Image& image) const
{
    const auto outer = window.outer();
    const auto alpha = static_cast<std::uint32_t>(static_cast<double>(window.opacity) / 0xffffffff * 255);
    for (int y = std::max({outer.y, area.y, 0}); y < std::min({outer.bottom(), area.bottom(), m_screen.height}); ++y) {
        for (int x = std::max({outer.x, area.x, 0}); x < std::min({outer.right(), area.right(), m_screen.width}); ++x) {
            const auto pixel = window.pixelAt({x, y});
            if (!pixel)
                continue;
            auto& shown = at(image, x - area.x, y - area.y);
            const auto source = window.isArgb ? *pixel : *pixel | 0xff000000;
            shown = (blends ? over(source, alpha, shown) : *pixel & 0xffffff) | 0xff000000;
        }
    }
}

}  // namespace CaptureTests
