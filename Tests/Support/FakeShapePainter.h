// A painter without smooth edges: a device pixel belongs to a shape when its centre does,
// and a text is a plain box of the size that the test gives it.
//
// Lines: "painter.fillEllipse RECT COLOUR", "painter.strokeEllipse RECT WIDTH COLOUR",
// "painter.fillRoundedRectangle RECT RADIUS COLOUR", "painter.textSize SIZE WEIGHT TEXT",
// "painter.drawText X Y SIZE WEIGHT COLOUR TEXT"; a rectangle is "X Y WIDTH HEIGHT", a
// colour eight digits, a weight "regular" or "medium". All lines but textSize's end with
// " @SCALE".
#pragma once

#include "Platform/ShapePainter.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeShapePainter : public Platform::ShapePainter {
public:
    explicit FakeShapePainter(CallLog& log) : m_log(log) { }

    void setTextSize(Platform::Size size) { m_textSize = size; }

    void fillEllipse(const Platform::Canvas&, const Platform::Rect&, std::uint32_t colour) override;
    void strokeEllipse(const Platform::Canvas&, const Platform::Rect&, double lineWidth, std::uint32_t colour) override;
    void fillRoundedRectangle(const Platform::Canvas&, const Platform::Rect&, double radius, std::uint32_t colour) override;
    Platform::Size textSize(std::string_view text, const Platform::Font&) override;
    void drawText(const Platform::Canvas&, Platform::Point topLeft, std::string_view text, const Platform::Font&, std::uint32_t colour) override;

private:
    CallLog& m_log;
    Platform::Size m_textSize{126, 13};
};

}  // namespace TestSupport
