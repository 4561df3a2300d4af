#include "EndToEnd/ExpectedScreen.h"

#include <iomanip>
#include <sstream>

namespace TestSupport {

using Platform::X11::DeviceRect;

Platform::Image withCrosshair(const Platform::Image& beneath, int x, int y, const DeviceRect& area)
{
    auto image = beneath;
    const auto at = [&](int column, int row) -> std::uint32_t& {
        return image.pixels()[static_cast<std::size_t>(row) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(column)];
    };
    for (int column = area.x; column < area.right(); ++column)
        at(column, y) = inverse(beneath.pixel(column, y));
    for (int row = area.y; row < area.bottom(); ++row)
        at(x, row) = inverse(beneath.pixel(x, row));
    return image;
}

Platform::Image withCrosshair(const Platform::Image& beneath, int x, int y)
{
    return withCrosshair(beneath, x, y, {0, 0, beneath.width(), beneath.height()});
}

std::optional<std::string> difference(const Platform::Image& expected, const Platform::Image& actual)
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
