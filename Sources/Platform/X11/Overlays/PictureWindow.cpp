#include "Platform/X11/Overlays/PictureWindow.h"

#include <unistd.h>
#include <xcb/shape.h>

#include <algorithm>
#include <cstring>

#include "Platform/X11/WireRect.h"

namespace Platform::X11 {
namespace {

constexpr std::uint32_t opaque = 0xff000000;

constexpr DeviceRect firstPlace{0, 0, 1, 1};

// A window that the server would propagate nothing from, and that it keeps the contents
// of while it moves. No background: nothing is painted before the picture is.
xcb_window_t createWindow(Connection& connection, const PictureFormat& format)
{
    const auto window = connection.newId();
    const xcb_create_window_value_list_t values{
        .background_pixmap = XCB_BACK_PIXMAP_NONE,
        .border_pixel = 0,
        .bit_gravity = XCB_GRAVITY_NORTH_WEST,
        .override_redirect = 1,
        .do_not_propogate_mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION,
        .colormap = format.colormap,
    };
    constexpr auto mask =
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_DONT_PROPAGATE | XCB_CW_COLORMAP;
    xcb_create_window_aux(connection, format.depth, window, connection.root(), firstPlace.x, firstPlace.y, firstPlace.width, firstPlace.height, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, format.visual, mask, &values);
    return window;
}

xcb_gcontext_t createGraphics(Connection& connection, xcb_window_t window)
{
    const auto graphics = connection.newId();
    const std::uint32_t noExposures = 0;
    xcb_create_gc(connection, graphics, window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    return graphics;
}

}  // namespace

PictureWindow::PictureWindow(Connection& connection, const PictureFormat& format)
    : m_connection(connection), m_format(format), m_window(createWindow(connection, format)), m_graphics(createGraphics(connection, m_window)),
      m_placed(firstPlace), m_buffer(connection)
{
    setProperties();
}

PictureWindow::~PictureWindow()
{
    xcb_free_gc(m_connection, m_graphics);
    xcb_destroy_window(m_connection, m_window);
}

// Type, opacity and the shadow hint keep compositors from shading or fading the lines.
void PictureWindow::setProperties()
{
    const auto set = [this](std::string_view name, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, m_connection.atom(name), type, 32, 1, &value);
    };
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, m_connection.atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
    set("_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, 0xffffffff);
    set("_NET_WM_PID", XCB_ATOM_CARDINAL, static_cast<std::uint32_t>(getpid()));
    if (!m_format.isOutlined)
        set("_COMPTON_SHADOW", XCB_ATOM_CARDINAL, 0);
    constexpr char windowClass[] = "tarnwick\0Tarnwick";
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, sizeof windowClass, windowClass);
    constexpr char title[] = "Tarnwick";
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, sizeof title - 1, title);
}

void PictureWindow::take(const Picture& picture, const DeviceRect& whole, const DeviceRect& visible)
{
    m_frame = visible;
    if (visible.isEmpty())
        return;
    if (isColour(picture))
        m_colour = picture.colour;
    else
        takePixels(picture, whole);
}

void PictureWindow::show(bool isShown, std::span<const DeviceRect> others)
{
    if (m_frame.isEmpty()) {
        map(false);
        return;
    }
    place();
    // Its outline comes first: at no moment does the window cover more than its picture.
    if (std::exchange(m_hasNewOutline, false))
        shape();
    map(isShown);
    leaveOut(others);
    paint();
}

void PictureWindow::showNothing()
{
    m_frame = {};
    map(false);
}

void PictureWindow::setShown(bool isShown)
{
    if (map(isShown))
        paint();
}

// True when the window was not mapped before and is now.
bool PictureWindow::map(bool isShown)
{
    const bool mustMap = isShown && !m_frame.isEmpty();
    if (mustMap == m_isMapped)
        return false;
    m_isMapped = mustMap;
    if (mustMap)
        xcb_map_window(m_connection, m_window);
    else
        xcb_unmap_window(m_connection, m_window);
    return mustMap;
}

void PictureWindow::place()
{
    if (m_frame == m_placed)
        return;
    std::uint32_t values[4];
    std::size_t count = 0;
    std::uint16_t mask = 0;
    const auto change = [&](int now, int before, std::uint16_t bit) {
        if (now == before)
            return;
        mask |= bit;
        values[count++] = static_cast<std::uint32_t>(now);
    };
    change(m_frame.x, m_placed.x, XCB_CONFIG_WINDOW_X);
    change(m_frame.y, m_placed.y, XCB_CONFIG_WINDOW_Y);
    change(m_frame.width, m_placed.width, XCB_CONFIG_WINDOW_WIDTH);
    change(m_frame.height, m_placed.height, XCB_CONFIG_WINDOW_HEIGHT);
    xcb_configure_window(m_connection, m_window, mask, values);
    m_placed = m_frame;
}

