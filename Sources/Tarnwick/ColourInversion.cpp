#include "Tarnwick/ColourInversion.h"

namespace Tarnwick {

void invertColours(Platform::Image& image)
{
    constexpr std::uint32_t colourMask = 0x00FFFFFF;
    for (auto& pixel : image.pixels()) {
        const std::uint32_t alpha = pixel >> 24;
        // No channel is above alpha, so the three subtractions do not borrow from each other.
        const std::uint32_t colours = (alpha | alpha << 8 | alpha << 16) - (pixel & colourMask);
        pixel = (pixel & ~colourMask) | (colours & colourMask);
    }
}

}  // namespace Tarnwick
