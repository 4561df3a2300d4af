#include "Support/Desktop/VisibleCursor.h"

#include <algorithm>
#include <array>

namespace TestSupport {
namespace {

constexpr std::uint16_t side = 16;
constexpr std::uint16_t hotSpot = 8;
constexpr std::uint32_t colour = 0xffff00ff;  // no test pattern comes near it

}  // namespace

xcb_cursor_t makeVisibleCursor(const Platform::X11::Connection& connection)
{
    const auto bitmap = connection.newId();
    const auto context = connection.newId();
    const auto cursor = connection.newId();
    xcb_create_pixmap(connection, 1, bitmap, connection.root(), side, side);
    const std::uint32_t foreground = 1;
    xcb_create_gc(connection, context, bitmap, XCB_GC_FOREGROUND, &foreground);
    const xcb_rectangle_t whole{0, 0, side, side};
    xcb_poly_fill_rectangle(connection, bitmap, context, 1, &whole);
    xcb_create_cursor(connection, cursor, bitmap, bitmap, 0xffff, 0, 0xffff, 0xffff, 0, 0xffff, hotSpot, hotSpot);
    xcb_free_gc(connection, context);
    xcb_free_pixmap(connection, bitmap);
    return cursor;
}

bool showsVisibleCursor(const Platform::Image& image, int x, int y)
{
    for (int row = y - hotSpot; row < y - hotSpot + side; ++row) {
        for (int column = x - hotSpot; column < x - hotSpot + side; ++column) {
            const bool isInside = row >= 0 && column >= 0 && row < image.height() && column < image.width();
            if (isInside && image.pixel(column, row) != colour)
                return false;
        }
    }
    return true;
}

long visibleCursorPixels(const Platform::Image& image) { return std::count(image.pixels().begin(), image.pixels().end(), colour); }

}  // namespace TestSupport
