#include "X11/Capture/Desktop.h"

#include <xcb/shape.h>

#include <cstring>
#include <stdexcept>

#include "Platform/X11/WireRect.h"

namespace CaptureTests {
namespace {

constexpr std::uint32_t opaque = 0xff000000;

std::int16_t narrow(int value) { return static_cast<std::int16_t>(value); }
std::uint16_t narrowSize(int value) { return static_cast<std::uint16_t>(value); }

}  // namespace

Desktop::Desktop(const std::string& displayName) : m_connection(Platform::X11::Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server " + displayName);
    m_argbColours = m_connection->newId();
    xcb_create_colormap(*m_connection, XCB_COLORMAP_ALLOC_NONE, m_argbColours, m_connection->root(), m_connection->argbVisual());
}

DeviceRect Desktop::screen() const { return {0, 0, m_connection->screen().width_in_pixels, m_connection->screen().height_in_pixels}; }

xcb_window_t Desktop::makeWindow(const Style& style)
{
    auto& c = *m_connection;
    const auto window = c.newId();
    const std::uint32_t values[] = {
        style.colour, style.borderColour, style.isOverrideRedirect ? 1U : 0U, style.isArgb ? m_argbColours : c.screen().default_colormap};
    const auto& r = style.inner;
    xcb_create_window(c, style.isArgb ? 32 : c.screen().root_depth, window, c.root(), narrow(r.x), narrow(r.y), narrowSize(r.width),
        narrowSize(r.height), narrowSize(style.border), XCB_WINDOW_CLASS_INPUT_OUTPUT, style.isArgb ? c.argbVisual() : c.screen().root_visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    return window;
}

xcb_window_t Desktop::makeMappedWindow(const Style& style)
{
    const auto window = makeWindow(style);
    map(window);
    return window;
}

xcb_window_t Desktop::makeInputOnlyWindow(const DeviceRect& r)
{
    auto& c = *m_connection;
    const auto window = c.newId();
    const std::uint32_t isOverrideRedirect = 1;
    xcb_create_window(c, 0, window, c.root(), narrow(r.x), narrow(r.y), narrowSize(r.width), narrowSize(r.height), 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &isOverrideRedirect);
    xcb_map_window(c, window);
    return window;
}

xcb_pixmap_t Desktop::makePixmap(const Image& image, std::uint8_t depth)
{
    auto& c = *m_connection;
    const auto pixmap = c.newId();
    const auto gc = c.newId();
    xcb_create_pixmap(c, depth, pixmap, c.root(), narrowSize(image.width()), narrowSize(image.height()));
    xcb_create_gc(c, gc, pixmap, 0, nullptr);
    xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, gc, narrowSize(image.width()), narrowSize(image.height()), 0, 0, 0, depth,
        static_cast<std::uint32_t>(image.pixels().size_bytes()), reinterpret_cast<const std::uint8_t*>(image.pixels().data()));
    xcb_free_gc(c, gc);
    return pixmap;
}

void Desktop::setPatternBackground(xcb_window_t window, const Image& tile, bool isArgb)
{
    const auto pixmap = makePixmap(tile, isArgb ? 32 : m_connection->screen().root_depth);
    xcb_change_window_attributes(*m_connection, window, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(*m_connection, 0, window, 0, 0, 0, 0);
    xcb_free_pixmap(*m_connection, pixmap);
}

void Desktop::fill(xcb_window_t window, const DeviceRect& area, std::uint32_t colour)
{
    auto& c = *m_connection;
    const auto graphics = c.newId();
    xcb_create_gc(c, graphics, window, XCB_GC_FOREGROUND, &colour);
    const auto rectangle = Platform::X11::toWire(area);
    xcb_poly_fill_rectangle(c, window, graphics, 1, &rectangle);
    xcb_free_gc(c, graphics);
}

// As wallpaper setters do: the background and the property by which compositors find it.
void Desktop::setRootTile(const Image& tile)
{
    auto& c = *m_connection;
    const auto pixmap = makePixmap(tile, c.screen().root_depth);
    xcb_change_window_attributes(c, c.root(), XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(c, 0, c.root(), 0, 0, 0, 0);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, c.root(), c.atom("_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
}

void Desktop::setOpacity(xcb_window_t window, std::uint32_t opacity)
{
    const auto atom = m_connection->atom("_NET_WM_WINDOW_OPACITY");
    xcb_change_property(*m_connection, XCB_PROP_MODE_REPLACE, window, atom, XCB_ATOM_CARDINAL, 32, 1, &opacity);
}

void Desktop::setShape(xcb_window_t window, std::span<const DeviceRect> inner)
{
    std::vector<xcb_rectangle_t> rects;
    for (const auto& r : inner)
        rects.push_back({narrow(r.x), narrow(r.y), narrowSize(r.width), narrowSize(r.height)});
    xcb_shape_rectangles(*m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
        static_cast<std::uint32_t>(rects.size()), rects.data());
}

void Desktop::clearShape(xcb_window_t window)
{
    xcb_shape_mask(*m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_PIXMAP_NONE);
}

void Desktop::move(xcb_window_t window, int x, int y)
{
    const std::uint32_t values[] = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
    xcb_configure_window(*m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
}

void Desktop::resize(xcb_window_t window, int width, int height)
{
    const std::uint32_t values[] = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    xcb_configure_window(*m_connection, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
}

void Desktop::setBorder(xcb_window_t window, int width)
{
    const auto value = static_cast<std::uint32_t>(width);
    xcb_configure_window(*m_connection, window, XCB_CONFIG_WINDOW_BORDER_WIDTH, &value);
}

void Desktop::reparentToRoot(xcb_window_t window, int x, int y)
{
    xcb_reparent_window(*m_connection, window, m_connection->root(), narrow(x), narrow(y));
}

void Desktop::restack(xcb_window_t window, std::uint32_t mode, xcb_window_t sibling)
{
    const std::uint32_t both[] = {sibling, mode};
    if (sibling != XCB_WINDOW_NONE)
        xcb_configure_window(*m_connection, window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, both);
    else
        xcb_configure_window(*m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
}

void Desktop::sync()
{
    const auto cookie = xcb_get_input_focus(*m_connection);
    Platform::X11::adopt(xcb_get_input_focus_reply(*m_connection, cookie, nullptr));
    while (Platform::X11::Event(xcb_poll_for_event(*m_connection))) { }
}

Image Desktop::screenPicture(const DeviceRect& rect)
{
    auto& c = *m_connection;
    const auto cookie =
        xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, c.root(), narrow(rect.x), narrow(rect.y), narrowSize(rect.width), narrowSize(rect.height), ~0U);
    const auto reply = Platform::X11::adopt(xcb_get_image_reply(c, cookie, nullptr));
    Image image(rect.width, rect.height);
    if (!reply)
        throw std::runtime_error("the screen cannot be read");
    std::memcpy(image.pixels().data(), xcb_get_image_data(reply.get()), image.pixels().size_bytes());
    for (auto& pixel : image.pixels())
        pixel |= opaque;
    return image;
}

}  // namespace CaptureTests
