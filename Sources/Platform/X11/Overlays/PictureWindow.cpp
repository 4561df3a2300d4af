#include "Platform/X11/Overlays/PictureWindow.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace Platform::X11 {
namespace {

constexpr std::uint32_t opaque = 0xff000000;

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
    xcb_create_window_aux(
        connection, format.depth, window, connection.root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, format.visual, mask, &values);
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
    : m_connection(connection), m_format(format), m_window(createWindow(connection, format)), m_graphics(createGraphics(connection, m_window))
{
    setProperties(format.hasShadow);
}

PictureWindow::~PictureWindow()
{
    xcb_free_gc(m_connection, m_graphics);
    xcb_destroy_window(m_connection, m_window);
}

// Type, opacity and the shadow hint keep compositors from shading or fading the lines.
void PictureWindow::setProperties(bool hasShadow)
{
    const auto set = [this](std::string_view name, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, m_connection.atom(name), type, 32, 1, &value);
    };
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, m_connection.atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
    set("_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, 0xffffffff);
    set("_NET_WM_PID", XCB_ATOM_CARDINAL, static_cast<std::uint32_t>(getpid()));
    if (!hasShadow)
        set("_COMPTON_SHADOW", XCB_ATOM_CARDINAL, 0);
    constexpr char windowClass[] = "tarnwick\0Tarnwick";
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, sizeof windowClass, windowClass);
    constexpr char title[] = "Tarnwick";
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, sizeof title - 1, title);
}

void PictureWindow::show(const Picture& picture, const DeviceRect& whole, const DeviceRect& visible, bool isShown)
{
    if (visible.isEmpty()) {
        m_frame = {};
        setShown(false);
        return;
    }
    place(visible);
    setShown(isShown);
    paint(picture, whole);
}

void PictureWindow::setShown(bool isShown)
{
    const bool mustMap = isShown && !m_frame.isEmpty();
    if (mustMap == m_isMapped)
        return;
    m_isMapped = mustMap;
    if (mustMap)
        xcb_map_window(m_connection, m_window);
    else
        xcb_unmap_window(m_connection, m_window);
}

void PictureWindow::place(const DeviceRect& frame)
{
    if (frame == m_frame)
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
    change(frame.x, m_frame.x, XCB_CONFIG_WINDOW_X);
    change(frame.y, m_frame.y, XCB_CONFIG_WINDOW_Y);
    change(frame.width, m_frame.width, XCB_CONFIG_WINDOW_WIDTH);
    change(frame.height, m_frame.height, XCB_CONFIG_WINDOW_HEIGHT);
    xcb_configure_window(m_connection, m_window, mask, values);
    m_frame = frame;
}

// Stretches without smoothing: device pixel i of n shows image pixel floor(i * side / n).
void PictureWindow::paint(const Picture& picture, const DeviceRect& whole)
{
    const auto width = static_cast<std::size_t>(m_frame.width);
    m_row.resize(width);
    if (picture.image == nullptr || picture.image->isEmpty()) {
        const auto colour = m_format.isBlended ? picture.colour : picture.colour | opaque;
        xcb_change_gc(m_connection, m_graphics, XCB_GC_FOREGROUND, &colour);
        const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(m_frame.width), static_cast<std::uint16_t>(m_frame.height)};
        xcb_poly_fill_rectangle(m_connection, m_window, m_graphics, 1, &all);
        return;
    }
    const auto& image = *picture.image;
    const auto sourceColumn = [&](int x) { return (m_frame.x - whole.x + x) * image.width() / whole.width; };
    const auto sourceRow = [&](int y) { return (m_frame.y - whole.y + y) * image.height() / whole.height; };
    // As many rows as fit one request are put together.
    const int mostRows = std::max(1, static_cast<int>(xcb_get_maximum_request_length(m_connection) * 4 - 64) / (m_frame.width * 4));
    m_row.resize(width * static_cast<std::size_t>(std::min(mostRows, m_frame.height)));
    for (int firstRow = 0; firstRow < m_frame.height; firstRow += mostRows) {
        const int rows = std::min(mostRows, m_frame.height - firstRow);
        for (int y = 0; y < rows; ++y) {
            auto* to = m_row.data() + static_cast<std::size_t>(y) * width;
            const auto from = image.pixels().subspan(static_cast<std::size_t>(sourceRow(firstRow + y)) * static_cast<std::size_t>(image.width()));
            if (image.width() == whole.width) {
                std::memcpy(to, from.data() + (m_frame.x - whole.x), width * sizeof *to);
                continue;
            }
            for (int x = 0; x < m_frame.width; ++x)
                to[x] = from[static_cast<std::size_t>(sourceColumn(x))];
        }
        putRows(firstRow, rows, m_frame.width);
    }
}

void PictureWindow::putRows(int firstRow, int rows, int width)
{
    xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_graphics, static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(rows),
        0, static_cast<std::int16_t>(firstRow), 0, m_format.depth, static_cast<std::uint32_t>(rows * width * 4),
        reinterpret_cast<const std::uint8_t*>(m_row.data()));
}

}  // namespace Platform::X11
