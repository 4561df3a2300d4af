#include "Platform/X11/Capture/Painter.h"

#include <xcb/composite.h>

#include <algorithm>
#include <cstddef>

namespace Platform::X11 {
namespace {

xcb_render_picture_t solidMask(xcb_connection_t* c, std::uint8_t alpha)
{
    const auto picture = xcb_generate_id(c);
    xcb_render_create_solid_fill(c, picture, {0, 0, 0, static_cast<std::uint16_t>(alpha * 0x101)});
    return picture;
}

// The rectangle around what the screen does not show of the root; empty when it shows all.
DeviceRect hiddenRoot(std::span<const PaintStep> steps)
{
    DeviceRect hidden;
    for (const auto& step : steps) {
        if (step.window == XCB_WINDOW_NONE && !step.isOnScreen)
            hidden = hidden.isEmpty() ? step.area : boundsOf(hidden, step.area);
    }
    return hidden;
}

}  // namespace

Painter::Painter(CaptureServer& server)
    : m_server(server), m_c(server.connection()), m_gc(server.connection().newScreenGraphics()), m_rootBackground(server), m_wallpaper(server)
{
}

Painter::~Painter()
{
    for (auto& entry : m_named)
        release(entry.second);
    m_rootBackground.release();
    xcb_free_gc(m_c, m_gc);
}

void Painter::paint(std::span<const PaintStep> steps, const DeviceRect& area, const RootLook& root, Canvas& canvas)
{
    paintRoot(steps, area, root, canvas);
    for (std::size_t i = steps.size(); i-- > 0;) {
        if (steps[i].window != XCB_WINDOW_NONE)
            paintWindow(steps[i], canvas, area);
    }
}

// What is taken from the screen itself, all windows included, no other step paints.
void Painter::paintRoot(std::span<const PaintStep> steps, const DeviceRect& area, const RootLook& root, const Canvas& canvas)
{
    const auto hidden = root.hasCompositor ? DeviceRect() : hiddenRoot(steps);
    const auto background = hidden.isEmpty() ? RootBackground::Source() : m_rootBackground.sourceFor(hidden, root);
    for (const auto& step : steps) {
        if (step.window != XCB_WINDOW_NONE)
            continue;
        if (step.isOnScreen)
            copy(m_server.connection().root(), {step.area.x, step.area.y}, step, canvas, area);
        else if (root.hasCompositor)
            m_wallpaper.paint(step.area, canvas, {area.x, area.y}, root);
        else
            copy(background.pixmap, {step.area.x - background.area.x, step.area.y - background.area.y}, step, canvas, area);
    }
}

// CopyArea knows no formats: both sides must have the same depth.
void Painter::paintWindow(const PaintStep& step, Canvas& canvas, const DeviceRect& area)
{
    auto& source = named(step);
    if (!step.isBlended && step.depth == m_server.connection().screen().root_depth)
        copy(source.pixmap, step.source, step, canvas, area);
    else
        blend(source, step, canvas, area);
}

void Painter::copy(xcb_drawable_t from, DevicePoint source, const PaintStep& step, const Canvas& canvas, const DeviceRect& area)
{
    const auto place = toWire({step.area.x - area.x, step.area.y - area.y, step.area.width, step.area.height});
    xcb_copy_area(m_c, from, canvas.pixmap, m_gc, static_cast<std::int16_t>(source.x), static_cast<std::int16_t>(source.y), place.x, place.y,
        place.width, place.height);
}

void Painter::blend(Named& source, const PaintStep& step, Canvas& canvas, const DeviceRect& area)
{
    if (canvas.picture == XCB_NONE) {
        canvas.picture = xcb_generate_id(m_c);
        xcb_render_create_picture(m_c, canvas.picture, canvas.pixmap, m_server.formatOf(m_server.connection().screen().root_visual), 0, nullptr);
    }
    if (source.picture == XCB_NONE) {
        source.picture = xcb_generate_id(m_c);
        xcb_render_create_picture(m_c, source.picture, source.pixmap, m_server.formatOf(step.visual), 0, nullptr);
    }
    if (source.maskAlpha != step.alpha) {
        if (source.mask != XCB_NONE)
            xcb_render_free_picture(m_c, source.mask);
        source.mask = step.alpha != 0xff ? solidMask(m_c, step.alpha) : XCB_NONE;
        source.maskAlpha = step.alpha;
    }
    const auto place = toWire({step.area.x - area.x, step.area.y - area.y, step.area.width, step.area.height});
    xcb_render_composite(m_c, step.isBlended ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, source.picture, source.mask, canvas.picture,
        static_cast<std::int16_t>(step.source.x), static_cast<std::int16_t>(step.source.y), 0, 0, place.x, place.y, place.width, place.height);
}

Painter::Named& Painter::named(const PaintStep& step)
{
    auto& named = m_named[step.window];
    if (named.pixmap != XCB_NONE && named.contents == step.contents && !named.hasFailed)
        return named;
    release(named);
    named.contents = step.contents;
    named.pixmap = xcb_generate_id(m_c);
    named.request = xcb_composite_name_window_pixmap(m_c, step.window, named.pixmap).sequence;
    return named;
}

void Painter::release(Named& named)
{
    for (const auto picture : {named.picture, named.mask}) {
        if (picture != XCB_NONE)
            xcb_render_free_picture(m_c, picture);
    }
    if (named.pixmap != XCB_NONE)
        xcb_free_pixmap(m_c, named.pixmap);
    named = {};
}

void Painter::failed(const xcb_generic_error_t& error)
{
    for (auto& [window, named] : m_named)
        named.hasFailed = named.hasFailed || (named.request == error.full_sequence && named.pixmap != XCB_NONE);
}

bool Painter::hasFailed(std::span<const PaintStep> steps) const
{
    return std::any_of(steps.begin(), steps.end(), [this](const PaintStep& step) {
        const auto named = m_named.find(step.window);
        return named != m_named.end() && named->second.hasFailed;
    });
}

void Painter::releaseStale(const StackModel& model)
{
    for (auto entry = m_named.begin(); entry != m_named.end();) {
        const auto* window = model.find(entry->first);
        if (window != nullptr && window->isMapped && window->contents == entry->second.contents) {
            ++entry;
            continue;
        }
        release(entry->second);
        entry = m_named.erase(entry);
    }
}

}  // namespace Platform::X11
