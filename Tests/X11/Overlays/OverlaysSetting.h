// Overlays on a private desktop, with a capture that only records whether it is needed.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Qt/QtMainLoop.h"
#include "Platform/X11/Overlays/X11OverlayWindows.h"
#include "Support/Desktop/Desktop.h"
#include "Support/LoopUntil.h"

namespace OverlayTests {

using namespace Platform;
using namespace Platform::X11;
using TestSupport::loopUntil;

inline constexpr std::uint32_t red = 0xffff0000;
inline constexpr std::uint32_t green = 0xff00ff00;
inline constexpr std::uint32_t blue = 0xff0000ff;

struct RecordingCapture : CaptureActivation {
    void activate() override { calls += "activate "; }
    void activateBeforeContents() override { calls += "activateBeforeContents "; }
    void keepContents(std::span<const CoveredPart> parts) override
    {
        calls += "keepContents ";
        covered.assign(parts.begin(), parts.end());
        if (whenKept)
            whenKept();
    }
    void deactivate() override { calls += "deactivate "; }

    std::string calls;
    std::vector<CoveredPart> covered;
    std::function<void()> whenKept;
};

struct RecordingDelegate : OverlayWindowDelegate {
    void keyDown(const KeyEvent& event) override { keys.push_back(event.keyCode); }
    void dismissRequested() override { ++dismissRequests; }

    std::vector<int> keys;
    int dismissRequests = 0;
};

inline Image solid(int width, int height, std::uint32_t colour)
{
    Image image(width, height);
    for (auto& pixel : image.pixels())
        pixel = colour;
    return image;
}

class OverlaysSetting : public testing::Test {
protected:
    explicit OverlaysSetting(TestSupport::WindowManagerKind kind = TestSupport::WindowManagerKind::none) : desktop(kind, "800x600x24")
    {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QCoreApplication application(argc, argv);

        mainLoop = std::make_unique<QtMainLoop>();
        requests = Connection::open(desktop.displayName());
        stackEvents = Connection::open(desktop.displayName());
        focusEvents = Connection::open(desktop.displayName());
        keys = OverlayKeys::open(desktop.displayName(), *mainLoop, *mainLoop);
        setScale(1);
        overlays = std::make_unique<X11OverlayWindows>(
            X11OverlayWindows::Parts{*requests, *stackEvents, *focusEvents, *mainLoop, *mainLoop, layout, stack, capture, *keys});
    }

    void setScale(double scale) { layout.set(MonitorLayout({{"A", {0, 0, 800, 600}, scale}})); }

    std::unique_ptr<OverlayWindow> makeOverlay(const Rect& frame = {0, 0, 800, 600})
    {
        return overlays->makeOverlayWindow({.frame = frame}, delegate);
    }

    void settle()
    {
        int turns = 0;
        loopUntil([&] { return ++turns > 20; });
    }

    // Another program's window without a window manager's help, of one colour.
    xcb_window_t mapForeign(const DeviceRect& frame, std::uint32_t colour, bool isOverrideRedirect)
    {
        auto& connection = desktop.connection();
        const auto window = connection.newId();
        const std::uint32_t values[] = {colour & 0xffffff, isOverrideRedirect ? 1U : 0U};
        xcb_create_window(connection, 0, window, connection.root(), static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
            static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, 0,
            XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(connection, window);
        connection.flush();
        return window;
    }

    // From now on the server does nothing that another client asks for, the overlays included.
    void holdServer()
    {
        xcb_grab_server(desktop.connection());
        desktop.connection().waitForServer();
    }
    void letServerGo()
    {
        xcb_ungrab_server(desktop.connection());
        desktop.connection().flush();
    }

    // The screen once the server has done what was asked of it until now.
    Image screenshot()
    {
        requests->waitForServer();
        return desktop.screenshot();
    }

    bool shows(int x, int y, std::uint32_t colour) { return screenshot().pixel(x, y) == colour; }

    TestSupport::Desktop desktop;
    std::unique_ptr<QtMainLoop> mainLoop;
    std::unique_ptr<Connection> requests;
    std::unique_ptr<Connection> stackEvents;
    std::unique_ptr<Connection> focusEvents;
    SharedMonitorLayout layout;
    OverlayStack stack;
    RecordingCapture capture;
    RecordingDelegate delegate;
    std::unique_ptr<OverlayKeys> keys;
    std::unique_ptr<X11OverlayWindows> overlays;
};

}  // namespace OverlayTests
