#include "Platform/X11/Capture/Redirection.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>

#include "Platform/X11/WireRect.h"

namespace Platform::X11 {
namespace {

bool isIn(const ToplevelWindow& window, std::span<const CoveredPart> covered)
{
    return std::any_of(covered.begin(), covered.end(), [&](const CoveredPart& part) { return part.window == window.id; });
}

bool isWhereItWas(const ToplevelWindow& window, std::span<const ToplevelWindow> before)
{
    return std::any_of(before.begin(), before.end(),
        [&](const ToplevelWindow& other) { return other.id == window.id && other.frame == window.frame && other.isMapped; });
}

}  // namespace

Redirection::Redirection(CaptureServer& server)
    : m_server(server), m_c(server.connection()), m_covered(xcb_generate_id(m_c)), m_outline(xcb_generate_id(m_c))
{
    xcb_composite_redirect_subwindows(m_c, server.connection().root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

Redirection::~Redirection()
{
    xcb_composite_unredirect_subwindows(m_c, m_server.connection().root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(m_c);
}

// From the highest window below ours down: what one shows hides those below it, which did
// not show there and keep what the server gives them.
void Redirection::putBack(std::span<const CoveredPart> covered, const StackModel& model, std::span<const ToplevelWindow> before)
{
    if (!m_server.hasFixes())
        return;
    const auto graphics = m_server.connection().newScreenGraphics();
    const auto windows = model.windows();
    for (const auto& part : covered) {
        xcb_xfixes_create_region_from_window(m_c, m_covered, part.window, XCB_SHAPE_SK_BOUNDING);
        xcb_xfixes_translate_region(m_c, m_covered, toWire(part.place).x, toWire(part.place).y);
        const auto onScreen = intersection(part.place, model.root());
        const auto ours = std::find_if(windows.begin(), windows.end(), [&](const ToplevelWindow& window) { return window.id == part.window; });
        for (auto window = ours; window != windows.begin();) {
            --window;
            const auto common = intersection(onScreen, window->frame);
            if (!window->hasPixels() || common.isEmpty() || isIn(*window, covered))
                continue;
            // Windows of another depth than the root's had contents of their own before.
            if (window->depth == m_server.connection().screen().root_depth && isWhereItWas(*window, before))
                putBack(part, common, *window, graphics);
            subtract(*window);
        }
        xcb_xfixes_destroy_region(m_c, m_covered);
    }
    xcb_free_gc(m_c, graphics);
}

void Redirection::putBack(const CoveredPart& part, const DeviceRect& common, const ToplevelWindow& window, xcb_gcontext_t graphics)
{
    const auto inWindow = [&](int x, int y) { return toWire({x - window.frame.x - window.border, y - window.frame.y - window.border, 0, 0}); };
    const auto from = toWire({common.x - part.place.x, common.y - part.place.y, common.width, common.height});
    const auto to = inWindow(common.x, common.y);
    const auto origin = inWindow(0, 0);
    xcb_xfixes_set_gc_clip_region(m_c, graphics, m_covered, origin.x, origin.y);
    xcb_copy_area(m_c, part.pixmap, window.id, graphics, from.x, from.y, to.x, to.y, from.width, from.height);
}

void Redirection::subtract(const ToplevelWindow& window)
{
    const auto inner = toWire({window.frame.x + window.border, window.frame.y + window.border, 0, 0});
    xcb_xfixes_create_region_from_window(m_c, m_outline, window.id, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_translate_region(m_c, m_outline, inner.x, inner.y);
    xcb_xfixes_subtract_region(m_c, m_covered, m_outline, m_covered);
    xcb_xfixes_destroy_region(m_c, m_outline);
}

}  // namespace Platform::X11
