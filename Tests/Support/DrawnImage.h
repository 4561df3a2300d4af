// What a source of pixels draws, as an image.
#pragma once

#include "Platform/Image.h"
#include "Platform/OverlayWindow.h"

namespace TestSupport {

inline void draw(Platform::PixelSource& source, Platform::Image& image)
{
    image.resize(source.width(), source.height());
    source.draw(image.pixels());
}

inline Platform::Image drawn(Platform::PixelSource& source)
{
    Platform::Image image;
    draw(source, image);
    return image;
}

}  // namespace TestSupport
