// Smooth shapes and text, painted onto an image: what a view makes once for a size and
// then shows at every frame. Main thread only.
//
// Rectangles are points from the image's top-left corner, y growing downward; only edges
// that do not fall on device pixels come out partly covered. Colours are 0xAARRGGBB,
// premultiplied. All painting goes over what the image holds and ends at its edges.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Geometry.h"
#include "Platform/Image.h"

namespace Platform {

struct Canvas {
    Image& image;
    double scale = 1;  // device pixels per point
};

enum class FontWeight { regular, medium };

// A font of the desktop's own family.
struct Font {
    double size = 0;  // points
    FontWeight weight = FontWeight::regular;

    friend bool operator==(const Font&, const Font&) = default;
};

class ShapePainter {
public:
    virtual ~ShapePainter() = default;

    virtual void fillEllipse(const Canvas&, const Rect&, std::uint32_t colour) = 0;
    // The line lies half inside the ellipse and half outside.
    virtual void strokeEllipse(const Canvas&, const Rect&, double lineWidth, std::uint32_t colour) = 0;
    virtual void fillRoundedRectangle(const Canvas&, const Rect&, double radius, std::uint32_t colour) = 0;

    // One line of text, UTF-8: the advance of all of it and the height of the font's line.
    virtual Size textSize(std::string_view text, const Font&) = 0;
    // `topLeft` is the corner of the box that textSize() measures.
    virtual void drawText(const Canvas&, Point topLeft, std::string_view text, const Font&, std::uint32_t colour) = 0;
};

}  // namespace Platform
