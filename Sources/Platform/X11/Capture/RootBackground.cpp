#include "Platform/X11/Capture/RootBackground.h"

#include <xcb/composite.h>

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/Region.h"

namespace Platform::X11 {
namespace {

// A moving strip needs a new band once in so many pixels.
constexpr int bandWidth = 64;

DeviceRect bandAround(const DeviceRect& area, const DeviceRect& root)
{
    const int left = area.x / bandWidth * bandWidth;
    const int top = area.y / bandWidth * bandWidth;
    const int right = (area.right() + bandWidth - 1) / bandWidth * bandWidth;
    const int bottom = (area.bottom() + bandWidth - 1) / bandWidth * bandWidth;
    return intersection({left, top, right - left, bottom - top}, root);
}

}  // namespace

const RootBackground::Source& RootBackground::sourceFor(const DeviceRect& area, const DeviceRect& root, std::uint64_t generation)
{
    if (std::exchange(m_generation, generation) != generation)
        release();
    const auto shows = [&](const Band& band) { return band.source.pixmap != XCB_NONE && encloses(band.source.area, area); };
    auto* band = std::find_if(m_bands.begin(), m_bands.end(), shows);
    if (band == m_bands.end()) {
        band = std::min_element(m_bands.begin(), m_bands.end(), [](const Band& a, const Band& b) { return a.lastUse < b.lastUse; });
        release(band->source);
        make(band->source, bandAround(area, root));
    }
    band->lastUse = ++m_uses;
    return band->source;
}

// Under a grab, so that no compositor paints a picture with the window in it. Window
// managers leave override-redirect windows alone.
void RootBackground::make(Source& source, const DeviceRect& area)
{
    auto& c = m_server.connection();
    const auto window = c.newId();
    const auto place = toWire(area);
    const std::uint32_t attributes[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    source = {c.newId(), area};
    xcb_grab_server(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, c.root(), place.x, place.y, place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, attributes);
    xcb_configure_window(c, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_map_window(c, window);
    xcb_composite_name_window_pixmap(c, window, source.pixmap);
    xcb_destroy_window(c, window);
    xcb_ungrab_server(c);
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
