#include "Tarnwick/LoupeView.h"

#include <cmath>
#include <span>
#include <utility>

#include "Tarnwick/ScreenGeometry.h"
#include "Tarnwick/WindowIdentifier.h"

namespace Tarnwick {
namespace {

// Of larger squares, which only a stored zoom far below 1 asks for, no more is captured
// than lies on screens: the picture is the same and no zoom takes the memory away.
constexpr double largestSideCapturedWhole = 1024;

}  // namespace

LoupeView::LoupeView(
    Platform::MainLoop& mainLoop, Platform::Screens& screens, Platform::ScreenCapture& screenCapture, Platform::ShapePainter& painter)
    : m_mainLoop(mainLoop), m_screens(screens), m_screenCapture(screenCapture), m_picture(painter)
{
    m_sample.mayBeRows = true;
    m_sample.mayBeStill = true;
}

void LoupeView::refresh(Platform::Point sampledCenter, double sampleSide, std::int64_t excludingWindowNumber)
{
    const auto screens = m_screens.screens();
    const double primaryHeight = screens.empty() ? 0 : screens.front().frame.height;
    const auto window = windowIdentifier(excludingWindowNumber);
    const double reach = (sampleSide - 1) * 0.5;
    capture(window, {std::round(sampledCenter.x - reach), std::round(primaryHeight - sampledCenter.y - reach), sampleSide, sampleSide});
    if (!isShownAlready())
        setNeedsDisplay();
}

void LoupeView::capture(std::uint32_t window, const Platform::Rect& square)
{
    auto captured = square;
    if (square.width > largestSideCapturedWhole)
        captured = intersection(square, desktopBounds(m_screens.screens()));
    m_samplePart = {(captured.x - square.x) / square.width, (captured.y - square.y) / square.height, captured.width / square.width,
        captured.height / square.height};
    m_screenCapture.windowsBelow(window, Platform::CaptureResolution::best, std::span(&captured, 1), std::span(&m_sample, 1));
}

void LoupeView::setNeedsDisplay()
{
    if (std::exchange(m_displayPosted, true))
        return;
    m_mainLoop.post([weakView = weak_from_this()] {
        if (const auto view = weakView.lock())
            view->display();
    });
}

std::optional<Platform::Picture> LoupeView::draw()
{
    const auto bounds = m_window != nullptr ? m_window->frame().size() : Platform::Size();
    if (!(bounds.width > 0 && bounds.height > 0))
        return std::nullopt;
    m_picture.lay(bounds.width, scale());
    m_picture.show(sampledImage(), m_samplePart);
    // As large as its pixels, from the top: so no device pixel is stretched, wherever the
    // window's edges fall between two of them.
    const auto size = m_picture.size();
    return Platform::Picture{.rectangle = {0, bounds.height - size.height, size.width, size.height}, .source = &m_picture};
}

const Platform::PixelRows* LoupeView::sampledImage() const
{
    if (m_sample.truth == Platform::CaptureTruth::none)
        return nullptr;
    if (m_sample.rows != nullptr)
        return m_sample.rows.get();
    return m_sample.image.isEmpty() ? nullptr : &m_imageRows;
}

// A loupe that rests over a picture that rests costs no drawing.
bool LoupeView::isShownAlready() const { return m_sample.truth == Platform::CaptureTruth::still && m_window != nullptr && m_shown == shownNow(); }

void LoupeView::display()
{
    m_displayPosted = false;
    if (m_window == nullptr)
        return;
    m_shown = shownNow();
    const auto picture = draw();
    m_window->present(picture ? std::span(&*picture, 1) : std::span<const Platform::Picture>());
}

LoupeView::Shown LoupeView::shownNow() const { return {m_window->frame(), scale(), m_samplePart}; }

double LoupeView::scale() const
{
    const auto frame = m_window->frame();
    const auto* screen = screenAt(m_screens.screens(), {frame.x + frame.width / 2, frame.y + frame.height / 2});
    return screen != nullptr ? screen->scale : 1;
}

}  // namespace Tarnwick
