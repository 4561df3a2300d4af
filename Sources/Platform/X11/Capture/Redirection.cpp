#include "Platform/X11/Capture/Redirection.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>

#include "Platform/X11/WireRect.h"

namespace Platform::X11 {

Redirection::Redirection(CaptureServer& server) : m_server(server), m_c(server.connection())
{
    xcb_composite_redirect_subwindows(m_c, server.connection().root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

// In one step: what other programs paint anew comes after what is put back.
Redirection::Redirection(CaptureServer& server, const StackModel& model, std::span<const CoveredPart> covered)
    : m_server(server), m_c(server.connection())
{
    xcb_grab_server(m_c);
    xcb_composite_redirect_subwindows(m_c, server.connection().root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    putBack(model, covered);
    xcb_ungrab_server(m_c);
}

Redirection::~Redirection()
{
    xcb_composite_unredirect_subwindows(m_c, m_server.connection().root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(m_c);
}

void Redirection::putBack(const StackModel& model, std::span<const CoveredPart> covered)
{
    const auto graphics = m_server.connection().newScreenGraphics();
    for (const auto& part : covered) {
        const auto region = m_server.hasFixes() ? m_server.connection().newId() : xcb_xfixes_region_t{XCB_NONE};
        if (region != XCB_NONE)
            xcb_xfixes_create_region_from_window(m_c, region, part.window, XCB_SHAPE_SK_BOUNDING);
        for (const auto& window : model.windows()) {
            const auto isWindow = [&](const CoveredPart& other) { return other.window == window.id; };
            if (std::none_of(covered.begin(), covered.end(), isWindow))
                putBack(part, region, window, graphics);
        }
        if (region != XCB_NONE)
            xcb_xfixes_destroy_region(m_c, region);
    }
    xcb_free_gc(m_c, graphics);
}

// Only where our window has pixels: beside them others may have painted since. Windows of
// another depth than the root's had contents of their own before.
void Redirection::putBack(const CoveredPart& part, xcb_xfixes_region_t region, const ToplevelWindow& window, xcb_gcontext_t graphics)
{
    const auto common = intersection(part.place, window.frame);
    if (!window.hasPixels() || window.depth != m_server.connection().screen().root_depth || common.isEmpty())
        return;
    const auto inWindow = [&](int x, int y) { return toWire({x - window.frame.x - window.border, y - window.frame.y - window.border, 0, 0}); };
    const auto from = toWire({common.x - part.place.x, common.y - part.place.y, common.width, common.height});
    const auto to = inWindow(common.x, common.y);
    const auto origin = inWindow(part.place.x, part.place.y);
    if (region != XCB_NONE)
        xcb_xfixes_set_gc_clip_region(m_c, graphics, region, origin.x, origin.y);
    xcb_copy_area(m_c, part.pixmap, window.id, graphics, from.x, from.y, to.x, to.y, from.width, from.height);
}

}  // namespace Platform::X11
