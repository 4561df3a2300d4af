#include "Support/Desktop/PaintedOnce.h"

#include <stdexcept>

#include "Platform/X11/WireRect.h"
#include "Support/Desktop/TestPattern.h"

namespace TestSupport {

using namespace Platform::X11;

PaintedOnce::PaintedOnce(const std::string& displayName, const DeviceRect& frame) : m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
    auto& c = *m_connection;
    const auto window = c.newId();
    const auto [x, y, width, height] = toWire(frame);
    const std::uint32_t values[] = {0xff00ff, 1};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, c.root(), x, y, width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(c, window);
    const auto pattern = testPattern(frame.width, frame.height, 11);
    xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, window, c.newScreenGraphics(), width, height, 0, 0, 0, c.screen().root_depth,
        static_cast<std::uint32_t>(pattern.pixels().size_bytes()), reinterpret_cast<const std::uint8_t*>(pattern.pixels().data()));
    c.flush();
}

}  // namespace TestSupport
