#include "Platform/X11/Capture/RootBackground.h"

#include <xcb/composite.h>

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/Region.h"

namespace Platform::X11 {
namespace {

// What moves needs a new band once in so many pixels.
constexpr int bandWidth = 128;

// Of a crosshair: two pixels at the screens' usual scales, and long.
bool isLine(const DeviceRect& area)
{
    constexpr int thickest = 8;
    constexpr int shortest = 2 * bandWidth;
    return std::min(area.width, area.height) <= thickest && std::max(area.width, area.height) > shortest;
}

DeviceRect bandAround(const DeviceRect& area, const RootLook& look)
{
    // Only those that stand still hide the root along all of their length.
    if (isLine(area))
        return area;
    const int left = area.x / bandWidth * bandWidth;
    const int top = area.y / bandWidth * bandWidth;
    const int right = (area.right() + bandWidth - 1) / bandWidth * bandWidth;
    const int bottom = (area.bottom() + bandWidth - 1) / bandWidth * bandWidth;
    return intersection({left, top, right - left, bottom - top}, look.area);
}

}  // namespace

const RootBackground::Source& RootBackground::sourceFor(const DeviceRect& area, const RootLook& root)
{
    if (std::exchange(m_generation, root.generation) != root.generation)
        release();
    const auto shows = [&](const Band& band) { return band.source.pixmap != XCB_NONE && encloses(band.source.area, area); };
    auto* band = std::find_if(m_bands.begin(), m_bands.end(), shows);
    if (band == m_bands.end()) {
        band = std::min_element(m_bands.begin(), m_bands.end(), [](const Band& a, const Band& b) { return a.lastUse < b.lastUse; });
        release(band->source);
        band->source = {m_server.connection().newId(), bandAround(area, root)};
        takeFromServer(band->source);
    }
    band->lastUse = ++m_uses;
    return band->source;
}

// No request reads the background. But what the server paints into a window without a
// background of its own, which lies below everything for an instant, is it. Window
// managers leave override-redirect windows alone.
void RootBackground::takeFromServer(const Source& source)
{
    auto& c = m_server.connection();
    const auto window = c.newId();
    const auto place = toWire(source.area);
    const std::uint32_t attributes[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, c.root(), place.x, place.y, place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, attributes);
    xcb_configure_window(c, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_map_window(c, window);
    xcb_composite_name_window_pixmap(c, window, source.pixmap);
    xcb_destroy_window(c, window);
}

void RootBackground::release(Source& source)
{
    if (source.pixmap != XCB_NONE)
        xcb_free_pixmap(m_server.connection(), source.pixmap);
    source = {};
}

void RootBackground::release()
{
    for (auto& band : m_bands) {
        release(band.source);
        band.lastUse = 0;
    }
}

}  // namespace Platform::X11
