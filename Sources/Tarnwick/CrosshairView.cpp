#include "Tarnwick/CrosshairView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Tarnwick/ColourInversion.h"
#include "Tarnwick/WindowIdentifier.h"

namespace Tarnwick {
namespace {

// Black at 85 %.
constexpr std::uint32_t fallbackColour = 0xD9000000;

bool areStill(const Strips& strips)
{
    return std::all_of(strips.begin(), strips.end(), [](const auto& strip) { return strip.truth == Platform::CaptureTruth::still; });
}

}  // namespace

// Runs on the capture queue. The buffers come from the view and go back to it with the
// store step, so a capture allocates nothing.
struct StripCaptureJob {
    std::weak_ptr<CrosshairView> view;
    Platform::MainLoop& mainLoop;
    Platform::ScreenCapture& screenCapture;
    std::uint32_t windowNumber;
    std::array<Platform::Rect, 2> rectangles;
    Strips strips;

    void operator()()
    {
        for (auto& strip : strips)
            strip.mayBeStill = true;
        screenCapture.windowsBelow(windowNumber, Platform::CaptureResolution::nominal, rectangles, strips);
        for (auto& strip : strips) {
            if (strip.truth != Platform::CaptureTruth::still)
                invertColours(strip.image);
        }
        mainLoop.post([weakView = std::move(view), results = std::move(strips)]() mutable {
            if (const auto strongView = weakView.lock())
                strongView->store(std::move(results));
        });
    }
};

CrosshairView::CrosshairView(
    Platform::MainLoop& mainLoop, Platform::Screens& screens, Platform::ScreenCapture& screenCapture, CaptureQueue& captureQueue)
    : m_mainLoop(mainLoop), m_screens(screens), m_screenCapture(screenCapture), m_captureQueue(captureQueue)
{
}

void CrosshairView::setNeedsDisplay()
{
    if (std::exchange(m_displayPosted, true))
        return;
    m_mainLoop.post([weakView = weak_from_this()] {
        if (const auto view = weakView.lock())
            view->displayUnlessStoreStepWill();
    });
}

void CrosshairView::scheduleStripRefresh(std::int64_t excludingWindowNumber)
{
    if (m_captureInFlight) {
        m_requestDropped = true;
        return;
    }
    m_captureInFlight = true;
    m_requestDropped = false;
    m_captureQueue.async(StripCaptureJob{
        weak_from_this(), m_mainLoop, m_screenCapture, windowIdentifier(excludingWindowNumber), stripRectangles(), std::move(m_spareStrips)});
}

CrosshairDrawing CrosshairView::draw() const
{
    const auto size = bounds();
    const Platform::Rect horizontal{0, m_mouse.y - 0.5, size.width, 1};
    const Platform::Rect vertical{m_mouse.x - 0.5, 0, 1, size.height};
    const auto* hImage = hStrip();
    const auto* vImage = vStrip();

    CrosshairDrawing drawing;
    if (hImage != nullptr)
        drawing.add({.rectangle = horizontal, .image = hImage});
    if (vImage != nullptr)
        drawing.add({.rectangle = vertical, .image = vImage});
    if (hImage == nullptr && vImage == nullptr) {
        drawing.add({.rectangle = horizontal, .colour = fallbackColour});
        drawing.add({.rectangle = vertical, .colour = fallbackColour});
    }
    return drawing;
}

const Platform::Image* CrosshairView::imageOf(const Platform::Captured& strip)
{
    return strip.truth == Platform::CaptureTruth::none || strip.image.isEmpty() ? nullptr : &strip.image;
}

Platform::Size CrosshairView::bounds() const { return m_window != nullptr ? m_window->frame().size() : Platform::Size(); }

// The view's own coordinates are taken as if its window lay at the primary display's
// corner. On another screen the strips come from the same place of the primary one.
std::array<Platform::Rect, 2> CrosshairView::stripRectangles() const
{
    const auto screens = m_screens.screens();
    const double primaryHeight = screens.empty() ? 0 : screens.front().frame.height;
    const auto [width, height] = bounds();
    return {
        Platform::Rect{0, std::round(primaryHeight - m_mouse.y) - 0.5, width, 1},
        Platform::Rect{std::round(m_mouse.x) - 0.5, primaryHeight - height, 1, height},
    };
}

void CrosshairView::store(Strips strips)
{
    const bool hasNews = !areStill(strips);
    m_spareStrips = hasNews ? std::exchange(m_strips, std::move(strips)) : std::move(strips);
    m_captureInFlight = false;
    m_hasUndrawnStrips = m_hasUndrawnStrips || hasNews;
    // A crosshair that rests over a picture that rests costs no drawing.
    const bool isShownAlready = !m_hasUndrawnStrips && m_window != nullptr && m_shown == shownNow();
    if (isShownAlready)
        return;
    setNeedsDisplay();
}

CrosshairView::Shown CrosshairView::shownNow() const { return {m_mouse, m_window->frame()}; }

void CrosshairView::displayUnlessStoreStepWill()
{
    m_displayPosted = false;
    // A capture takes about a millisecond. Drawing while it is under way would show the
    // former strips at the new place for that part of the frame and cost a second put, so
    // the display waits for the store step, unless the capture takes longer than a tick or
    // has results of before to show (else captures that end just before a tick would put
    // the display off for ever).
    const bool storeStepWillDisplay = m_captureInFlight && !m_requestDropped && !m_hasUndrawnStrips;
    if (storeStepWillDisplay || m_window == nullptr)
        return;
    m_shown = shownNow();
    m_hasUndrawnStrips = false;
    m_window->present(draw().pictures());
}

}  // namespace Tarnwick
