#include "Platform/X11/Capture/WallpaperBrush.h"

#include <utility>

#include "Platform/X11/WireRect.h"

namespace Platform::X11 {

void WallpaperBrush::paint(const DeviceRect& part, const Canvas& canvas, DevicePoint corner, const RootLook& root)
{
    if (std::exchange(m_generation, root.generation) != root.generation || m_graphics == XCB_NONE)
        take(root);
    moveTo(corner);
    const auto place = toWire({part.x - corner.x, part.y - corner.y, part.width, part.height});
    xcb_poly_fill_rectangle(m_server.connection(), canvas.pixmap, m_graphics, 1, &place);
}

// The server keeps a pixmap for as long as a graphics context has it as its tile, so the
// wallpaper may be freed meanwhile.
void WallpaperBrush::take(const RootLook& root)
{
    constexpr std::uint32_t grey = 0x808080;
    release();
    auto& c = m_server.connection();
    m_graphics = c.newId();
    m_corner = {};
    xcb_create_gc(c, m_graphics, c.root(), XCB_GC_FOREGROUND, &grey);
    if (root.wallpaper == XCB_NONE)
        return;
    // Refused as a whole when the wallpaper's pixmap is gone; then it stays grey.
    const std::uint32_t tiled[] = {XCB_FILL_STYLE_TILED, root.wallpaper};
    xcb_change_gc(c, m_graphics, XCB_GC_FILL_STYLE | XCB_GC_TILE, tiled);
}

void WallpaperBrush::moveTo(DevicePoint corner)
{
    if (corner.x == m_corner.x && corner.y == m_corner.y)
        return;
    m_corner = corner;
    const std::uint32_t origin[] = {static_cast<std::uint32_t>(-corner.x), static_cast<std::uint32_t>(-corner.y)};
    xcb_change_gc(m_server.connection(), m_graphics, XCB_GC_TILE_STIPPLE_ORIGIN_X | XCB_GC_TILE_STIPPLE_ORIGIN_Y, origin);
}

void WallpaperBrush::release()
{
    if (m_graphics != XCB_NONE)
        xcb_free_gc(m_server.connection(), m_graphics);
    m_graphics = XCB_NONE;
}

}  // namespace Platform::X11
