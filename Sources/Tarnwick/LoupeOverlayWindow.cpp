#include "Tarnwick/LoupeOverlayWindow.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

#include "Platform/FatalError.h"

namespace Tarnwick {
namespace {

constexpr double defaultDiameter = 220;
constexpr double smallestDiameter = 120;
constexpr double largestDiameter = 400;
constexpr double diameterStep = 40;

constexpr double defaultZoom = 4;
constexpr double smallestZoom = 1;
constexpr double largestZoom = 10;
constexpr double zoomStep = 1;

constexpr std::int64_t smallestSampleSide = 3;

// Physical keys, by their place on an ANSI keyboard.
constexpr std::uint16_t key1 = 18;
constexpr std::uint16_t key2 = 19;
constexpr std::uint16_t keyComma = 43;
constexpr std::uint16_t keyPeriod = 47;

constexpr Platform::OverlayStyle initialStyle{.frame = {0, 0, defaultDiameter, defaultDiameter + loupeFooterHeight}, .hasShadow = true};

}  // namespace

LoupeOverlayWindow::LoupeOverlayWindow(Platform::System& system, Platform::ShapePainter& painter, std::function<void()> onDismiss)
    : m_pointer(system.pointer), m_diameter(system.userDefaults, "loupe.diameter", defaultDiameter),
      m_zoom(system.userDefaults, "loupe.zoom", defaultZoom), m_dismissHandler(std::move(onDismiss)),
      m_window(system.overlayWindows.makeOverlayWindow(initialStyle, *this)),
      m_contentView(std::make_shared<LoupeView>(system.mainLoop, system.screens, system.screenCapture, painter))
{
    m_contentView->setWindow(m_window.get());
    setContentSizeFromDiameter();
    followPointer();
    m_contentView->setNeedsDisplay();
}

LoupeOverlayWindow::~LoupeOverlayWindow() { m_contentView->setWindow(nullptr); }

void LoupeOverlayWindow::updateCursor(Platform::Point mouseLocation)
{
    const double diameter = m_diameter.get();
    const double radius = diameter * 0.5;
    const Platform::Point origin{std::round(mouseLocation.x - radius), std::round(mouseLocation.y - loupeFooterHeight - radius)};
    const auto [width, height] = m_window->frame().size();
    m_window->setFrame({origin.x, origin.y, width, height});
    const Platform::Point circleCentre{radius + origin.x, radius + (origin.y + loupeFooterHeight)};
    m_contentView->refresh(circleCentre, sampleSide(), m_window->windowNumber());
}

// The keys that the loupe has no use for end here: none of them reaches the program beneath.
void LoupeOverlayWindow::keyDown(const Platform::KeyEvent& event)
{
    switch (event.keyCode) {
    case key1:
        return adjustDiameter(-diameterStep);
    case key2:
        return adjustDiameter(diameterStep);
    case keyComma:
        return adjustZoom(-zoomStep);
    case keyPeriod:
        return adjustZoom(zoomStep);
    case Platform::escapeKeyCode:
        return m_dismissHandler();
    default:
        return;
    }
}

void LoupeOverlayWindow::dismissRequested() { m_dismissHandler(); }

void LoupeOverlayWindow::adjustDiameter(double delta)
{
    m_diameter.set(std::clamp(m_diameter.get() + delta, smallestDiameter, largestDiameter));
    setContentSizeFromDiameter();
    followPointer();
    m_contentView->setNeedsDisplay();
}

void LoupeOverlayWindow::adjustZoom(double delta)
{
    m_zoom.set(std::clamp(m_zoom.get() + delta, smallestZoom, largestZoom));
    setContentSizeFromDiameter();
    followPointer();
    m_contentView->setNeedsDisplay();
}

void LoupeOverlayWindow::setContentSizeFromDiameter()
{
    const auto [x, y] = m_window->frame().origin();
    const double diameter = m_diameter.get();
    m_window->setFrame({x, y, diameter, diameter + loupeFooterHeight});
}

void LoupeOverlayWindow::followPointer()
{
    if (const auto mouseLocation = m_pointer.location())
        updateCursor(*mouseLocation);
}

// The largest odd whole number of points that the circle has room for, so that there is
// a centre pixel.
double LoupeOverlayWindow::sampleSide() const
{
    const double diameter = m_diameter.get();
    const double zoom = m_zoom.get();
    const double quotient = diameter / zoom;
    if (!(quotient >= -0x1p63 && quotient < 0x1p63)) {
        std::ostringstream values;
        values << "loupe.diameter " << diameter << ", loupe.zoom " << zoom;
        Platform::fatalError("the loupe's sample side is no 64-bit number", values.str());
    }
    const auto side = static_cast<std::int64_t>(quotient);
    if (side <= smallestSampleSide)
        return static_cast<double>(smallestSampleSide);
    return static_cast<double>(side % 2 == 0 ? side - 1 : side);
}

}  // namespace Tarnwick
