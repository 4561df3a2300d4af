// Arithmetic on pixels 0xAARRGGBB whose colours are multiplied by alpha.
#pragma once

#include <cstdint>

namespace Tarnwick {

constexpr std::uint32_t alphaOf(std::uint32_t pixel) { return pixel >> 24; }

// Every channel times factor / 255, to the nearest; two channels at a time.
constexpr std::uint32_t scaled(std::uint32_t pixel, std::uint32_t factor)
{
    constexpr std::uint32_t everyOther = 0x00FF00FF;
    const auto product = [factor](std::uint32_t channels) {
        const auto sum = channels * factor + 0x00800080;
        return (sum + (sum >> 8 & everyOther)) >> 8 & everyOther;
    };
    return product(pixel >> 8 & everyOther) << 8 | product(pixel & everyOther);
}

constexpr std::uint32_t over(std::uint32_t above, std::uint32_t below) { return above + scaled(below, 255 - alphaOf(above)); }

// White above it, blended by difference. The result is opaque whatever the alpha: where
// the pixel lets something through the white is plain.
constexpr std::uint32_t differenceWithWhite(std::uint32_t pixel) { return ~pixel | 0xFF000000; }

}  // namespace Tarnwick
