#include "EndToEnd/ExpectedScreen.h"

#include <iomanip>
#include <sstream>

namespace TestSupport {

using Platform::Image;
using Platform::X11::DeviceRect;

namespace {

std::size_t indexOf(const Image& image, int column, int row)
{
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(column);
}

}  // namespace

Image withCrosshair(const Image& beneath, int x, int y, const DeviceRect& area)
{
    auto image = beneath;
    for (int column = area.x; column < area.right(); ++column)
        image.pixels()[indexOf(image, column, y)] = inverse(beneath.pixel(column, y));
    for (int row = area.y; row < area.bottom(); ++row)
        image.pixels()[indexOf(image, x, row)] = inverse(beneath.pixel(x, row));
    return image;
}

Image withCrosshair(const Image& beneath, int x, int y) { return withCrosshair(beneath, x, y, {0, 0, beneath.width(), beneath.height()}); }

Image withPlainCrosshair(const Image& beneath, int x, int y, int width)
{
    auto image = beneath;
    for (int row = 0; row < image.height(); ++row) {
        for (int column = 0; column < image.width(); ++column) {
            if ((row >= y && row < y + width) || (column >= x && column < x + width))
                image.pixels()[indexOf(image, column, row)] = 0xff000000;
        }
    }
    return image;
}

std::optional<std::string> difference(const Image& expected, const Image& actual)
{
    if (expected.width() != actual.width() || expected.height() != actual.height())
        return "the sizes differ";
    // Whole pictures compare at once; pixel by pixel takes a second under a sanitizer.
    if (expected == actual)
        return std::nullopt;
    long count = 0;
    std::ostringstream first;
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            if (expected.pixel(x, y) == actual.pixel(x, y))
                continue;
            if (count++ == 0)
                first << "(" << x << ", " << y << ") is " << std::hex << actual.pixel(x, y) << ", not " << expected.pixel(x, y);
        }
    }
    return std::to_string(count) + " pixels differ, the first: " + first.str();
}

}  // namespace TestSupport
