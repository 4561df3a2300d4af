// A private server with a capture on it and an overlay or two for the tests.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <set>
#include <utility>

#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Support/PrivateServer.h"
#include "X11/Capture/Desktop.h"

namespace CaptureTests {

class CaptureSetting : public testing::Test {
protected:
    using Captured = Platform::Captured;
    using CaptureResolution = Platform::CaptureResolution;
    using Rect = Platform::Rect;
    using Colours = std::set<std::uint32_t>;

    explicit CaptureSetting(const std::vector<std::string>& serverArguments = {}) : m_server("320x200x24", serverArguments) { }

    void SetUp() override { useMonitors({{"MAIN", m_desktop.screen(), 1}}); }

    void useMonitors(std::vector<Platform::X11::Monitor> monitors) { m_layout.set(Platform::X11::MonitorLayout(std::move(monitors))); }

    Captured capture(const Rect& rect, std::uint32_t number = 1, CaptureResolution resolution = CaptureResolution::nominal)
    {
        m_desktop.sync();
        std::array<Captured, 1> answers;
        m_capture->windowsBelow(number, resolution, {&rect, 1}, answers);
        return std::move(answers[0]);
    }

    static Colours coloursOf(const Image& image) { return {image.pixels().begin(), image.pixels().end()}; }
    static Colours coloursOf(const Captured& captured) { return coloursOf(captured.image); }

    static Image tileOf(std::uint32_t colour)
    {
        Image tile(1, 1);
        tile.pixels()[0] = colour;
        return tile;
    }

    // An overlay of one window, shown.
    xcb_window_t showOverlay(std::uint32_t number, const DeviceRect& frame)
    {
        const auto window = m_desktop.makeWindow({.inner = frame, .colour = overlayColour});
        auto& c = m_desktop.connection();
        const std::uint32_t none = 0;
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, c.atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, 32, 1, &none);
        m_desktop.map(window);
        m_entries.push_back({number, {{window, frame}}, XCB_WINDOW_NONE});
        m_stack.set(m_entries);
        return window;
    }

    static constexpr std::uint32_t overlayColour = 0x112233;

    TestSupport::PrivateServer m_server;
    Desktop m_desktop{m_server.displayName()};
    Platform::X11::SharedMonitorLayout m_layout;
    Platform::X11::OverlayStack m_stack;
    std::vector<Platform::X11::OverlayEntry> m_entries;
    std::unique_ptr<Platform::X11::X11ScreenCapture> m_capture = Platform::X11::X11ScreenCapture::open(m_server.displayName(), m_layout, m_stack);
};

}  // namespace CaptureTests
