#include "Support/Desktop/TestPattern.h"

#include <algorithm>
#include <cmath>

namespace TestSupport {
namespace {

std::uint32_t mixed(std::uint32_t value)
{
    value ^= value >> 16;
    value *= 0x7feb352d;
    value ^= value >> 15;
    value *= 0x846ca68b;
    return value ^ (value >> 16);
}

std::uint32_t channel(double wave, std::uint32_t grain)
{
    const auto value = 128 + 100 * wave + static_cast<double>(grain & 0x1f) - 16;
    return static_cast<std::uint32_t>(std::clamp(value, 0.0, 255.0));
}

std::uint32_t patternPixel(int x, int y, std::uint32_t seed)
{
    const double phase = seed;
    const auto grain = mixed(seed * 0x9e3779b9 + static_cast<std::uint32_t>(y) * 0x10001 + static_cast<std::uint32_t>(x));
    const auto red = channel(std::sin(x / 173.0 + y / 311.0 + phase), grain);
    const auto green = channel(std::sin(x / 229.0 - y / 157.0 + 2 * phase), grain >> 8);
    const auto blue = channel(std::cos((x + y) / 263.0 + 3 * phase), grain >> 16);
    return 0xff000000 | red << 16 | green << 8 | blue;
}

}  // namespace

Platform::Image testPattern(int width, int height, std::uint32_t seed)
{
    Platform::Image image(width, height);
    auto pixel = image.pixels().begin();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            *pixel++ = patternPixel(x, y, seed);
    }
    return image;
}

xcb_pixmap_t makePixmap(const Platform::X11::Connection& connection, const Platform::Image& image)
{
    const auto pixmap = connection.newId();
    const auto context = connection.newId();
    const auto depth = connection.screen().root_depth;
    const auto width = static_cast<std::uint16_t>(image.width());
    xcb_create_pixmap(connection, depth, pixmap, connection.root(), width, static_cast<std::uint16_t>(image.height()));
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    constexpr int rowsPerRequest = 16;  // well below the longest request
    for (int y = 0; y < image.height(); y += rowsPerRequest) {
        const auto rows = std::min(rowsPerRequest, image.height() - y);
        const auto first = image.pixels().subspan(static_cast<std::size_t>(y) * width, static_cast<std::size_t>(rows) * width);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, static_cast<std::uint16_t>(rows), 0,
            static_cast<std::int16_t>(y), 0, depth, static_cast<std::uint32_t>(first.size_bytes()),
            reinterpret_cast<const std::uint8_t*>(first.data()));
    }
    xcb_free_gc(connection, context);
    return pixmap;
}

}  // namespace TestSupport
