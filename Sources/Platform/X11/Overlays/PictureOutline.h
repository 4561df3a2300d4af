// The outline of a picture that is no rectangle: which of its pixels are drawn at all. What
// is fainter than an eighth is not: at the rim of a smooth shape that is less than half a
// pixel of it. Pixels are 0xAARRGGBB, premultiplied.
#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <span>
#include <vector>

namespace Platform::X11 {

class PictureOutline {
public:
    // True when the outline is another one than that of the picture before. The number of
    // pixels is a multiple of `width`.
    bool take(std::span<const std::uint32_t> pixels, int width);

    // From the top, in bands of rows, from left to right, as SHAPE's YXBanded wants them.
    std::span<const xcb_rectangle_t> rectangles() const { return m_rectangles; }

private:
    void makeRectangles();
    void addRow(std::size_t row, std::size_t& bandStart);

    std::size_t m_width = 0;
    std::vector<std::uint8_t> m_isDrawn;
    std::vector<xcb_rectangle_t> m_rectangles;
};

// Makes the drawn pixels opaque, in the colour that they have themselves, and the others 0.
// For a screen that cannot blend: the premultiplied colour would be too dark.
void makeOpaque(std::span<std::uint32_t> pixels);

}  // namespace Platform::X11
