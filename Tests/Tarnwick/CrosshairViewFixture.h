// A view of the crosshair on the fake system.
#pragma once

#include <gtest/gtest.h>

#include "Support/FakeSystem.h"
#include "Tarnwick/CrosshairView.h"

namespace Tarnwick {

// A view in a window over the whole of the one screen, 1920 x 1080.
class CrosshairViewFixture : public testing::Test {
protected:
    CrosshairViewFixture() { view->setWindow(window.get()); }
    ~CrosshairViewFixture() override { view->setWindow(nullptr); }

    std::shared_ptr<CrosshairView> makeView()
    {
        return std::make_shared<CrosshairView>(fake.mainLoop, fake.screens, fake.screenCapture, captureQueue);
    }

    // What the pump does once a tick.
    void tick(Platform::Point mouse)
    {
        view->setMouse(mouse);
        view->setNeedsDisplay();
        view->scheduleStripRefresh(windowNumber);
    }

    // The capture is done and its store step posted.
    void finishCapture() { EXPECT_EQ(fake.serialQueues.runAll(), 1); }

    void captureAt(Platform::Point mouse)
    {
        view->setMouse(mouse);
        view->scheduleStripRefresh(windowNumber);
        finishCapture();
        fake.mainLoop.runUntilIdle();
    }

    std::vector<Platform::Rect> rectanglesCapturedAt(Platform::Point mouse)
    {
        captureAt(mouse);
        return fake.screenCapture.requests().back().rectangles;
    }

    TestSupport::FakeOverlayWindow& shown() { return fake.overlayWindows.last(); }

    class NoDelegate final : public Platform::OverlayWindowDelegate {
    public:
        void keyDown(const Platform::KeyEvent&) override { }
        void dismissRequested() override { }
    };

    static constexpr std::int64_t windowNumber = 7;

    TestSupport::FakeSystem fake;
    CaptureQueue captureQueue{fake.serialQueues};
    NoDelegate delegate;
    std::unique_ptr<Platform::OverlayWindow> window = fake.overlayWindows.makeOverlayWindow({.frame = {0, 0, 1920, 1080}}, delegate);
    std::shared_ptr<CrosshairView> view = makeView();
};

}  // namespace Tarnwick