void PictureWindow::paint()
{
    if (m_colour)
        paintColour(*m_colour);
    else
        putPixels();
}

void PictureWindow::leaveOut(std::span<const DeviceRect> others)
{
    m_leftOut.clear();
    for (const auto& other : others) {
        const auto common = intersection(other, m_frame);
        if (m_format.isBlended && !common.isEmpty())
            m_leftOut.push_back(toWire({common.x - m_frame.x, common.y - m_frame.y, common.width, common.height}));
    }
}

void PictureWindow::paintColour(std::uint32_t colour)
{
    const auto all = toWire({0, 0, m_frame.width, m_frame.height});
    fill(m_format.isBlended ? colour : colour | opaque, {&all, 1});
    if (!m_leftOut.empty())
        fill(0, m_leftOut);
}

void PictureWindow::fill(std::uint32_t colour, std::span<const xcb_rectangle_t> parts)
{
    xcb_change_gc(m_connection, m_graphics, XCB_GC_FOREGROUND, &colour);
    xcb_poly_fill_rectangle(m_connection, m_window, m_graphics, static_cast<std::uint32_t>(parts.size()), parts.data());
}

void PictureWindow::takePixels(const Picture& picture, const DeviceRect& whole)
{
    const auto pixels = m_buffer.take(static_cast<std::size_t>(m_frame.width) * static_cast<std::size_t>(m_frame.height));
    if (picture.source == nullptr)
        copy(*picture.image, whole, pixels);
    else
        draw(*picture.source, whole, pixels);
    if (m_format.isOutlined)
        follow(picture.source != nullptr ? picture.source->alphaNumber() : 0, whole, pixels);
    m_colour.reset();
}

void PictureWindow::draw(PixelSource& source, const DeviceRect& whole, std::span<std::uint32_t> pixels)
{
    if (m_frame == whole && source.width() == whole.width && source.height() == whole.height) {
        source.draw(pixels);
        return;
    }
    m_drawn.resize(source.width(), source.height());
    source.draw(m_drawn.pixels());
    copy(m_drawn, whole, pixels);
}

void PictureWindow::copy(const Image& image, const DeviceRect& whole, std::span<std::uint32_t> pixels) const
{
    const bool isWholeLines = image.width() == whole.width && image.height() == whole.height && m_frame.width == whole.width;
    if (isWholeLines)
        std::memcpy(pixels.data(), image.pixels().data() + std::ptrdiff_t{m_frame.y - whole.y} * whole.width, pixels.size_bytes());
    else
        stretch(image, whole, pixels);
}

void PictureWindow::putPixels() { m_buffer.put(m_window, m_graphics, m_format.depth, m_frame.width); }

// Without smoothing: device pixel i of n shows image pixel floor(i * side / n).
void PictureWindow::stretch(const Image& image, const DeviceRect& whole, std::span<std::uint32_t> pixels) const
{
    const auto width = static_cast<std::size_t>(m_frame.width);
    const auto sourceColumn = [&](long x) { return (m_frame.x - whole.x + x) * image.width() / whole.width; };
    const auto sourceRow = [&](long y) { return (m_frame.y - whole.y + y) * image.height() / whole.height; };
    for (int y = 0; y < m_frame.height; ++y) {
        auto* to = pixels.data() + static_cast<std::size_t>(y) * width;
        const auto from = image.pixels().subspan(static_cast<std::size_t>(sourceRow(y)) * static_cast<std::size_t>(image.width()));
        if (image.width() == whole.width) {
            std::memcpy(to, from.data() + (m_frame.x - whole.x), width * sizeof *to);
            continue;
        }
        for (int x = 0; x < m_frame.width; ++x)
            to[x] = from[static_cast<std::size_t>(sourceColumn(x))];
    }
}

void PictureWindow::follow(std::uint64_t alphaNumber, const DeviceRect& whole, std::span<std::uint32_t> pixels)
{
    const OutlineSource source{alphaNumber, whole.width, whole.height, {m_frame.x - whole.x, m_frame.y - whole.y, m_frame.width, m_frame.height}};
    const bool isKnown = source.alphaNumber != 0 && source == m_outlineSource;
    if (!isKnown && m_outline.take(pixels, m_frame.width))
        m_hasNewOutline = true;
    m_outlineSource = source;
    if (!m_format.isBlended)
        m_outline.makeOpaque(pixels);
}

void PictureWindow::shape()
{
    if (!m_connection.has(xcb_shape_id))
        return;
    const auto rectangles = m_outline.rectangles();
    const auto kind = static_cast<xcb_shape_kind_t>(m_format.isBlended ? XCB_SHAPE_SK_INPUT : XCB_SHAPE_SK_BOUNDING);
    xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_YX_BANDED, m_window, 0, 0,
        static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
}

}  // namespace Platform::X11
