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

    // For a screen that cannot blend: makes the drawn pixels opaque, in the colour that they
    // have themselves (the premultiplied one would be too dark), and the others 0. The pixels
    // have the alpha of those taken last.
    void makeOpaque(std::span<std::uint32_t> pixels) const;

    // From the top, in bands of rows, from left to right, as SHAPE's YXBanded wants them.
    std::span<const xcb_rectangle_t> rectangles() const { return m_rectangles; }

private:
    // Pixels that follow each other.
    struct Run {
        std::size_t start;
        std::size_t count;
    };

    void findTranslucent(std::span<const std::uint32_t> pixels);
    void makeRectangles();
    void addRow(std::size_t row, std::size_t& bandStart);

    std::size_t m_width = 0;
    std::vector<std::uint8_t> m_isDrawn;
    std::vector<Run> m_translucent;
    std::vector<xcb_rectangle_t> m_rectangles;
};

}  // namespace Platform::X11
