#include "Platform/X11/Capture/Painter.h"

#include <xcb/composite.h>

#include <algorithm>
#include <cstddef>

namespace Platform::X11 {
namespace {

constexpr std::size_t mostCanvases = 8;

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
    : m_server(server), m_c(server.connection()), m_gc(server.connection().newScreenGraphics()), m_rootBackground(server)
{
}

Painter::~Painter()
{
    for (auto& entry : m_named)
        release(entry.second);
    for (auto& canvas : m_canvases)
        release(canvas);
    m_rootBackground.release();
    xcb_free_gc(m_c, m_gc);
}

void Painter::begin()
{
    for (auto& canvas : m_canvases)
        canvas.isInUse = false;
}

xcb_pixmap_t Painter::paint(std::span<const PaintStep> steps, const DeviceRect& area, const RootLook& root)
{
    const auto& canvas = canvasFor(area);
    const auto hidden = hiddenRoot(steps);
    const auto background = hidden.isEmpty() ? RootBackground::Source() : m_rootBackground.sourceFor(hidden, root);
    for (std::size_t i = steps.size(); i-- > 0;) {
        if (steps[i].window == XCB_WINDOW_NONE)
            paintRoot(steps[i], canvas, area, background);
        else
            paintWindow(steps[i], canvas, area);
    }
    return canvas.pixmap;
}

void Painter::paintRoot(const PaintStep& step, const Canvas& canvas, const DeviceRect& area, const RootBackground::Source& background)
{
    if (step.isOnScreen)
        copy(m_server.connection().root(), {step.area.x, step.area.y}, step, canvas, area);
    else
        copy(background.pixmap, {step.area.x - background.area.x, step.area.y - background.area.y}, step, canvas, area);
}

// CopyArea knows no formats: both sides must have the same depth.
void Painter::paintWindow(const PaintStep& step, const Canvas& canvas, const DeviceRect& area)
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

void Painter::blend(Named& source, const PaintStep& step, const Canvas& canvas, const DeviceRect& area)
{
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

Painter::Canvas& Painter::canvasFor(const DeviceRect& area)
{
    // Neither too small nor a waste of the server's memory.
    const auto fits = [&](const Canvas& canvas) {
        const long needed = long{area.width} * area.height;
        return !canvas.isInUse && canvas.width >= area.width && canvas.height >= area.height &&
            long{canvas.width} * canvas.height <= 2 * needed + 4096;
    };
    auto canvas = std::find_if(m_canvases.begin(), m_canvases.end(), fits);
    if (canvas == m_canvases.end()) {
        const auto isOlder = [](const Canvas& a, const Canvas& b) { return a.isInUse != b.isInUse ? b.isInUse : a.lastUse < b.lastUse; };
        canvas = std::min_element(m_canvases.begin(), m_canvases.end(), isOlder);
        if (m_canvases.size() < mostCanvases || canvas->isInUse)
            canvas = m_canvases.insert(m_canvases.end(), Canvas());
        release(*canvas);
        canvas->width = area.width;
        canvas->height = area.height;
        canvas->pixmap = xcb_generate_id(m_c);
        canvas->picture = xcb_generate_id(m_c);
        const auto& screen = m_server.connection().screen();
        const auto size = toWire(area);
        xcb_create_pixmap(m_c, screen.root_depth, canvas->pixmap, screen.root, size.width, size.height);
        xcb_render_create_picture(m_c, canvas->picture, canvas->pixmap, m_server.formatOf(screen.root_visual), 0, nullptr);
    }
    canvas->isInUse = true;
    canvas->lastUse = ++m_uses;
    return *canvas;
}

void Painter::release(Canvas& canvas)
{
    if (canvas.pixmap != XCB_NONE) {
        xcb_render_free_picture(m_c, canvas.picture);
        xcb_free_pixmap(m_c, canvas.pixmap);
    }
    canvas = {};
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
