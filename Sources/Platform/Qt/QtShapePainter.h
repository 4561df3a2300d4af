// Shapes and text as Qt's raster engine paints them, in the application's font. Needs a
// QGuiApplication.
#pragma once

#include "Platform/ShapePainter.h"

namespace Platform {

class QtShapePainter final : public ShapePainter {
public:
    void fillEllipse(const Canvas&, const Rect&, std::uint32_t colour) override;
    void strokeEllipse(const Canvas&, const Rect&, double lineWidth, std::uint32_t colour) override;
    void fillRoundedRectangle(const Canvas&, const Rect&, double radius, std::uint32_t colour) override;
    Size textSize(std::string_view text, const Font&) override;
    void drawText(const Canvas&, Point topLeft, std::string_view text, const Font&, std::uint32_t colour) override;
};

}  // namespace Platform
