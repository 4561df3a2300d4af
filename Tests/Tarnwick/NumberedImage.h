#pragma once

#include <cstdint>

#include "Platform/Image.h"

namespace Tarnwick {

// Each pixel has a colour of its own, which tells where it is.
inline Platform::Image numbered(int width, int height)
{
    Platform::Image image(width, height);
    auto pixel = image.pixels().begin();
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(height); ++y) {
        for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(width); ++x)
            *pixel++ = 0xFF000000U | x << 12 | y;
    }
    return image;
}

}  // namespace Tarnwick
