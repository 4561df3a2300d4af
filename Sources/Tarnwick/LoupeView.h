// What the loupe's window shows: the square of screen around the pointer, magnified with
// hard pixel edges inside a circle, and the footer below. Main thread only; captures are
// made at once, on the main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/MainLoop.h"
#include "Platform/OverlayWindow.h"
#include "Platform/ScreenCapture.h"
#include "Platform/Screens.h"
#include "Platform/ShapePainter.h"
#include "Tarnwick/LoupePicture.h"

namespace Tarnwick {

// Owned by a shared pointer: a display that is due refers to it weakly.
class LoupeView final : public std::enable_shared_from_this<LoupeView> {
public:
    LoupeView(Platform::MainLoop&, Platform::Screens&, Platform::ScreenCapture&, Platform::ShapePainter&);

    // The window that shows the view; it gives the bounds. Without one nothing is drawn.
    void setWindow(Platform::OverlayWindow* window) { m_window = window; }

    // Captures the square of that side (points) around the centre (desktop space) as it is
    // without the window of that number, in device pixels. A failed capture leaves no image.
    // A number that is no unsigned 32-bit value is a fatal error.
    void refresh(Platform::Point sampledCenter, double sampleSide, std::int64_t excludingWindowNumber);

    // Presents the drawing in a later turn of the main loop, once for all calls until then.
    void setNeedsDisplay();

    // The whole view, in view space; nothing where the bounds are empty. Its source belongs
    // to the view and is valid until the next call or refresh().
    std::optional<Platform::Picture> draw();

    // Null before the first capture and after a failed one.
    const Platform::PixelRows* sampledImage() const;

private:
    // All that a drawing depends on besides the sample's pixels.
    struct Shown {
        Platform::Rect frame;
        double scale = 1;
        Platform::Rect samplePart;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    void capture(std::uint32_t window, const Platform::Rect& square);
    bool isShownAlready() const;
    void display();
    Shown shownNow() const;
    double scale() const;

    Platform::MainLoop& m_mainLoop;
    Platform::Screens& m_screens;
    Platform::ScreenCapture& m_screenCapture;
    Platform::OverlayWindow* m_window = nullptr;

    LoupePicture m_picture;
    Platform::Captured m_sample;
    Platform::ImageRows m_imageRows{m_sample.image};
    Platform::Rect m_samplePart = LoupePicture::wholeSquare;
    std::optional<Shown> m_shown;
    bool m_displayPosted = false;
};

}  // namespace Tarnwick
