#include "Support/Desktop/Screenshot.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace TestSupport {

using Platform::X11::Connection;

Platform::Image screenshot(const Connection& connection)
{
    const auto& screen = connection.screen();
    const auto cookie = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, 0, 0, screen.width_in_pixels, screen.height_in_pixels, ~0U);
    const auto reply = Platform::X11::adopt(xcb_get_image_reply(connection, cookie, nullptr));
    Platform::Image image(screen.width_in_pixels, screen.height_in_pixels);
    const auto pixels = image.pixels();
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) != pixels.size_bytes())
        throw std::runtime_error("cannot read the screen");
    std::memcpy(pixels.data(), xcb_get_image_data(reply.get()), pixels.size_bytes());
    std::for_each(pixels.begin(), pixels.end(), [](std::uint32_t& pixel) { pixel |= 0xff000000; });
    return image;
}

}  // namespace TestSupport
